#include "notifications/SessionClosing.h"

#include "base/Format.h"
#include "notifications/AlertKey.h"
#include "notifications/WindowAnchors.h"

#include <algorithm>

namespace vellumor::SessionClosing {

namespace {

constexpr int leastLead = 5; // minutes
constexpr int mostLead = 120;
constexpr double nearlyUsedUp = 90.0; // percent

// The session of `previous` with that reset, while it was still further away than `lead` seconds.
bool wasOutside(const Usage* previous, Instant resetsAt, double lead)
{
    if (previous == nullptr)
        return false;
    const LimitWindow* session = previous->sessionWindow();
    return session != nullptr && session->resetsAt && isSameReset(*session->resetsAt, resetsAt) &&
           secondsBetween(previous->fetchedAt, resetsAt) > lead;
}

} // namespace

std::optional<ClosingFire> fired(const std::string& accountId, const Usage& usage,
                                 const Usage* previous, int leadMinutes,
                                 const std::set<std::string>& alreadyFired)
{
    const double lead = std::clamp(leadMinutes, leastLead, mostLead) * 60.0;
    const LimitWindow* session = usage.sessionWindow();
    if (session == nullptr || !session->resetsAt)
        return std::nullopt;
    if (!(session->percent > 0.0 && session->percent < nearlyUsedUp))
        return std::nullopt;
    const double left = secondsBetween(usage.fetchedAt, *session->resetsAt);
    if (!(left > 0 && left <= lead) || !wasOutside(previous, *session->resetsAt, lead))
        return std::nullopt;
    std::string key = AlertKey::of({accountId, "closing", "session"}, *session->resetsAt);
    if (alreadyFired.contains(key))
        return std::nullopt;
    return ClosingFire{*session->resetsAt, session->percent, std::move(key)};
}

std::string body(const ClosingFire& fire, const std::string& accountName,
                 const std::function<std::string(Instant)>& shortTime)
{
    return accountName + " · session window closes at " + shortTime(fire.resetsAt) + " — " +
           Format::wholeText(100 - fire.percent) + "% left";
}

} // namespace vellumor::SessionClosing
