#include "diagnostics/Findings.h"

#include "history/ResetAnchorStore.h"
#include "support/FakeClock.h"
#include "support/FakeKeyring.h"
#include "support/TempFolder.h"
#include "usage/caches/SharedCache.h"

#include <gtest/gtest.h>

namespace vellumor::findingsTest {
namespace {

using test::FakeClock;
using test::FakeKeyring;
using test::TempFolder;

constexpr const char* livingCredential =
    R"({"claudeAiOauth":{"accessToken":"example-token","subscriptionType":"pro"}})";
constexpr const char* identity = R"({"oauthAccount":{"emailAddress":"ann@example.org"}})";

struct FindingsTest : testing::Test {
    TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    FakeClock clock;
    FakeKeyring keyring;
    ServiceDirectories directories{home.path()};
    KeychainReader keychain{directories, keyring, clock};

    Findings gather(const Environment& environment = {})
    {
        return Findings::gather(environment, folders, directories, keychain);
    }
};

TEST_F(FindingsTest, anEmptyHomeIsReportedAndStaysEmpty)
{
    const Findings findings = gather();
    EXPECT_TRUE(findings.accounts.empty());
    ASSERT_TRUE(findings.configDirs);
    EXPECT_TRUE(findings.configDirs->empty());
    EXPECT_EQ(findings.preferences, Preferences());
    EXPECT_TRUE(findings.shouldShowOnboarding);
    EXPECT_TRUE(findings.rateLimitLines.empty());
    EXPECT_TRUE(test::namesIn(home.path()).empty());
}

TEST_F(FindingsTest, theCachesOfAnAccountAreThoseOfItsConfigDirectory)
{
    const std::string work = home.makeFolder(".claude-work");
    home.put(".claude-work/.credentials.json", livingCredential);
    home.makeFolder(".claude");
    home.put(".claude/.credentials.json", livingCredential);
    home.put(".claude-work/vscode-claude-status-cache.json",
             R"({"updatedAt": "2026-03-29T00:00:00Z", "usageData": {"utilization5h": 12}})");
    const FileStore files;
    Usage usage;
    usage.fetchedAt = clock.now();
    SharedCache(files, folders.quorle() + "/usage-cache").write(usage, work, std::nullopt);
    LimitWindow week;
    week.kind = "weekly_all";
    week.group = "weekly";
    week.resetsAt = clock.now();
    usage.windows = {week};
    ResetAnchorStore(files, folders.vellumor() + "/reset-anchors.json").record(usage, work);

    Findings findings = gather();
    ASSERT_EQ(findings.caches.size(), 2U);
    const AccountCaches& caches = findings.caches[work];
    EXPECT_TRUE(caches.shared);
    EXPECT_EQ(caches.vscode.value().util5h, 12);
    EXPECT_TRUE(caches.anchors.contains("weekly_all"));
    const AccountCaches& none = findings.caches[home.file(".claude")];
    EXPECT_FALSE(none.shared || none.vscode || !none.anchors.empty());
}

TEST_F(FindingsTest, aHomeThatCannotBeListedIsToldApartFromAnEmptyOne)
{
    folders.home = home.file("nowhere");
    EXPECT_FALSE(gather().configDirs);
}

TEST_F(FindingsTest, everyAccountIsFoundWithItsState)
{
    home.put(".claude/.credentials.json", livingCredential);
    home.put(".claude.json", identity);
    home.put(".claude-work/.claude.json", identity);
    const Findings findings = gather();
    ASSERT_EQ(findings.accounts.size(), 2U);
    EXPECT_EQ(findings.accounts[0].tokenStatus, TokenStatus::readable);
    EXPECT_EQ(findings.accounts[1].tokenStatus, TokenStatus::notFound);
    EXPECT_EQ(findings.services, std::vector<std::string>{"Claude Code-credentials"});
    EXPECT_EQ(findings.pollable, 1);
}

TEST_F(FindingsTest, aKnownDirectoryInTheHomeIsCountedOnceAndOneElsewhereNotAsOfTheHome)
{
    home.put(".claude-a/.credentials.json", livingCredential);
    home.put("elsewhere/b/.credentials.json", livingCredential);
    const auto record = [](const char* id) {
        return std::string(R"(":{"id":")") + id +
               R"(","name":"A","order":0,"tracked":true,"pinned":false})";
    };
    home.put("data/Vellumor/accounts.json", R"({"schemaVersion":1,"accounts":{")" +
                                                home.file(".claude-a") + record("aaaaaa") + ",\"" +
                                                home.file("elsewhere/b") + record("bbbbbb") + "}}");
    const Findings findings = gather();
    ASSERT_TRUE(findings.configDirs);
    EXPECT_EQ(*findings.configDirs, std::vector<std::string>{home.file(".claude-a")});
    EXPECT_EQ(findings.accounts.size(), 2U);
    EXPECT_EQ(findings.pollable, 2);
}

TEST_F(FindingsTest, untrackedAndHiddenAccountsAreNotPollable)
{
    home.put(".claude-a/.credentials.json", livingCredential);
    home.put(".claude-b/.credentials.json", livingCredential);
    home.put(".claude-c/.credentials.json", livingCredential);
    home.put("data/Vellumor/accounts.json",
             R"({"schemaVersion":1,"accounts":{")" + home.file(".claude-a") +
                 R"(":{"id":"aaaaaa","name":"A","order":0,"tracked":false,"pinned":false},")" +
                 home.file(".claude-b") +
                 R"(":{"id":"bbbbbb","name":"B","order":1,"tracked":true,"pinned":false,)"
                 R"("removal":{"at":"2026-01-01T00:00:00Z"}}}})");
    const Findings findings = gather();
    EXPECT_EQ(findings.accounts.size(), 3U);
    EXPECT_EQ(findings.pollable, 1);
}

TEST_F(FindingsTest, aServiceThatNoAccountTookIsListedApart)
{
    keyring.put("Claude Code-credentials-0badcafe", livingCredential);
    const Findings findings = gather();
    EXPECT_TRUE(findings.accounts.empty());
    ASSERT_EQ(findings.unmatched.size(), 1U);
    EXPECT_EQ(findings.unmatched[0].resolvedService, "Claude Code-credentials-0badcafe");
    EXPECT_EQ(findings.unmatched[0].tokenStatus, TokenStatus::readable);
    EXPECT_EQ(findings.unmatched[0].plan, "pro");
}

TEST_F(FindingsTest, theUsersOwnFilesAreRead)
{
    home.put("data/Vellumor/preferences.json", R"({"userInterval":300})");
    home.put("data/Vellumor/onboarding.json", R"({"schemaVersion":1,"completedVersion":1})");
    home.put("data/Vellumor/429-log.jsonl", "1\n2\n3\n4\n5\n6\n");
    home.put("data/Quorle/presence/ostrelline.json",
             R"({"source":"ostrelline","version":"2","firstSeenAt":"x","updatedAt":"y"})");
    const Findings findings = gather();
    EXPECT_EQ(findings.preferences.userInterval, 300);
    EXPECT_EQ(findings.onboarding.completedVersion, 1);
    EXPECT_FALSE(findings.shouldShowOnboarding);
    EXPECT_EQ(findings.rateLimitLines, (std::vector<std::string>{"2", "3", "4", "5", "6"}));
    EXPECT_TRUE(findings.siblingPresence);
    EXPECT_FALSE(findings.ownPresence);
}

TEST_F(FindingsTest, whatKeepsAnAccountOutOfSightIsTold)
{
    const std::string record = R"(":{"id":"aaaaaa","name":"A","order":0,"pinned":false,"tracked":)";
    home.put("data/Vellumor/accounts.json",
             R"({"schemaVersion":1,"accounts":{"/a)" + record + R"(true},"/b)" + record +
                 R"(false},"/c)" + record + R"(true,"removal":{"at":"2026-01-01T00:00:00Z"}}}})");
    EXPECT_EQ(gather().wishes,
              (std::map<std::string, std::string>{
                  {"/a", ""}, {"/b", "not tracked"}, {"/c", "removed by the user"}}));
}

TEST_F(FindingsTest, theLastReportsOfCrashesAreReadWithWhatBecameOfThem)
{
    const auto report = [](const std::string& incident) {
        return R"({"incident_id":")" + incident + "\"}\n{\"exception\":{}}";
    };
    for (int i = 10; i < 32; ++i)
        home.put("data/Vellumor/DiagnosticReports/Vellumor-" + std::to_string(i) + ".ips",
                 report(std::to_string(i)));
    home.put("data/Vellumor/DiagnosticReports/Vellumor-30.ips", "broken");
    home.put("data/Vellumor/crash-state.json",
             R"({"consumedIncidents":["29"],"lastReportedDay":{}})");
    const KnownCrashes known = gather().crashes;
    EXPECT_EQ(known.reportCount, 22U);
    ASSERT_EQ(known.crashes.size(), 19U); // of the last twenty
    EXPECT_EQ(known.crashes[0].digest.incidentID, "31");
    EXPECT_FALSE(known.crashes[0].isReported);
    EXPECT_EQ(known.crashes[1].digest.incidentID, "29");
    EXPECT_TRUE(known.crashes[1].isReported);
}

TEST_F(FindingsTest, telemetryIsReadAsItsFileStands)
{
    EXPECT_FALSE(gather().telemetry);
    home.put("data/Vellumor/telemetry.json",
             R"({"schemaVersion":2,"installID":"inst_1","diagnosticsEnabled":false})");
    const std::string line = gather().telemetry.value_or("");
    EXPECT_NE(line.find("inst_1"), std::string::npos) << line;
    const std::string broken = home.put("data/Vellumor/telemetry.json", "broken");
    EXPECT_EQ(gather().telemetry, "unreadable, to be replaced at the next start");
    EXPECT_EQ(test::contentsOf(broken), "broken");
}

TEST_F(FindingsTest, theEnvironmentDecidesFirstWhetherTheFlowIsShown)
{
    home.put("data/Vellumor/onboarding.json", R"({"schemaVersion":1,"completedVersion":1})");
    EXPECT_TRUE(gather({{"VELLUMOR_ONBOARDING", "show"}}).shouldShowOnboarding);
    EXPECT_FALSE(gather({{"VELLUMOR_ONBOARDING", "other"}}).shouldShowOnboarding);
}

} // namespace
} // namespace vellumor::findingsTest
