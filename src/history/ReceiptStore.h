#pragma once

#include "base/JsonForward.h"
#include "history/WeeklyReceipt.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

using WeeklyReceipts = std::vector<WeeklyReceipt>;

// Receipts as they stand in files; nothing when a number in them is not finite.
[[nodiscard]] std::optional<Json> encodeReceipts(const WeeklyReceipts& receipts);

// The receipts of the last twelve weeks, one file an account. Knows no threads: one caller at a
// time, which Serial<> sees to. A file that is missing, damaged or of a newer version counts as
// empty and is replaced by the next append; no failure is reported.
class ReceiptStore {
public:
    static constexpr double retention = 7257600.0; // seconds

    // Makes the folder. `files` outlives the store.
    ReceiptStore(const FileStore& files, std::string dir);

    // By the end of their week.
    [[nodiscard]] WeeklyReceipts load(const std::string& configDir) const;
    // Writes nothing when the week is there already.
    void append(const WeeklyReceipt& receipt, const std::string& configDir, Instant now);
    // Forgets every other account.
    void prune(const std::vector<std::string>& keptConfigDirs);

    // Whether a week that ends then is among them: one that ends less than a minute away.
    [[nodiscard]] static bool hasWeek(const WeeklyReceipts& receipts, Instant weekEnd);
    // Those whose week has ended at or after `now` minus the retention.
    [[nodiscard]] static WeeklyReceipts trim(WeeklyReceipts receipts, Instant now);
    // The receipts in the bytes of a file, as they stand there.
    [[nodiscard]] static WeeklyReceipts decode(std::string_view bytes);

private:
    const FileStore& m_files;
    std::string m_dir;
};

} // namespace vellumor
