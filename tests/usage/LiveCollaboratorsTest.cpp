#include "usage/LiveCollaborators.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor {
namespace {

using test::FakeClock;
using test::TempFolder;

const std::string dir = "/home/ada/.claude-work";

struct NoTransport final : HttpTransport {
    Task<HttpAnswer> get(HttpRequest) override { co_return HttpAnswer(); }
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
    NoTransport transport;
    ScriptedPaths paths;
    NetworkMonitor network{paths};
    bool isLocalOnly = false;
    bool isRevivalEnabled = true;
    std::vector<std::string> servicesRead;
    std::variant<ClaudeCredentials, KeychainError> credential = KeychainError();
    UsageClient::ReadCredentials read =
        [this](const std::string& service) -> std::variant<ClaudeCredentials, KeychainError> {
        servicesRead.push_back(service);
        return std::move(credential);
    };
    UsageClient client{transport, worker, clock, read, "http://127.0.0.1:1/"};
    TokenReviver reviver;
    UsageStores stores{worker, files, folders};
    LiveCollaborators live{{stores, worker, worker, client, reviver, network, read,
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
    EXPECT_EQ(QCoro::waitFor(live.readShared(dir)), std::nullopt);
    EXPECT_TRUE(QCoro::waitFor(live.loadSnapshots()).empty());
    QCoro::waitFor(live.writeShared(reading(), dir));
    QCoro::waitFor(live.saveSnapshot(reading(), dir));
    const Instant until = clock.now() + std::chrono::seconds(300);
    QCoro::waitFor(live.setBackoff(until, dir));
    EXPECT_EQ(QCoro::waitFor(live.readShared(dir)), UsageCacheFile::of(reading(), until));
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

} // namespace
} // namespace vellumor
