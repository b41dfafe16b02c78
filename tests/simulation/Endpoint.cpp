#include "simulation/Endpoint.h"

#include "async/Sleep.h"
#include "base/Format.h"
#include "base/Json.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vellumor::simulation {

namespace {

using namespace std::chrono_literals;

constexpr milliseconds latency{400};

HttpAnswer withStatus(int status, std::string body)
{
    HttpAnswer answer;
    answer.kind = HttpAnswer::Kind::answered;
    answer.status = status;
    answer.body = std::move(body);
    return answer;
}

// A window that fills at a pace of the account's own, and starts anew when its time is over.
Json window(const char* kind, const char* group, std::chrono::hours length, int account,
            milliseconds now, Instant trueTime)
{
    const milliseconds shifted = now + account * 37min;
    const milliseconds into(shifted.count() % milliseconds(length).count());
    const double share =
        static_cast<double>(into.count()) / static_cast<double>(milliseconds(length).count());
    return {{"kind", kind},
            {"group", group},
            {"percent", std::floor(share * (60.0 + 15.0 * (account % 4)))},
            {"resets_at", Format::isoFractional(trueTime + (length - into))}};
}

} // namespace

bool TokenBucket::take(milliseconds now)
{
    fill(now);
    if (m_level < 1.0)
        return false;
    m_level -= 1.0;
    return true;
}

void TokenBucket::drain(milliseconds now)
{
    fill(now);
    m_level = 0.0;
}

void TokenBucket::fill(milliseconds now)
{
    const auto passed = static_cast<double>((now - m_filledAt).count());
    m_level = std::min(m_capacity, m_level + passed / static_cast<double>(m_refill.count()));
    m_filledAt = now;
}

Endpoint::Endpoint(Timeline& timeline, Clock& clock,
                   std::function<std::optional<int>(std::string_view)> accountOf,
                   std::function<int(std::string_view)> ownerOf)
    : m_timeline(timeline)
    , m_clock(clock)
    , m_accountOf(std::move(accountOf))
    , m_ownerOf(std::move(ownerOf))
{
}

Task<HttpAnswer> Endpoint::get(HttpRequest request)
{
    HttpAnswer given = answer(request.bearer.view(), Caller::program);
    co_await Sleep(m_clock, latency);
    co_return given;
}

HttpAnswer Endpoint::answer(std::string_view token, Caller caller)
{
    const int owner = m_ownerOf(token);
    HttpAnswer given = answerTo(token, owner);
    if (onCall)
        onCall({m_timeline.now(), owner, std::max(given.status, 0), caller});
    return given;
}

HttpAnswer Endpoint::answerTo(std::string_view token, int owner)
{
    const Mood present = mood(owner);
    if (present == Mood::silent) {
        HttpAnswer nothing;
        nothing.problem = "the connection was reset";
        return nothing;
    }
    if (!m_bucket.take(m_timeline.now())) {
        HttpAnswer refused = withStatus(429, "{}");
        refused.retryAfter = "20";
        return refused;
    }
    if (present == Mood::failing)
        return withStatus(500, "{}");
    const auto account = m_accountOf(token);
    if (!account)
        return withStatus(401, "{}");
    if (present == Mood::forbidding)
        return withStatus(403, "{}");
    return withStatus(200, present == Mood::babbling ? "<html>" : body(*account));
}

std::string Endpoint::body(int account) const
{
    const milliseconds now = m_timeline.now();
    const Instant trueTime = m_timeline.trueTime();
    const Json limits = {window("session", "session", 5h, account, now, trueTime),
                         window("weekly_all", "weekly", 168h, account, now, trueTime),
                         window("weekly_scoped", "weekly", 168h, account + 1, now, trueTime)};
    return Json{{"limits", limits}}.dump();
}

void Endpoint::setMood(int account, Mood mood)
{
    if (m_moods.size() <= static_cast<std::size_t>(account))
        m_moods.resize(static_cast<std::size_t>(account) + 1, Mood::well);
    m_moods[static_cast<std::size_t>(account)] = mood;
}

Endpoint::Mood Endpoint::mood(int account) const
{
    const auto index = static_cast<std::size_t>(std::max(account, 0));
    return index < m_moods.size() ? m_moods[index] : Mood::well;
}

} // namespace vellumor::simulation
