// Every combination of what a fetch may meet, each with its outcome and the exact calls that it may
// spend. What is expected is told by rules of their own below.

#include "usage/UsagePipeline.h"

#include "usage/FakeCollaborators.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace vellumor::usagePipelineDecisionTest {
namespace {

using std::chrono::seconds;
using test::FakeClock;
using test::FakeCollaborators;
using Kind = UsageFetchError::Kind;
using Calls = std::vector<std::string>;

const Instant now = test::instant("2026-03-29T12:00:00Z");
const Instant tokenEnd = now - seconds(60);
const std::string dir = "/home/ada/.claude-work";

enum class Shared { none, fresh, old, future };
enum class Vscode { none, older, newer };
enum class Backoff { none, memory, file, past };
enum class Client { reading, unauthorized, rateLimited, broken };
enum class Revival {
    disabled,
    throttled,
    failed,
    unresolved,
    unchanged,
    reading,
    unauthorized,
    rateLimited,
    broken
};

struct Row {
    TokenStatus token = TokenStatus::readable;
    Shared shared = Shared::none;
    bool snapshot = false;
    Vscode vscode = Vscode::none;
    bool online = true;
    bool localOnly = false;
    Backoff backoff = Backoff::none;
    bool manual = false;
    Client client = Client::reading;
    Revival revival = Revival::reading;

    [[nodiscard]] std::string text() const
    {
        std::ostringstream out;
        out << "token " << name(token) << ", shared " << static_cast<int>(shared) << ", snapshot "
            << snapshot << ", vscode " << static_cast<int>(vscode) << ", online " << online
            << ", local only " << localOnly << ", backoff " << static_cast<int>(backoff)
            << ", manual " << manual << ", client " << static_cast<int>(client) << ", revival "
            << static_cast<int>(revival);
        return out.str();
    }
};

std::vector<Row> allRows()
{
    std::vector<Row> rows = {Row()};
    const auto multiply = [&rows](auto field, auto... values) {
        std::vector<Row> more;
        for (const Row& row : rows) {
            for (const auto value : {values...}) {
                more.push_back(row);
                more.back().*field = value;
            }
        }
        rows = std::move(more);
    };
    multiply(&Row::token, TokenStatus::readable, TokenStatus::expired, TokenStatus::signedOut,
             TokenStatus::needsApproval, TokenStatus::notFound);
    multiply(&Row::shared, Shared::none, Shared::fresh, Shared::old, Shared::future);
    multiply(&Row::snapshot, false, true);
    multiply(&Row::vscode, Vscode::none, Vscode::older, Vscode::newer);
    multiply(&Row::online, true, false);
    multiply(&Row::localOnly, false, true);
    multiply(&Row::backoff, Backoff::none, Backoff::memory, Backoff::file, Backoff::past);
    multiply(&Row::manual, false, true);
    multiply(&Row::client, Client::reading, Client::unauthorized, Client::rateLimited,
             Client::broken);
    multiply(&Row::revival, Revival::disabled, Revival::throttled, Revival::failed,
             Revival::unresolved, Revival::unchanged, Revival::reading, Revival::unauthorized,
             Revival::rateLimited, Revival::broken);
    return rows;
}

// --- The world of a row -------------------------------------------------------------------------

constexpr double sharedPercent = 10;
constexpr double snapshotPercent = 20;
constexpr double vscodePercent = 30;
constexpr double endpointPercent = 40;
const Usage answer = test::reading(endpointPercent, now);

Instant sharedTime(Shared shared)
{
    switch (shared) {
    case Shared::fresh:
        return now - seconds(30);
    case Shared::future:
        return now + seconds(61);
    default:
        return now - seconds(600);
    }
}

FetchResult resultOf(Client client)
{
    switch (client) {
    case Client::unauthorized:
        return test::failure(Kind::unauthorized);
    case Client::rateLimited:
        return test::failure(Kind::rateLimited, 3600.0);
    case Client::broken:
        return test::failure(Kind::http);
    case Client::reading:
        break;
    }
    return answer;
}

FetchResult resultOf(Revival revival)
{
    switch (revival) {
    case Revival::unauthorized:
        return resultOf(Client::unauthorized);
    case Revival::rateLimited:
        return resultOf(Client::rateLimited);
    case Revival::broken:
        return resultOf(Client::broken);
    default:
        return answer;
    }
}

TokenReviver::Attempt attemptOf(Revival revival)
{
    switch (revival) {
    case Revival::throttled:
        return TokenReviver::Attempt::throttled;
    case Revival::failed:
        return TokenReviver::Attempt::failed;
    case Revival::unresolved:
        return TokenReviver::Attempt::binaryUnresolved;
    default:
        return TokenReviver::Attempt::completed;
    }
}

class World {
public:
    explicit World(const Row& row)
        : m_row(row)
    {
        if (row.backoff == Backoff::memory)
            beRefused();
        if (row.shared != Shared::none)
            others.shared[dir] = {test::reading(sharedPercent, sharedTime(row.shared)),
                                  backoffInFile()};
        if (row.snapshot)
            others.snapshots[dir] = test::reading(snapshotPercent, now - seconds(1200));
        if (row.vscode != Vscode::none)
            others.vscode = VscodeStatusCache::Snapshot{
                now - seconds(row.vscode == Vscode::newer ? 10 : 2000), vscodePercent,
                vscodePercent + 1, std::nullopt, std::nullopt};
        others.online = row.online;
        others.localOnly = row.localOnly;
        others.revivalEnabled = row.revival != Revival::disabled;
        others.attempt = attemptOf(row.revival);
        others.expiryAfterRevival =
            row.revival == Revival::unchanged ? tokenEnd : tokenEnd + seconds(28800);
        others.results.clear();
        if (row.token != TokenStatus::expired)
            others.results.push_back(resultOf(row.client));
        others.results.push_back(resultOf(row.revival));
    }

    FetchOutcome fetch()
    {
        FetchRequest request = requestAt(now);
        request.account.tokenStatus = m_row.token;
        request.manual = m_row.manual;
        request.onRevivalStart = [this] { others.calls.emplace_back("onRevivalStart"); };
        return QCoro::waitFor(pipeline.fetch(std::move(request)));
    }

    FakeCollaborators others;
    FakeClock clock{now};
    UsagePipeline pipeline{others, clock};

private:
    static FetchRequest requestAt(Instant moment)
    {
        FetchRequest request;
        request.account.displayName = "Work";
        request.account.configDir = dir;
        request.account.tokenExpiresAt = tokenEnd;
        request.account.tokenStatus = TokenStatus::readable;
        request.now = moment;
        request.effectiveInterval = 300;
        return request;
    }

    // A refusal ten seconds ago: 290 seconds are left of the wait.
    void beRefused()
    {
        others.results = {resultOf(Client::rateLimited)};
        QCoro::waitFor(pipeline.fetch(requestAt(now - seconds(10))));
        others.calls.clear();
        others.entries.clear();
    }

    [[nodiscard]] std::optional<Instant> backoffInFile() const
    {
        if (m_row.backoff == Backoff::file)
            return now + seconds(120);
        if (m_row.backoff == Backoff::past)
            return now - seconds(1);
        return std::nullopt;
    }

    Row m_row;
};

// --- What is expected of a row ------------------------------------------------------------------

struct Expected {
    FetchOutcome outcome;
    Calls calls;
};

bool hasShared(const Row& row)
{
    return row.shared != Shared::none;
}

bool vscodeIsNewest(const Row& row)
{
    if (row.vscode == Vscode::none)
        return false;
    if (!hasShared(row) && !row.snapshot)
        return true;
    return row.vscode == Vscode::newer && !(hasShared(row) && row.shared == Shared::future);
}

// The best that is known without a call.
void expectLocal(const Row& row, Expected& expected)
{
    FetchOutcome& outcome = expected.outcome;
    if (hasShared(row))
        outcome = {test::reading(sharedPercent, sharedTime(row.shared)),
                   UsageSource::sharedCache,
                   {},
                   false,
                   {},
                   {}};
    else if (row.snapshot)
        outcome = {test::reading(snapshotPercent, now - seconds(1200)),
                   UsageSource::snapshot,
                   {},
                   false,
                   {},
                   {}};
    if (!vscodeIsNewest(row))
        return;
    outcome.source = UsageSource::vscodeCache;
    if (!outcome.usage) {
        outcome.usage = test::reading(vscodePercent, now);
        outcome.usage->windows.pop_back();
    }
    outcome.usage->windows[0].percent = vscodePercent;
    outcome.usage->windows[1].percent = vscodePercent + 1;
    outcome.usage->fetchedAt = now - seconds(row.vscode == Vscode::newer ? 10 : 2000);
}

void expectCalls(Expected& expected, const Calls& more)
{
    expected.calls.insert(expected.calls.end(), more.begin(), more.end());
}

void expectReading(Expected& expected, UsageSource source)
{
    expectCalls(expected, {"writeShared", "saveSnapshot", "appendHistory", "recordAnchors"});
    expected.outcome = {answer, source, {}, false, {}, {}};
}

void expectRefusal(const Row& row, Expected& expected)
{
    expectCalls(expected, {"setBackoff", "recordRateLimit"});
    expected.outcome.error = test::failure(Kind::rateLimited, 3600.0);
    expected.outcome.backoffUntil =
        now + seconds(row.backoff == Backoff::memory ? 600 : 300); // doubled by a second refusal
}

void expectRetry(const Row& row, Expected& expected)
{
    expectCalls(expected, {"fetchUsage"});
    if (row.revival == Revival::reading) {
        expectReading(expected, UsageSource::cli);
        expected.outcome.revival = RevivalStatus::succeeded;
    } else if (row.revival == Revival::unauthorized) {
        expected.outcome.revival = RevivalStatus::needsSignIn;
    } else if (row.revival == Revival::rateLimited) {
        expectRefusal(row, expected);
    }
}

void expectRevival(const Row& row, Expected& expected)
{
    expected.outcome.error = test::failure(Kind::unauthorized);
    expected.outcome.revival = RevivalStatus::disabled;
    if (row.revival == Revival::disabled)
        return;
    expectCalls(expected, {"onRevivalStart", row.manual ? "revive by force" : "revive"});
    expected.outcome.revival =
        row.revival == Revival::unresolved ? RevivalStatus::unavailable : RevivalStatus::retrying;
    if (row.revival < Revival::unchanged)
        return;
    expectCalls(expected, {"credentialExpiry"});
    if (row.revival > Revival::unchanged)
        expectRetry(row, expected);
}

void expectCall(const Row& row, Expected& expected)
{
    expectCalls(expected, {"fetchUsage"});
    if (row.client == Client::reading)
        expectReading(expected, UsageSource::endpoint);
    else if (row.client == Client::unauthorized)
        expectRevival(row, expected);
    else if (row.client == Client::rateLimited)
        expectRefusal(row, expected);
    else
        expected.outcome.error = test::failure(Kind::http);
}

std::optional<Instant> runningBackoff(const Row& row)
{
    if (row.backoff == Backoff::memory)
        return now + seconds(290);
    if (row.backoff == Backoff::file && hasShared(row))
        return now + seconds(120);
    return std::nullopt;
}

Expected expectedOf(const Row& row)
{
    Expected expected;
    expected.calls = hasShared(row) ? Calls{"readShared", "readVscode"}
                                    : Calls{"readShared", "loadSnapshots", "readVscode"};
    expectLocal(row, expected);
    FetchOutcome& outcome = expected.outcome;
    const bool mayCall = row.online && !row.localOnly;
    if (row.token == TokenStatus::signedOut) {
        outcome.error = test::failure(Kind::unauthorized);
        outcome.revival = RevivalStatus::needsSignIn;
    } else if (row.token == TokenStatus::expired) {
        outcome.isOffline = !row.online;
        if (mayCall)
            expectRevival(row, expected);
    } else if (row.shared == Shared::fresh && !row.manual) {
        outcome = {test::reading(sharedPercent, sharedTime(row.shared)),
                   UsageSource::sharedCache,
                   {},
                   false,
                   {},
                   {}};
    } else if (!mayCall || runningBackoff(row)) {
        outcome.isOffline = !row.online;
        outcome.backoffUntil = runningBackoff(row);
    } else {
        expectCall(row, expected);
    }
    return expected;
}

TEST(UsagePipelineDecision, everyCombinationHasItsOutcomeAndSpendsNoCallThatItNeedNot)
{
    testing::internal::CaptureStderr(); // a line for each call
    int wrong = 0;
    std::ptrdiff_t mostCalls = 0;
    const auto rows = allRows();
    for (const Row& row : rows) {
        World world(row);
        const FetchOutcome outcome = world.fetch();
        const Expected expected = expectedOf(row);
        const Calls& calls = world.others.calls;
        mostCalls = std::max(mostCalls, std::count(calls.begin(), calls.end(), "fetchUsage"));
        if (outcome == expected.outcome && calls == expected.calls)
            continue;
        if (++wrong > 5)
            break;
        EXPECT_TRUE(outcome == expected.outcome) << row.text();
        EXPECT_EQ(calls, expected.calls) << row.text();
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(mostCalls, 2); // there is no third try
    EXPECT_EQ(rows.size(), 5U * 4 * 2 * 3 * 2 * 2 * 4 * 2 * 4 * 9);
}

} // namespace
} // namespace vellumor::usagePipelineDecisionTest
