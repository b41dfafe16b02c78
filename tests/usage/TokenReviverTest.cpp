#include "usage/TokenReviver.h"

#include "async/Sleep.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vellumor::tokenReviverTest {
namespace {

using namespace std::chrono_literals;
using test::FakeClock;
using test::instant;
using Attempt = TokenReviver::Attempt;
using Texts = std::vector<std::string>;

const Instant start = instant("2026-03-29T00:59:59Z");

Account account(const std::string& name)
{
    Account made;
    made.id = "id-" + name;
    made.displayName = name;
    made.configDir = "/home/me/.claude-" + name;
    made.email = "someone@example.org";
    made.org = "Example Organisation";
    return made;
}

// A reviver whose searches and runs take as long as a test wants, by the test's own clock.
struct TokenReviverTest : testing::Test {
    FakeClock clock{start};
    TokenReviver reviver;
    std::optional<std::string> preference;
    std::optional<std::string> found = "/opt/x/claude";
    int status = 0;
    std::chrono::milliseconds searchTime{};
    std::chrono::milliseconds runTime{};
    Texts searches; // the preference of each, or "none"
    Texts runs;     // what each was given

    TokenReviverTest()
    {
        reviver.workDir = "/data/revive";
        reviver.pathOverride = [this] { return preference; };
        reviver.resolveBinary = [this](std::optional<std::string> wanted) {
            return search(std::move(wanted));
        };
        reviver.runUsage = [this](std::string binary, std::string configDir, std::string workDir) {
            return run(std::move(binary), std::move(configDir), std::move(workDir));
        };
    }
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override
    {
        clock.advance(1h); // whoever is still at work comes to an end
        const std::string rest = testing::internal::GetCapturedStderr();
        EXPECT_EQ(rest.find("example.org"), std::string::npos) << rest;
        EXPECT_EQ(rest.find("Example Organisation"), std::string::npos) << rest;
    }

    Task<std::optional<std::string>> search(std::optional<std::string> wanted)
    {
        searches.push_back(wanted.value_or("none"));
        const auto result = found;
        co_await Sleep(clock, searchTime);
        co_return result;
    }
    Task<int> run(std::string binary, std::string configDir, std::string workDir)
    {
        runs.push_back(binary + " " + configDir + " " + workDir);
        co_await Sleep(clock, runTime);
        co_return status;
    }

    // For an attempt that waits for nothing.
    Attempt reviveAt(double seconds, bool force = false, const std::string& name = "work")
    {
        std::optional<Attempt> result;
        const auto after = std::chrono::milliseconds(std::llround(seconds * 1e3));
        const auto task = note(result, account(name), start + after, force);
        EXPECT_TRUE(result);
        return result.value_or(Attempt::failed);
    }
    Task<> note(std::optional<Attempt>& result, Account revived, Instant now, bool force)
    {
        result = co_await reviver.revive(std::move(revived), now, force);
    }
    std::string logSoFar()
    {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }
};

TEST_F(TokenReviverTest, runsWhatWasFoundInTheAccountsDirectoryFromTheWorkFolder)
{
    EXPECT_EQ(reviveAt(0), Attempt::completed);
    EXPECT_EQ(searches, Texts{"none"});
    EXPECT_EQ(runs, Texts{"/opt/x/claude /home/me/.claude-work /data/revive"});
}

TEST_F(TokenReviverTest, anExitOfZeroIsCompletedAndEveryOtherIsFailed)
{
    const std::pair<int, Attempt> rows[] = {
        {0, Attempt::completed}, {1, Attempt::failed},   {-1, Attempt::failed},
        {15, Attempt::failed},   {255, Attempt::failed},
    };
    for (const auto& [given, expected] : rows) {
        status = given;
        EXPECT_EQ(reviveAt(0, true), expected) << given;
    }
}

TEST_F(TokenReviverTest, oneAccountIsTriedOnceAnHour)
{
    const std::pair<double, Attempt> rows[] = {
        {0.0, Attempt::completed},   {0.0, Attempt::throttled},      {1.0, Attempt::throttled},
        {-1.0, Attempt::throttled},  {3599.999, Attempt::throttled}, {3600.0, Attempt::completed},
        {3601.0, Attempt::throttled}};
    for (const auto& [seconds, expected] : rows)
        EXPECT_EQ(reviveAt(seconds), expected) << seconds;
    EXPECT_EQ(runs.size(), 2U);
}

TEST_F(TokenReviverTest, theIntervalIsTheOneThatIsSet)
{
    reviver.minInterval = 90.0;
    EXPECT_EQ(reviveAt(0), Attempt::completed);
    EXPECT_EQ(reviveAt(89.999), Attempt::throttled);
    EXPECT_EQ(reviveAt(90), Attempt::completed);
}

TEST_F(TokenReviverTest, aThrottledAttemptDoesNotProlongTheHour)
{
    EXPECT_EQ(reviveAt(0), Attempt::completed);
    EXPECT_EQ(reviveAt(1800), Attempt::throttled);
    EXPECT_EQ(reviveAt(3600), Attempt::completed);
}

TEST_F(TokenReviverTest, forceLiftsTheThrottleAndStartsTheHourAnew)
{
    EXPECT_EQ(reviveAt(0), Attempt::completed);
    EXPECT_EQ(reviveAt(1800, true), Attempt::completed);
    EXPECT_EQ(reviveAt(3600), Attempt::throttled);
    EXPECT_EQ(reviveAt(5399.999), Attempt::throttled);
    EXPECT_EQ(reviveAt(5400), Attempt::completed);
}

TEST_F(TokenReviverTest, anAttemptThatFailsCountsLikeAnyOther)
{
    status = 1;
    EXPECT_EQ(reviveAt(0), Attempt::failed);
    EXPECT_EQ(reviveAt(3599), Attempt::throttled);
}

TEST_F(TokenReviverTest, anAttemptWithoutAProgramCountsLikeAnyOther)
{
    found = std::nullopt;
    EXPECT_EQ(reviveAt(0), Attempt::binaryUnresolved);
    EXPECT_EQ(reviveAt(3599), Attempt::throttled);
    EXPECT_EQ(reviveAt(3600), Attempt::binaryUnresolved);
    EXPECT_TRUE(runs.empty());
}

TEST_F(TokenReviverTest, everyAccountHasAnHourOfItsOwn)
{
    EXPECT_EQ(reviveAt(0, false, "a"), Attempt::completed);
    EXPECT_EQ(reviveAt(1, false, "b"), Attempt::completed);
    EXPECT_EQ(reviveAt(3600, false, "b"), Attempt::throttled);
    EXPECT_EQ(reviveAt(3600, false, "a"), Attempt::completed);
}

TEST_F(TokenReviverTest, anAccountOfTheSameDirectoryIsTheSame)
{
    EXPECT_EQ(reviveAt(0), Attempt::completed);
    Account renamed = account("work");
    renamed.id = "another";
    renamed.displayName = "Another";
    std::optional<Attempt> result;
    const auto task = note(result, renamed, start, false);
    EXPECT_EQ(result, Attempt::throttled);
}

TEST_F(TokenReviverTest, theProgramIsSearchedForOnce)
{
    EXPECT_EQ(reviveAt(0, false, "a"), Attempt::completed);
    EXPECT_EQ(reviveAt(0, false, "b"), Attempt::completed);
    EXPECT_EQ(reviveAt(7200, false, "a"), Attempt::completed);
    EXPECT_EQ(searches.size(), 1U);
    EXPECT_EQ(runs, (Texts{"/opt/x/claude /home/me/.claude-a /data/revive",
                           "/opt/x/claude /home/me/.claude-b /data/revive",
                           "/opt/x/claude /home/me/.claude-a /data/revive"}));
}

TEST_F(TokenReviverTest, aSearchInVainIsRemembered)
{
    found = std::nullopt;
    EXPECT_EQ(reviveAt(0), Attempt::binaryUnresolved);
    found = "/opt/x/claude"; // installed meanwhile
    EXPECT_EQ(reviveAt(0, true), Attempt::binaryUnresolved);
    EXPECT_EQ(searches.size(), 1U);
    EXPECT_TRUE(runs.empty());
}

TEST_F(TokenReviverTest, aChangeOfThePreferenceSearchesAgain)
{
    const std::pair<std::optional<std::string>, std::size_t> rows[] = {
        {std::nullopt, 1}, {"/a/claude", 2},  {"/a/claude", 2}, {"/b/claude", 3},
        {"/a/claude", 4},  {std::nullopt, 5}, {std::nullopt, 5}};
    for (const auto& [wanted, count] : rows) {
        preference = wanted;
        found = wanted;
        EXPECT_EQ(reviveAt(0, true), wanted ? Attempt::completed : Attempt::binaryUnresolved);
        EXPECT_EQ(searches.size(), count);
        EXPECT_EQ(searches.back(), wanted.value_or("none"));
    }
    EXPECT_EQ(runs.size(), 4U);
    EXPECT_EQ(runs.back(), "/a/claude /home/me/.claude-work /data/revive");
}

TEST_F(TokenReviverTest, ofTwoAccountsAtATimeTheSecondWaitsForTheSearchOfTheFirst)
{
    searchTime = 10s;
    std::optional<Attempt> a;
    std::optional<Attempt> b;
    const auto first = note(a, account("a"), start, false);
    const auto second = note(b, account("b"), start, false);
    clock.advance(9999ms);
    EXPECT_TRUE(runs.empty());
    clock.advance(1ms);
    EXPECT_EQ(searches.size(), 1U);
    std::sort(runs.begin(), runs.end());
    EXPECT_EQ(runs, (Texts{"/opt/x/claude /home/me/.claude-a /data/revive",
                           "/opt/x/claude /home/me/.claude-b /data/revive"}));
    EXPECT_EQ(a, Attempt::completed);
    EXPECT_EQ(b, Attempt::completed);
}

TEST_F(TokenReviverTest, whoWaitedGoesByThePreferenceAsItIsThen)
{
    searchTime = 10s;
    std::optional<Attempt> a;
    std::optional<Attempt> b;
    const auto first = note(a, account("a"), start, false);
    const auto second = note(b, account("b"), start, false);
    preference = "/b/claude";
    clock.advance(20s);
    EXPECT_EQ(searches, (Texts{"none", "/b/claude"}));
    EXPECT_EQ(b, Attempt::completed);
}

TEST_F(TokenReviverTest, runsOfSeveralAccountsGoOnSideBySide)
{
    runTime = 120s;
    std::optional<Attempt> a;
    std::optional<Attempt> b;
    const auto first = note(a, account("a"), start, false);
    clock.advance(60s);
    const auto second = note(b, account("b"), clock.now(), false);
    EXPECT_EQ(runs.size(), 2U);
    clock.advance(60s);
    EXPECT_EQ(a, Attempt::completed);
    EXPECT_EQ(b, std::nullopt);
    clock.advance(60s);
    EXPECT_EQ(b, Attempt::completed);
}

TEST_F(TokenReviverTest, anAccountThatIsBeingRevivedIsNotRevivedASecondTime)
{
    searchTime = 10s;
    runTime = 120s;
    std::optional<Attempt> first;
    const auto task = note(first, account("work"), start, false);
    EXPECT_EQ(reviveAt(0), Attempt::throttled) << "while the program is searched for";
    clock.advance(10s);
    EXPECT_EQ(reviveAt(10), Attempt::throttled) << "while it runs";
    EXPECT_EQ(runs.size(), 1U);
    clock.advance(120s);
    EXPECT_EQ(first, Attempt::completed);
}

TEST_F(TokenReviverTest, theLogTellsWhatIsRunAndHowItEnded)
{
    reviveAt(0);
    EXPECT_EQ(logSoFar(),
              "[revive] work: running headless /usage (/opt/x/claude) to refresh expired token\n"
              "[revive] work: /usage ok (exit 0)\n");
    status = 3;
    reviveAt(0, true);
    EXPECT_EQ(logSoFar(),
              "[revive] work: running headless /usage (/opt/x/claude) to refresh expired token\n"
              "[revive] work: /usage failed (exit 3)\n");
    status = -1;
    reviveAt(0, true);
    EXPECT_TRUE(logSoFar().ends_with("[revive] work: /usage failed (exit -1)\n"));
}

TEST_F(TokenReviverTest, theLogTellsWhyNothingIsRun)
{
    found = std::nullopt;
    reviveAt(0);
    EXPECT_EQ(logSoFar(), "[revive] work: claude binary not resolvable — cannot revive\n");
    reviveAt(1);
    EXPECT_EQ(logSoFar(), "[revive] work: throttled (attempted within the last 60m)\n");
    reviver.minInterval = 90.0;
    reviveAt(1);
    EXPECT_EQ(logSoFar(), "[revive] work: throttled (attempted within the last 2m)\n");
}

TEST_F(TokenReviverTest, noPathCanForgeALineOfTheLog)
{
    found = "/opt/x\n[main] forged/claude";
    reviveAt(0);
    EXPECT_EQ(logSoFar().find("\n[main]"), std::string::npos);
}

} // namespace
} // namespace vellumor::tokenReviverTest
