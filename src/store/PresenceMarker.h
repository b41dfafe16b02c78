#pragma once

#include "base/Instant.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <string_view>

// PresenceMarker: the mark that each application of the toolkit leaves in the shared folder,
// presence/<name>.json. `base` is that shared folder. Reading never creates anything; every failure
// means that nobody is there.
namespace vellumor::PresenceMarker {

struct Presence {
    std::string source;
    std::string version;
    std::string firstSeenAt; // ISO 8601, as the writer put it
    std::string updatedAt;
    bool operator==(const Presence&) const = default;
};

[[nodiscard]] std::string directory(const std::string& base);

// Leaves this program's own mark, at most once a day (UTC); what others have added to it stays.
// False only when it could not be written.
bool writeOwn(const FileStore& files, const std::string& version, Instant now,
              const std::string& base);

// Nothing unless all four values are texts.
[[nodiscard]] std::optional<Presence> read(std::string_view name, const std::string& base);

// True only when the file names itself and has a day on which it was first seen.
[[nodiscard]] bool siblingInstalled(std::string_view name, const std::string& base);

} // namespace vellumor::PresenceMarker
