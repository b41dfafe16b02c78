#include "app/state/Stagger.h"

#include "base/IntervalDisplay.h"

#include <algorithm>

namespace vellumor::Stagger {

namespace {

constexpr double secondsForEach = 60.0;

Instant attemptOf(const std::string& id, const std::map<std::string, Instant>& lastAttempt)
{
    const auto attempt = lastAttempt.find(id);
    return attempt == lastAttempt.end() ? Instant::min() : attempt->second;
}

} // namespace

std::optional<std::string> nextTarget(const std::vector<std::string>& ids,
                                      const std::map<std::string, Instant>& lastAttempt)
{
    const auto next = std::min_element(ids.begin(), ids.end(), [&](const auto& a, const auto& b) {
        return attemptOf(a, lastAttempt) < attemptOf(b, lastAttempt);
    });
    return next == ids.end() ? std::nullopt : std::optional(*next);
}

std::optional<std::string> cadenceNote(double effectiveInterval, double userInterval)
{
    if (!(userInterval < effectiveInterval))
        return std::nullopt;
    return "refreshing every ~" + IntervalDisplay::shortText(effectiveInterval);
}

double effectiveInterval(double userInterval, std::size_t pollable)
{
    return std::max({userInterval, secondsForEach * static_cast<double>(pollable), secondsForEach});
}

} // namespace vellumor::Stagger
