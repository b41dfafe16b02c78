// The pipeline with nothing faked: real files, a real server, a real `claude` stand-in started by a
// real shell.

#include "accounts/DefaultAccount.h"
#include "accounts/KeychainReader.h"
#include "async/LiveClock.h"
#include "integration/FileEvents.h"
#include "platform/linux/QtHttpTransport.h"
#include "platform/linux/QtProcessRunner.h"
#include "store/AccountFiles.h"
#include "support/FakeKeyring.h"
#include "support/LoopbackServer.h"
#include "support/TempFolder.h"
#include "usage/HeadlessUsage.h"
#include "usage/LiveCollaborators.h"
#include "usage/UsagePipeline.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::pipelineTest {
namespace {

using std::chrono::hours;
using std::chrono::seconds;
using test::Answer;
using test::contentsOf;
using test::LoopbackServer;
using test::Reaction;
using test::SeenRequest;
using test::TempFolder;

constexpr const char* limits =
    R"({"limits": [{"kind": "session", "group": "session", "percent": 62,
                    "resets_at": "2100-01-01T00:00:00Z"},
                   {"kind": "weekly_all", "group": "weekly", "percent": 30,
                    "resets_at": "2100-01-05T00:00:00Z"}]})";

struct AlwaysOnline final : PathMonitor {
    void start(std::function<void(bool)>) override {}
};

std::string credential(const std::string& token, Instant end)
{
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(end.time_since_epoch()).count();
    return R"({"claudeAiOauth":{"accessToken":")" + token + R"(","expiresAt":)" +
           std::to_string(milliseconds) + "}}";
}

// Everything between the pipeline and the disk, the wire and the shell, as the program has it.
struct RealWorld {
    TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    std::string dir = home.makeFolder(".claude-work");
    Reaction reaction = Answer{200, {}, limits};
    LoopbackServer server{[this](const SeenRequest&) { return reaction; }};

    LiveClock clock;
    Worker storeWorker;
    Worker credentialWorker;
    FileStore files;
    test::FakeKeyring keyring;
    ServiceDirectories directories{home.path()};
    KeychainReader keychain{directories, keyring, clock};
    UsageClient::ReadCredentials readCredentials = [this](const std::string& service) {
        return keychain.readCredentials(service);
    };
    QtHttpTransport transport;
    UsageClient client{transport, credentialWorker, clock, readCredentials,
                       server.url("/api/oauth/usage")};
    AlwaysOnline paths;
    NetworkMonitor network{paths};
    QtProcessRunner processes{clock};
    HeadlessUsage headless{
        processes,
        credentialWorker,
        files,
        {{{"HOME", home.path()}, {"PATH", "/usr/bin:/bin"}}, home.path(), "/bin/bash"}};
    TokenReviver reviver;
    UsageStores stores{storeWorker, files, folders};
    LiveCollaborators others{{stores, credentialWorker, client, reviver, network, readCredentials,
                              [] { return false; }, [] { return true; }}};
    std::unique_ptr<UsagePipeline> pipeline = std::make_unique<UsagePipeline>(others, clock);

    RealWorld()
    {
        directories.rebuild({dir});
        reviver.workDir = home.makeFolder("data/Vellumor/revive");
        reviver.pathOverride = [] { return std::nullopt; };
        reviver.resolveBinary = [this](std::optional<std::string>) { return standIn(); };
        reviver.runUsage = [this](std::string binary, std::string configDir, std::string workDir) {
            return headless.spawnUsage(std::move(binary), std::move(configDir), std::move(workDir));
        };
        signIn("example-token", clock.now() + hours(8));
    }

    Task<std::optional<std::string>> standIn()
    {
        const std::string path = home.file("bin/claude");
        co_return std::filesystem::exists(path) ? std::optional(path) : std::nullopt;
    }
    void putStandIn(const std::string& script) const
    {
        const std::string path = home.put("bin/claude", "#!/bin/sh\n" + script);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    void signIn(const std::string& token, Instant end) const
    {
        home.put(".claude-work/.credentials.json", credential(token, end));
    }
    [[nodiscard]] FetchRequest request(TokenStatus status = TokenStatus::readable) const
    {
        FetchRequest request;
        request.account.displayName = "Work";
        request.account.configDir = dir;
        request.account.resolvedService = DefaultAccount::serviceCandidates(dir, home.path())[0];
        request.account.tokenStatus = status;
        request.now = clock.now();
        request.effectiveInterval = 300;
        return request;
    }
    FetchOutcome fetch(FetchRequest asked)
    {
        return QCoro::waitFor(pipeline->fetch(std::move(asked)));
    }
    FetchOutcome fetch(TokenStatus status = TokenStatus::readable)
    {
        return fetch(request(status));
    }
    FetchOutcome fetchByHand(TokenStatus status = TokenStatus::readable)
    {
        auto asked = request(status);
        asked.manual = true;
        return fetch(std::move(asked));
    }
    [[nodiscard]] std::string sharedFile() const
    {
        return AccountFiles::path(folders.quorle() + "/usage-cache", dir);
    }
    [[nodiscard]] std::string historyFile() const
    {
        return AccountFiles::path(folders.vellumor() + "/history", dir);
    }
};

struct PipelineTest : testing::Test, RealWorld {};

TEST_F(PipelineTest, aReadingFromTheEndpointReachesEveryStore)
{
    const FetchOutcome outcome = fetch();
    EXPECT_EQ(outcome.source, UsageSource::endpoint);
    ASSERT_TRUE(outcome.usage);
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.requests()[0].header("authorization"), "Bearer example-token");

    const auto shared = SharedCache::readFrom(folders.quorle() + "/usage-cache", dir);
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->usage(), outcome.usage);
    EXPECT_EQ(UsageSnapshotStore(files, folders.vellumor() + "/usage-snapshots.json").load(),
              (std::map<std::string, Usage>{{dir, *outcome.usage}}));
    EXPECT_EQ(UsageHistoryStore::loadFrom(folders.vellumor() + "/history", dir),
              UsageSamples{UsageSample::of(*outcome.usage)});
    EXPECT_EQ(ResetAnchorStore::loadFrom(folders.vellumor() + "/reset-anchors.json")[dir].size(),
              1U);
    for (const std::string& file : test::filesBelow(folders.data))
        EXPECT_EQ(test::modeOf(file), 0600U) << file;
}

TEST_F(PipelineTest, aFetchServedByTheSharedCacheWritesNothingAndReadsEachFileAtMostOnce)
{
    fetch();
    const std::string vscode =
        home.put(".claude-work/vscode-claude-status-cache.json",
                 R"({"updatedAt": "2026-01-01T00:00:00Z", "usageData": {}})");
    test::FileEvents events({folders.quorle() + "/usage-cache", folders.vellumor(),
                             folders.vellumor() + "/history", dir});
    EXPECT_EQ(fetch().source, UsageSource::sharedCache);
    EXPECT_EQ(server.requests().size(), 1U);
    const auto seen = events.take();
    EXPECT_EQ(seen.changes, std::vector<std::string>());
    EXPECT_EQ(seen.opens, (std::vector<std::string>{sharedFile(), vscode}));
}

TEST_F(PipelineTest, aForeignProgramsReadingIsServedWithoutACall)
{
    Usage foreign;
    foreign.fetchedAt = clock.now() - seconds(30);
    SharedCache(files, folders.quorle() + "/usage-cache").write(foreign, dir, std::nullopt);
    const FetchOutcome outcome = fetch();
    EXPECT_EQ(outcome.source, UsageSource::sharedCache);
    EXPECT_TRUE(server.requests().empty());
    EXPECT_FALSE(std::filesystem::exists(historyFile()));
}

TEST_F(PipelineTest, aRefusalIsToldToTheOthersAndLoggedAndOutlivesARestart)
{
    fetch();
    reaction = Answer{429, {{"Retry-After", "7"}}, ""};
    const FetchOutcome refused = fetchByHand();
    ASSERT_TRUE(refused.backoffUntil);
    EXPECT_EQ(refused.source, UsageSource::sharedCache);
    EXPECT_EQ(SharedCache::readFrom(folders.quorle() + "/usage-cache", dir)->backoffUntil,
              refused.backoffUntil);
    const auto lines = RateLimitLog::recentIn(folders.vellumor() + "/429-log.jsonl", 5);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find(R"("retryAfterSeconds":7,)"), std::string::npos);

    pipeline = std::make_unique<UsagePipeline>(others, clock);
    EXPECT_EQ(fetchByHand().backoffUntil, refused.backoffUntil);
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(PipelineTest, anExpiredTokenIsRenewedByClaudeCodeAndTheReadingFetchedWithTheNewOne)
{
    signIn("old-token", clock.now() - hours(1));
    putStandIn("cat > \"$CLAUDE_CONFIG_DIR/.credentials.json\" <<'END'\n" +
               credential("new-token", clock.now() + hours(8)) + "\nEND\n");
    auto asked = request(TokenStatus::expired);
    asked.account.tokenExpiresAt = clock.now() - hours(1);
    const FetchOutcome outcome = fetch(asked);
    EXPECT_EQ(outcome.source, UsageSource::cli);
    EXPECT_EQ(outcome.revival, RevivalStatus::succeeded);
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.requests()[0].header("authorization"), "Bearer new-token");
}

TEST_F(PipelineTest, aCredentialThatStaysAsItIsCostsNoCall)
{
    const Instant end = std::chrono::floor<seconds>(clock.now()) - hours(1);
    signIn("old-token", end);
    putStandIn("exit 0\n");
    auto asked = request(TokenStatus::expired);
    asked.account.tokenExpiresAt = end;
    EXPECT_EQ(fetch(asked).revival, RevivalStatus::retrying);
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(PipelineTest, aRevivalThatFailsIsTriedAgainAfterAnHourOnly)
{
    putStandIn("echo run >> \"$HOME/runs\"; exit 3\n");
    EXPECT_EQ(fetch(TokenStatus::expired).revival, RevivalStatus::retrying);
    EXPECT_EQ(fetch(TokenStatus::expired).revival, RevivalStatus::retrying);
    EXPECT_EQ(contentsOf(home.file("runs")), "run\n");
    fetchByHand(TokenStatus::expired); // the user may always
    EXPECT_EQ(contentsOf(home.file("runs")), "run\nrun\n");
}

TEST_F(PipelineTest, withoutClaudeCodeThereIsNoRevival)
{
    EXPECT_EQ(fetch(TokenStatus::expired).revival, RevivalStatus::unavailable);
}

TEST_F(PipelineTest, aTokenThatTheEndpointRefusesAfterARevivalNeedsASignIn)
{
    reaction = Answer{401, {}, ""};
    putStandIn("exit 0\n");
    const FetchOutcome outcome = fetch();
    EXPECT_EQ(outcome.revival, RevivalStatus::needsSignIn);
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(PipelineTest, afterAFailureWhatIsKnownIsStillThere)
{
    const auto known = fetch().usage;
    reaction = test::RawBytes{"nonsense"};
    const FetchOutcome failed = fetchByHand();
    EXPECT_TRUE(failed.error);
    EXPECT_EQ(failed.usage, known);
    std::filesystem::remove(sharedFile());
    const FetchOutcome fromSnapshot = fetchByHand();
    EXPECT_EQ(fromSnapshot.source, UsageSource::snapshot);
    EXPECT_EQ(fromSnapshot.usage, known);
}

TEST_F(PipelineTest, noFileThatIsHostileStopsAFetch)
{
    for (const std::string& path :
         {sharedFile(), historyFile(), folders.vellumor() + "/usage-snapshots.json",
          dir + "/vscode-claude-status-cache.json"})
        std::filesystem::create_directories(path);
    EXPECT_EQ(fetch().source, UsageSource::endpoint);
}

} // namespace
} // namespace vellumor::pipelineTest
