#include "history/HistoryExport.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vellumor::HistoryExport {

namespace {

constexpr double leastPlain = 1e-4; // below and above these the exponent is written
constexpr double mostPlain = 1e16;
constexpr std::size_t dayLength = 10; // of "2026-11-21"

void sortByTime(UsageSamples& samples)
{
    std::ranges::stable_sort(samples, {}, &UsageSample::at);
}

// The shortest text that reads back as the same number, whatever the locale.
std::string numberText(double value)
{
    const double size = std::abs(value);
    const bool isPlain = size == 0 || (size >= leastPlain && size < mostPlain);
    std::array<char, 64> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                      isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    std::string text(buffer.data(), error == std::errc() ? end : buffer.data());
    if (isPlain && text.find('.') == std::string::npos)
        text += ".0";
    return text;
}

// Nothing when a percent is not finite, for which JSON has no text.
std::optional<Json> sampleList(const UsageSamples& samples)
{
    Json entries = Json::array();
    for (const UsageSample& sample : samples) {
        Json percents = Json::object();
        for (const auto& [kind, percent] : sample.percents) {
            if (!std::isfinite(percent))
                return std::nullopt;
            percents[kind] = percent;
        }
        entries.push_back(
            {{"at", Format::isoFractional(sample.at)}, {"percents", std::move(percents)}});
    }
    return entries;
}

} // namespace

std::string csv(UsageSamples samples)
{
    sortByTime(samples);
    std::string text = "at,kind,percent\n";
    for (const UsageSample& sample : samples) {
        for (const auto& [kind, percent] : sample.percents)
            text +=
                Format::isoFractional(sample.at) + "," + kind + "," + numberText(percent) + "\n";
    }
    return text;
}

std::optional<std::string> json(const std::string& accountName, UsageSamples samples,
                                const WeeklyReceipts& receipts, Instant exportedAt)
{
    sortByTime(samples);
    auto samplesInJson = sampleList(samples);
    auto receiptsInJson = encodeReceipts(receipts);
    if (!samplesInJson || !receiptsInJson)
        return std::nullopt;
    return writeJson({{"app", "Vellumor"},
                      {"account", accountName},
                      {"exportedAt", Format::isoFractional(exportedAt)},
                      {"samples", *std::move(samplesInJson)},
                      {"receipts", *std::move(receiptsInJson)}},
                     JsonLayout::pretty);
}

std::string filename(const std::string& accountName, std::string_view ext, Instant on)
{
    const std::string slug = Text::slug(accountName);
    return fmt::format("vellumor-history-{}-{}.{}", slug.empty() ? "account" : slug,
                       Format::isoFractional(on).substr(0, dayLength), ext);
}

} // namespace vellumor::HistoryExport
