#include "updates/feed/ReleaseVersion.h"

#include <algorithm>
#include <charconv>

namespace vellumor {

namespace {

constexpr std::size_t mostDigits = 6;

// Takes the number at the start of `text` away from it.
std::optional<int> takeNumber(std::string_view& text)
{
    const auto size = std::min(text.find_first_not_of("0123456789"), text.size());
    const bool hasLeadingZero = size > 1 && text.front() == '0';
    if (size == 0 || size > mostDigits || hasLeadingZero)
        return std::nullopt;
    int number = 0;
    std::from_chars(text.data(), text.data() + size, number);
    text.remove_prefix(size);
    return number;
}

bool takeDot(std::string_view& text)
{
    if (!text.starts_with('.'))
        return false;
    text.remove_prefix(1);
    return true;
}

} // namespace

std::optional<ReleaseVersion> ReleaseVersion::parse(std::string_view text)
{
    const auto major = takeNumber(text);
    if (!major || !takeDot(text))
        return std::nullopt;
    const auto minor = takeNumber(text);
    if (!minor || !takeDot(text))
        return std::nullopt;
    const auto patch = takeNumber(text);
    if (!patch || !text.empty())
        return std::nullopt;
    return ReleaseVersion{*major, *minor, *patch};
}

std::string ReleaseVersion::text() const
{
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

} // namespace vellumor
