#include "usage/LiveCollaborators.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"
#include "usage/UsagePipeline.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <coroutine>
#include <set>

namespace vellumor::liveCollaboratorsTest {
namespace {

using test::FakeClock;
using test::TempFolder;

const std::string dir = "/home/ada/.claude-work";

// Answers nobody until as many ask as are to be refused.
struct RefusingTransport final : HttpTransport {
    std::size_t refused = 0;
    std::vector<std::coroutine_handle<>> waiting;

    struct Together {
        RefusingTransport& transport;
        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> handle) const
        {
            transport.waiting.push_back(handle);
            if (transport.waiting.size() < transport.refused)
                return;
            for (const auto each : std::exchange(transport.waiting, {}))
                each.resume();
        }
        void await_resume() const noexcept {}
    };
    Task<HttpAnswer> get(HttpRequest) override
    {
        co_await Together{*this};
        co_return HttpAnswer{HttpAnswer::Kind::answered, 429, "", {}, ""};
    }
};

struct ScriptedPaths final : PathMonitor {
    std::function<void(bool)> tell;
    void start(std::function<void(bool)> onUpdate) override { tell = std::move(onUpdate); }
};

struct LiveCollaboratorsTest : testing::Test {
    TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    FakeClock clock;
    FileStore files;
    Worker worker;
    RefusingTransport transport;
    std::string credentialFor; // a token, for any number of readers; empty for none
    ScriptedPaths paths;
    NetworkMonitor network{paths};
    bool isLocalOnly = false;
    bool isRevivalEnabled = true;
    std::vector<std::string> servicesRead;
    std::variant<ClaudeCredentials, KeychainError> credential = KeychainError();
    UsageClient::ReadCredentials read =
        [this](const std::string& service) -> std::variant<ClaudeCredentials, KeychainError> {
        servicesRead.push_back(service);
        if (credentialFor.empty())
            return std::move(credential);
        ClaudeCredentials found;
        found.accessToken = Token(SecretBytes(credentialFor));
        return found;
    };
    UsageClient client{transport, worker, clock, read, "http://127.0.0.1:1/"};
    TokenReviver reviver;
    UsageStores stores{worker, files, folders};
    LiveCollaborators live{{stores, worker, client, reviver, network, read,
                            [this] { return isLocalOnly; }, [this] { return isRevivalEnabled; }}};

    [[nodiscard]] Usage reading() const
    {
        Usage usage;
        usage.fetchedAt = clock.now();
        LimitWindow week;
        week.kind = "weekly_all";
        week.group = "weekly";
        week.percent = 12.5;
        week.resetsAt = clock.now();
        usage.windows = {week};
        return usage;
    }
    std::optional<Instant> expiry(std::optional<std::string> service)
    {
        Account account;
        account.resolvedService = std::move(service);
        return QCoro::waitFor(live.credentialExpiry(account));
    }
};

TEST_F(LiveCollaboratorsTest, settingsAndNetworkAreReadAsTheyStand)
{
    EXPECT_TRUE(live.isOnline());
    EXPECT_FALSE(live.localCacheOnly());
    EXPECT_TRUE(live.tokenRevivalEnabled());
    isLocalOnly = true;
    isRevivalEnabled = false;
    EXPECT_TRUE(live.localCacheOnly());
    EXPECT_FALSE(live.tokenRevivalEnabled());
}

TEST_F(LiveCollaboratorsTest, whatOneCallWritesTheOthersRead)
{
    EXPECT_FALSE(QCoro::waitFor(live.readShared(dir)));
    EXPECT_TRUE(QCoro::waitFor(live.loadSnapshots()).empty());
    QCoro::waitFor(live.writeShared(reading(), dir));
    QCoro::waitFor(live.saveSnapshot(reading(), dir));
    const Instant until = clock.now() + std::chrono::seconds(300);
    QCoro::waitFor(live.setBackoff(until, dir));
    const auto shared = QCoro::waitFor(live.readShared(dir));
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->usage, reading());
    EXPECT_EQ(shared->backoffUntil, until);
    EXPECT_EQ(QCoro::waitFor(live.loadSnapshots()),
              (std::map<std::string, Usage>{{dir, reading()}}));
}

TEST_F(LiveCollaboratorsTest, historyAnchorsAndRefusalsLandInTheirFiles)
{
    QCoro::waitFor(live.appendHistory(reading(), dir, clock.now()));
    QCoro::waitFor(live.recordAnchors(reading(), dir));
    RateLimitEntry entry;
    entry.configDir = dir;
    QCoro::waitFor(live.recordRateLimit(entry));
    EXPECT_EQ(UsageHistoryStore::loadFrom(folders.vellumor() + "/history", dir).size(), 1U);
    EXPECT_TRUE(
        ResetAnchorStore::loadFrom(folders.vellumor() + "/reset-anchors.json").contains(dir));
    EXPECT_EQ(RateLimitLog::recentIn(folders.vellumor() + "/429-log.jsonl", 5).size(), 1U);
}

TEST_F(LiveCollaboratorsTest, theHistoryIsTrimmedByTheCallersTimeAndNotByThatOfTheReading)
{
    Usage old = reading();
    old.fetchedAt -= std::chrono::hours(168) - std::chrono::seconds(1);
    QCoro::waitFor(live.appendHistory(old, dir, clock.now()));
    Usage late = reading();
    late.fetchedAt -= std::chrono::hours(1);
    QCoro::waitFor(live.appendHistory(late, dir, clock.now() + std::chrono::minutes(1)));
    EXPECT_EQ(UsageHistoryStore::loadFrom(folders.vellumor() + "/history", dir),
              UsageSamples{UsageSample::of(late)});
}

TEST_F(LiveCollaboratorsTest, theStatusCacheIsReadFromTheConfigDirectory)
{
    EXPECT_EQ(QCoro::waitFor(live.readVscode(home.path())), std::nullopt);
    home.put("vscode-claude-status-cache.json",
             R"({"updatedAt": "2026-03-29T00:00:00Z", "usageData": {"utilization5h": 7}})");
    EXPECT_EQ(QCoro::waitFor(live.readVscode(home.path())).value().util5h, 7);
}

TEST_F(LiveCollaboratorsTest, theEndOfACredentialIsThatOfTheServiceAsItStandsNow)
{
    EXPECT_EQ(expiry(std::nullopt), std::nullopt);
    EXPECT_TRUE(servicesRead.empty());
    EXPECT_EQ(expiry("Claude Code-credentials"), std::nullopt); // it cannot be read
    credential = ClaudeCredentials();
    EXPECT_EQ(expiry("Claude Code-credentials"), std::nullopt); // it has no date
    ClaudeCredentials dated;
    dated.expiresAt = 1'774'746'000'125.0;
    credential = std::move(dated);
    EXPECT_EQ(expiry("Claude Code-credentials"), test::instant("2026-03-29T01:00:00.125Z"));
    EXPECT_EQ(servicesRead.size(), 3U);
}

// Real stores on a real worker, and three calls of which none has been answered yet.
TEST_F(LiveCollaboratorsTest, refusalsOfFetchesInFlightDoubleTheWaitExactlyOnceEach)
{
    UsagePipeline pipeline(live, clock);
    const auto begin = [&](const std::string& configDir) {
        FetchRequest request;
        request.account.configDir = configDir;
        request.account.resolvedService = "Claude Code-credentials";
        request.account.tokenStatus = TokenStatus::readable;
        request.now = clock.now();
        request.effectiveInterval = 300;
        return pipeline.fetch(std::move(request));
    };
    transport.refused = 3;
    credentialFor = "example-token";
    auto first = begin(dir);
    auto second = begin(dir);
    auto third = begin("/home/ada/.claude-other");
    std::multiset<double> waits;
    for (auto* task : {&first, &second, &third}) {
        const FetchOutcome outcome = QCoro::waitFor(*task);
        waits.insert(secondsBetween(clock.now(), outcome.backoffUntil.value()));
    }
    EXPECT_EQ(waits, (std::multiset<double>{300, 300, 600}));
    EXPECT_EQ(RateLimitLog::recentIn(folders.vellumor() + "/429-log.jsonl", 5).size(), 3U);
}

} // namespace
} // namespace vellumor::liveCollaboratorsTest
