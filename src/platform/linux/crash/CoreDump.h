#pragma once

#include "base/Instant.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// One crash, as systemd-coredump has told the journal of it.
struct CoreDump {
    Instant crashedAt{};
    std::string bootId; // 32 hexadecimal digits
    std::int64_t pid = 0;
    std::string executable; // the path; empty when it was not known
    std::string signal;     // "SIGSEGV"
    std::string message;    // what a person reads, with the stacks of all threads
    bool operator==(const CoreDump&) const = default;

    // From one line of `journalctl --output=json`. Nothing when it is not whole, or does not tell
    // which process crashed and when.
    [[nodiscard]] static std::optional<CoreDump> decode(std::string_view line);

    // The same whenever this crash is read, and that of no other crash.
    [[nodiscard]] std::string incidentID() const;
};

// When an entry of the journal was written; nothing for what is no entry.
[[nodiscard]] std::optional<Instant> journalTime(std::string_view line);

} // namespace vellumor
