#include "Fuzz.h"

#include "base/Json.h"
#include "history/ReceiptStore.h"

#include <cmath>

using namespace vellumor;
using fuzz::require;

namespace {

Instant inMilliseconds(Instant instant)
{
    return std::chrono::floor<std::chrono::milliseconds>(instant);
}

// As a file keeps them.
WeeklyReceipts asKept(WeeklyReceipts receipts)
{
    for (WeeklyReceipt& receipt : receipts) {
        receipt.weekStart = inMilliseconds(receipt.weekStart);
        receipt.weekEnd = inMilliseconds(receipt.weekEnd);
        receipt.archivedAt = inMilliseconds(receipt.archivedAt);
        for (WeeklyReceipt::WindowFacts& facts : receipt.windows)
            facts.peakAt = inMilliseconds(facts.peakAt);
    }
    return receipts;
}

void checkWords(const WeeklyReceipts& receipts)
{
    const auto shortTime = [](Instant) { return std::string("14:05"); };
    for (const WeeklyReceipt& receipt : receipts) {
        require(!receipt.summaryText("Work", shortTime).empty());
        const auto line = WeeklyReceipt::comparisonLine(receipt, receipts.front());
        require(!line || line->ends_with("% the week before"));
    }
}

} // namespace

// A file of receipts: what can be read can be written, reads back the same, and can be told.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const WeeklyReceipts receipts = ReceiptStore::decode(fuzz::textOf(bytes, size));
    for (const WeeklyReceipt& receipt : receipts) {
        require(std::isfinite(receipt.coveragePercent));
        for (const WeeklyReceipt::WindowFacts& facts : receipt.windows)
            require(std::isfinite(facts.peakPercent));
    }
    const auto entries = encodeReceipts(receipts);
    require(entries.has_value());
    const auto written =
        writeJson({{"schemaVersion", 1}, {"receipts", *entries}}, JsonLayout::pretty);
    require(written.has_value());
    require(ReceiptStore::decode(*written) == asKept(receipts));
    const WeeklyReceipts trimmed = ReceiptStore::trim(receipts, fuzz::now);
    require(trimmed.size() <= receipts.size());
    require(ReceiptStore::trim(trimmed, fuzz::now) == trimmed);
    checkWords(receipts);
    return 0;
}
