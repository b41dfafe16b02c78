#pragma once

#include "base/Instant.h"
#include "usage/model/Usage.h"

#include <optional>
#include <string>
#include <string_view>

// VscodeStatusCache: the file that Claude Code's extension for VS Code leaves in a config
// directory. It knows the session and the week alone. Pure but for read().
namespace vellumor::VscodeStatusCache {

struct Snapshot {
    Instant updatedAt{};
    double util5h = 0; // percent, 0 when the file has none
    double util7d = 0;
    std::optional<Instant> reset5h;
    std::optional<Instant> reset7d;
    bool operator==(const Snapshot&) const = default;
};

// Nothing when the bytes are no such file: no JSON, a wrong type, or no date or data in it.
[[nodiscard]] std::optional<Snapshot> parse(std::string_view bytes);

// `base` with the session and the week of a snapshot that is newer; its other windows stay, and may
// be older then than those beside them. Without a base that has windows, just the two.
[[nodiscard]] std::optional<Usage> merge(std::optional<Usage> base,
                                         const std::optional<Snapshot>& snapshot);

// The snapshot of a config directory; nothing when there is none. Blocks.
[[nodiscard]] std::optional<Snapshot> read(const std::string& configDir);

} // namespace vellumor::VscodeStatusCache
