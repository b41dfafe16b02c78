#include "history/ReceiptStore.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "base/VersionedFile.h"
#include "store/AccountFiles.h"
#include "store/FileReader.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

constexpr int schemaVersion = 1;
constexpr double sameWeek = 60.0; // seconds between two ends

std::optional<WeeklyReceipt::WindowFacts> readFacts(const Json& json)
{
    WeeklyReceipt::WindowFacts facts;
    StrictReader reader(json);
    reader.required("kind", facts.kind);
    reader.required("peakPercent", facts.peakPercent);
    reader.required("peakAt", facts.peakAt, Format::parseISO8601);
    reader.required("observedResets", facts.observedResets);
    return reader.good() ? std::optional(facts) : std::nullopt;
}

std::optional<WeeklyReceipt> readReceipt(const Json& json)
{
    WeeklyReceipt receipt;
    StrictReader reader(json);
    reader.required("weekStart", receipt.weekStart, Format::parseISO8601);
    reader.required("weekEnd", receipt.weekEnd, Format::parseISO8601);
    reader.required("coveragePercent", receipt.coveragePercent);
    reader.required("sampleCount", receipt.sampleCount);
    reader.required("archivedAt", receipt.archivedAt, Format::parseISO8601);
    const Json* windows = reader.find("windows");
    if (!reader.good() || windows == nullptr || !windows->is_array())
        return std::nullopt;
    for (const Json& entry : *windows) {
        auto facts = readFacts(entry);
        if (!facts)
            return std::nullopt;
        receipt.windows.push_back(*std::move(facts));
    }
    return receipt;
}

WeeklyReceipts sorted(WeeklyReceipts receipts)
{
    std::ranges::stable_sort(receipts, {}, &WeeklyReceipt::weekEnd);
    return receipts;
}

// JSON has no text for any other number.
bool isFinite(const WeeklyReceipt& receipt)
{
    return std::isfinite(receipt.coveragePercent) &&
           std::ranges::all_of(receipt.windows, [](const WeeklyReceipt::WindowFacts& facts) {
               return std::isfinite(facts.peakPercent);
           });
}

Json encodeReceipt(const WeeklyReceipt& receipt)
{
    Json windows = Json::array();
    for (const WeeklyReceipt::WindowFacts& facts : receipt.windows) {
        windows.push_back({{"kind", facts.kind},
                           {"peakPercent", facts.peakPercent},
                           {"peakAt", Format::isoFractional(facts.peakAt)},
                           {"observedResets", facts.observedResets}});
    }
    return {{"weekStart", Format::isoFractional(receipt.weekStart)},
            {"weekEnd", Format::isoFractional(receipt.weekEnd)},
            {"coveragePercent", receipt.coveragePercent},
            {"sampleCount", receipt.sampleCount},
            {"windows", std::move(windows)},
            {"archivedAt", Format::isoFractional(receipt.archivedAt)}};
}

} // namespace

std::optional<Json> encodeReceipts(const WeeklyReceipts& receipts)
{
    Json entries = Json::array();
    for (const WeeklyReceipt& receipt : receipts) {
        if (!isFinite(receipt))
            return std::nullopt;
        entries.push_back(encodeReceipt(receipt));
    }
    return entries;
}

ReceiptStore::ReceiptStore(const FileStore& files, std::string dir)
    : m_files(files)
    , m_dir(std::move(dir))
{
    m_files.ensureDirectory(m_dir);
}

WeeklyReceipts ReceiptStore::decode(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return {};
    const Json* entries = entriesOf(*json, "receipts", schemaVersion);
    if (entries == nullptr || !entries->is_array())
        return {};
    WeeklyReceipts receipts;
    for (const Json& entry : *entries) {
        auto receipt = readReceipt(entry);
        if (!receipt)
            return {};
        receipts.push_back(*std::move(receipt));
    }
    return receipts;
}

WeeklyReceipts ReceiptStore::load(const std::string& configDir) const
{
    const FileContents contents = readFile(AccountFiles::path(m_dir, configDir));
    return contents.status == ReadStatus::ok ? sorted(decode(contents.bytes)) : WeeklyReceipts();
}

void ReceiptStore::append(const WeeklyReceipt& receipt, const std::string& configDir, Instant now)
{
    WeeklyReceipts receipts = load(configDir);
    if (hasWeek(receipts, receipt.weekEnd))
        return;
    receipts.push_back(receipt);
    auto entries = encodeReceipts(trim(std::move(receipts), now));
    if (!entries)
        return;
    const auto bytes = writeJson(
        {{"schemaVersion", schemaVersion}, {"receipts", *std::move(entries)}}, JsonLayout::pretty);
    if (bytes)
        m_files.write(*bytes, AccountFiles::path(m_dir, configDir));
}

void ReceiptStore::prune(const std::vector<std::string>& keptConfigDirs)
{
    AccountFiles::prune(m_dir, keptConfigDirs);
}

bool ReceiptStore::hasWeek(const WeeklyReceipts& receipts, Instant weekEnd)
{
    return std::ranges::any_of(receipts, [weekEnd](const WeeklyReceipt& each) {
        return std::abs(secondsBetween(each.weekEnd, weekEnd)) < sameWeek;
    });
}

WeeklyReceipts ReceiptStore::trim(WeeklyReceipts receipts, Instant now)
{
    std::erase_if(receipts, [now](const WeeklyReceipt& each) {
        return secondsBetween(each.weekEnd, now) > retention;
    });
    return receipts;
}

} // namespace vellumor
