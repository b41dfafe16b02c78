#include "telemetry/TelemetryStore.h"

#include "support/FakeClock.h"
#include "support/FileState.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::telemetryStoreTest {
namespace {

using test::FakeClock;
using test::TempFolder;

const std::string known = R"({"schemaVersion":1,"installID":"inst_a","diagnosticsEnabled":false})";

struct TelemetryStoreTest : testing::Test {
    TempFolder folder;
    FileStore files;
    FakeClock clock;
    std::string path = folder.file("Vellumor/telemetry.json");

    TelemetryConfig onDisk() const { return TelemetryStore::load(path, clock.now()); }
};

TEST_F(TelemetryStoreTest, aMissingFileIsWrittenAtOnce)
{
    const TelemetryStore store(files, clock, path, runAtOnce);
    EXPECT_EQ(store.fileURL(), path);
    EXPECT_EQ(onDisk(), store.current());
    EXPECT_EQ(store.current().installedAt, clock.now());
    EXPECT_EQ(test::modeOf(path), 0600U);
}

TEST_F(TelemetryStoreTest, aFileThatIsThereIsLeftAsItIs)
{
    folder.put("Vellumor/telemetry.json", known);
    const auto before = test::stateOf(path);
    const TelemetryStore store(files, clock, path, runAtOnce);
    EXPECT_EQ(store.current().installID, "inst_a");
    EXPECT_FALSE(store.current().diagnosticsEnabled);
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(TelemetryStoreTest, aFileOfNoUseIsReplacedAtOnceByANewIdentityThatAllowsAll)
{
    for (const char* bytes :
         {"{", "", R"({"schemaVersion":2,"installID":"","diagnosticsEnabled":false})",
          R"({"schemaVersion":3,"installID":"inst_a","diagnosticsEnabled":false})",
          R"({"schemaVersion":2,"installID":"inst_a","diagnosticsEnabled":0})"}) {
        SCOPED_TRACE(bytes);
        folder.put("Vellumor/telemetry.json", bytes);
        const TelemetryStore store(files, clock, path, runAtOnce);
        EXPECT_TRUE(store.current().installID.starts_with("inst_"));
        EXPECT_NE(store.current().installID, "inst_a");
        EXPECT_TRUE(store.current().diagnosticsEnabled);
        EXPECT_EQ(onDisk(), store.current());
    }
}

TEST_F(TelemetryStoreTest, anAbsurdInstallationDateIsKeptAsTheEndOfTime)
{
    folder.put("Vellumor/telemetry.json",
               R"({"schemaVersion":2,"installID":"inst_a","installedAt":1e300})");
    TelemetryStore store(files, clock, path, runAtOnce);
    EXPECT_EQ(store.current().installID, "inst_a");
    EXPECT_EQ(store.current().installedAt, test::instant("9999-12-31T23:59:59Z"));
    store.noteServed("cli");
    EXPECT_EQ(onDisk(), store.current());
}

TEST_F(TelemetryStoreTest, loadingAloneWritesNothing)
{
    EXPECT_TRUE(onDisk().installID.starts_with("inst_"));
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
    folder.put("Vellumor/telemetry.json", "{");
    const auto before = test::stateOf(path);
    EXPECT_TRUE(onDisk().installID.starts_with("inst_"));
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(TelemetryStoreTest, eachChangeIsWrittenAtOnceInTheNewVersion)
{
    folder.put("Vellumor/telemetry.json", known);
    TelemetryStore store(files, clock, path, runAtOnce);
    store.update([](TelemetryConfig& config) { config.counters.failures = 4; });
    EXPECT_EQ(onDisk().counters.failures, 4);
    EXPECT_EQ(onDisk().schemaVersion, 2);
    EXPECT_EQ(onDisk().installID, "inst_a");
    EXPECT_FALSE(onDisk().diagnosticsEnabled);
    TelemetryConfig other = store.current();
    other.multiAccountReached = true;
    store.setCurrent(other);
    EXPECT_EQ(store.current(), other);
    EXPECT_EQ(onDisk(), other);
}

TEST_F(TelemetryStoreTest, aLayerThatServesForTheFirstTimeStartsAtOne)
{
    TelemetryStore store(files, clock, path, runAtOnce);
    store.noteServed("endpoint");
    EXPECT_EQ(onDisk().servedBy.at("endpoint"), 1);
    store.noteServed("endpoint");
    store.noteServed("cli");
    EXPECT_EQ(onDisk().servedBy.at("endpoint"), 2);
    EXPECT_EQ(onDisk().servedBy.at("cli"), 1);
    EXPECT_EQ(onDisk().servedBy.size(), 2U);
}

TEST_F(TelemetryStoreTest, aCountEndsAtWhatItCanHold)
{
    TelemetryStore store(files, clock, path, runAtOnce);
    constexpr int most = std::numeric_limits<int>::max();
    store.update([](TelemetryConfig& config) { config.servedBy["cli"] = most; });
    store.noteServed("cli");
    EXPECT_EQ(onDisk().servedBy.at("cli"), most);
}

TEST_F(TelemetryStoreTest, aWriteThatFailsIsDroppedAndLeavesTheOldFile)
{
    const TelemetryStore made(files, clock, path, runAtOnce);
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        TelemetryStore store(failing, clock, path, runAtOnce);
        store.noteServed("cli");
        EXPECT_EQ(store.current().servedBy.at("cli"), 1);
    });
}

TEST_F(TelemetryStoreTest, whatCannotBeWrittenLeavesTheOldFile)
{
    TelemetryStore store(files, clock, path, runAtOnce);
    const auto before = test::stateOf(path);
    store.noteServed("\xff");
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(TelemetryStoreTest, writingIsHandedOnInOrder)
{
    std::vector<std::function<void()>> jobs;
    TelemetryStore store(files, clock, path,
                         [&](std::function<void()> job) { jobs.push_back(std::move(job)); });
    store.noteServed("cli");
    store.noteServed("cli");
    ASSERT_EQ(jobs.size(), 3U); // the new config is the first
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
    for (const auto& job : jobs)
        job();
    EXPECT_EQ(onDisk(), store.current());
}

TEST_F(TelemetryStoreTest, anotherIdentityIsSomebodyNewWithTheSameWishesAndCaps)
{
    TelemetryStore store(files, clock, path, runAtOnce);
    store.update([](TelemetryConfig& config) {
        config.diagnosticsEnabled = config.productAnalyticsEnabled = false;
        config.multiAccountReached = true;
        config.lastEmittedDay = "2026-03-01";
        config.counters.failures = 3;
        config.failureCategories = {"usage_401"};
        config.servedBy["cli"] = 2;
        config.caps = {"2026-03-01", 9, 2, {"usage_401|endpoint"}, 5};
    });
    const TelemetryConfig before = store.current();
    clock.advance(std::chrono::hours(5));
    store.resetIdentity();
    TelemetryConfig expected = TelemetryConfig::fresh(clock.now());
    expected.installID = store.current().installID;
    expected.diagnosticsEnabled = expected.productAnalyticsEnabled = false;
    expected.caps = before.caps;
    EXPECT_EQ(store.current(), expected);
    EXPECT_NE(store.current().installID, before.installID);
    EXPECT_EQ(onDisk(), expected);
}

#ifndef NDEBUG
TEST_F(TelemetryStoreTest, belongsToOneThread)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    TelemetryStore store(files, clock, path, runAtOnce);
    EXPECT_DEATH(std::thread([&] { store.noteServed("cli"); }).join(), "m_owner");
    EXPECT_DEATH(std::thread([&] { static_cast<void>(store.current()); }).join(), "m_owner");
}
#endif

} // namespace
} // namespace vellumor::telemetryStoreTest
