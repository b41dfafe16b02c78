#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// The version of a release: three numbers. What comes before a release has none, so that nobody is
// offered it.
struct ReleaseVersion {
    int major = 0;
    int minor = 0;
    int patch = 0;
    auto operator<=>(const ReleaseVersion&) const = default;

    // Of "1.2.3" and nothing else: no blank, sign, leading zero or fourth part, six digits at most.
    [[nodiscard]] static std::optional<ReleaseVersion> parse(std::string_view text);
    [[nodiscard]] std::string text() const;
};

} // namespace vellumor
