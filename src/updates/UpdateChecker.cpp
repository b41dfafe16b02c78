#include "updates/UpdateChecker.h"

#include <algorithm>

namespace vellumor {

namespace {

using Kind = UpdateFailure::Kind;

UpdateResult failure(Kind kind, std::string detail = {})
{
    return UpdateFailure{kind, 0, std::move(detail)};
}

Kind kindOf(ReleaseFeed::Problem problem)
{
    switch (problem) {
    case ReleaseFeed::Problem::tooLarge:
        return Kind::tooLarge;
    case ReleaseFeed::Problem::malformed:
        return Kind::malformed;
    case ReleaseFeed::Problem::badSignature:
        return Kind::badSignature;
    case ReleaseFeed::Problem::newerSchema:
    case ReleaseFeed::Problem::otherProduct:
    case ReleaseFeed::Problem::badRelease:
    case ReleaseFeed::Problem::badPage:
        return Kind::unusable;
    }
    return Kind::unusable;
}

} // namespace

UpdateChecker::UpdateChecker(HttpTransport& transport, UpdateStore& store, const Clock& clock,
                             const Settings& settings)
    : m_transport(transport)
    , m_store(store)
    , m_clock(clock)
    , m_feed(settings.feed)
    , m_website(settings.website)
{
    const auto version = ReleaseVersion::parse(settings.version);
    if (!version || !m_feed.starts_with("https://"))
        return;
    m_version = *version;
    m_key = ReleaseFeed::parseKey(settings.key);
}

Task<UpdateResult> UpdateChecker::check()
{
    if (!isConfigured())
        co_return UpdatesNotConfigured();
    const std::weak_ptr<bool> alive = m_alive;
    HttpRequest request;
    request.url = m_feed;
    const HttpAnswer answer = co_await m_transport.get(std::move(request));
    if (alive.expired())
        co_return failure(Kind::transport, "the program is ending");
    co_return resultOf(answer);
}

UpdateResult UpdateChecker::resultOf(const HttpAnswer& answer)
{
    if (answer.kind == HttpAnswer::Kind::transport)
        return failure(Kind::transport, answer.problem);
    noteAnswer(0);
    if (answer.kind == HttpAnswer::Kind::tooLarge)
        return failure(Kind::tooLarge);
    if (answer.status >= 300 && answer.status < 400)
        return failure(Kind::redirected);
    if (answer.status != 200)
        return UpdateFailure{Kind::http, answer.status, {}};
    const auto decoded = ReleaseFeed::decode(answer.body, *m_key, m_website);
    if (const auto* problem = std::get_if<ReleaseFeed::Problem>(&decoded))
        return failure(kindOf(*problem));
    return judge(std::get<ReleaseFeed>(decoded));
}

// An old feed with a good signature would keep a user on a release whose flaws are known.
UpdateResult UpdateChecker::judge(const ReleaseFeed& feed)
{
    if (feed.serial < m_store.current().serial)
        return failure(Kind::replayed);
    noteAnswer(feed.serial);
    if (feed.version <= m_version)
        return UpToDate();
    return UpdateAvailable{feed.version.text(), feed.page};
}

void UpdateChecker::noteAnswer(int serial)
{
    UpdateState state = m_store.current();
    state.checkedAt = m_clock.now();
    state.serial = std::max(state.serial, serial);
    m_store.save(state);
}

} // namespace vellumor
