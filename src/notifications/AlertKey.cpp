#include "notifications/AlertKey.h"

#include <charconv>

namespace vellumor::AlertKey {

namespace {

constexpr double lifetime = 691200.0; // seconds; one more day than the longest window

} // namespace

std::string of(std::initializer_list<std::string_view> parts, Instant period)
{
    std::string key;
    for (const std::string_view part : parts) {
        key += part;
        key += '|';
    }
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(period.time_since_epoch());
    return key + std::to_string(seconds.count());
}

bool isOutlived(std::string_view key, Instant now)
{
    const std::string_view last = key.substr(key.rfind('|') + 1); // all of it where there is none
    double seconds = 0;
    const auto [end, error] = std::from_chars(last.data(), last.data() + last.size(), seconds);
    if (error != std::errc() || end != last.data() + last.size())
        return false;
    return !(seconds >= secondsSince1970(now) - lifetime);
}

} // namespace vellumor::AlertKey
