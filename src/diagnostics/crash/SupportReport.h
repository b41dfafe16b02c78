#pragma once

#include "diagnostics/crash/CrashDigest.h"

#include <optional>
#include <string>
#include <string_view>

// SupportReport: the mail in which somebody tells of a problem. It states facts, and none of them
// is about who writes it: no account, no path. Pure, but for Environment::current.
namespace vellumor::SupportReport {

struct Environment {
    std::string appVersion;
    std::string osVersion; // three numbers
    bool operator==(const Environment&) const = default;

    // Of this program on this system. Reads a file.
    [[nodiscard]] static Environment current();
};

// "12.0.0" for the "12" that the system's os-release tells; where it tells no number, that of the
// kernel's release: "6.1.0" for "6.1.0-18-amd64".
[[nodiscard]] std::string osVersion(std::string_view osRelease, std::string_view kernelRelease);

// `crash` is the most recent one, of `crashCount`.
using Crash = std::optional<CrashDigest>;

[[nodiscard]] std::string subject(std::string_view appVersion, const Crash& crash);
[[nodiscard]] std::string facts(const Environment& environment, const Crash& crash, int crashCount);
// All of the mail: what to attach, what to describe, and the facts.
[[nodiscard]] std::string body(const Environment& environment, const Crash& crash, int crashCount);
// What to do, where the report is made.
[[nodiscard]] std::string instructions(std::string_view fileName);
// How often it has crashed of late.
[[nodiscard]] std::string statusLine(int crashCount);

// A link that begins a mail with these. No address stands in it: the mail program asks for one.
[[nodiscard]] std::string mailtoLink(std::string_view subject, std::string_view body);

// What stands for itself in such a link; everything else is written as %XX, byte for byte.
inline constexpr std::string_view unreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

} // namespace vellumor::SupportReport
