#pragma once

#include <string>
#include <string_view>

// OsRelease: what the file os-release tells about the system. Pure.
namespace vellumor::OsRelease {

// Its usual places; the first one that is there counts.
inline constexpr std::string_view files[] = {"/etc/os-release", "/usr/lib/os-release"};

// The value of `key` without its quotes; empty when it is not there.
[[nodiscard]] std::string value(std::string_view text, std::string_view key);

// "debian 12"; "debian" where a distribution counts no versions, "linux" where nothing is known.
[[nodiscard]] std::string nameAndVersion(std::string_view text);

} // namespace vellumor::OsRelease
