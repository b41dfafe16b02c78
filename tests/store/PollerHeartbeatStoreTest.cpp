#include "store/PollerHeartbeatStore.h"

#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <limits>

namespace vellumor::pollerHeartbeatStoreTest {

using test::instant;

namespace {

const Instant now = instant("2026-03-01T09:30:00.125Z");

// A claim of another program.
const Json foreign = Json::parse(R"({"schemaVersion":1,"source":"sibling","intervalSeconds":60,
    "updatedAt":"2026-03-01T09:30:00.125Z","pid":4711})");

// The same with `value` under `key`, or without the key.
std::string changed(const char* key, const std::optional<Json>& value)
{
    Json json = foreign;
    if (value)
        json[key] = *value;
    else
        json.erase(key);
    return json.dump();
}

struct PollerHeartbeatStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string path = folder.file("Quorle/poller.json");
    PollerHeartbeatStore store{files, path};

    std::optional<double> coverageOf(const std::string& bytes, Instant at = now) const
    {
        folder.put("Quorle/poller.json", bytes);
        return store.foreignCoverageWindow(at);
    }
    // Of a claim for `interval` seconds that is `age` milliseconds old.
    std::optional<double> coverageAt(double interval, int age) const
    {
        return coverageOf(changed("intervalSeconds", interval),
                          now + std::chrono::milliseconds(age));
    }
};

} // namespace

TEST_F(PollerHeartbeatStoreTest, itMakesTheFolderAndNothingInIt)
{
    EXPECT_EQ(test::modeOf(folder.file("Quorle")), 0700U);
    EXPECT_EQ(test::filesBelow(folder.path()), std::vector<std::string>());
    EXPECT_EQ(store.foreignCoverageWindow(now), std::nullopt);
    EXPECT_EQ(test::filesBelow(folder.path()), std::vector<std::string>());
}

TEST_F(PollerHeartbeatStoreTest, aClaimIsTheseFiveKeys)
{
    EXPECT_TRUE(store.claim(90.5, now + std::chrono::microseconds(999)));
    EXPECT_EQ(test::contentsOf(path),
              "{\n  \"intervalSeconds\": 90.5,\n  \"pid\": " + std::to_string(::getpid()) +
                  ",\n  \"schemaVersion\": 1,\n"
                  "  \"source\": \"vellumor\",\n"
                  "  \"updatedAt\": \"2026-03-01T09:30:00.125Z\"\n}");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_TRUE(store.claim(120, now));
    EXPECT_NE(test::contentsOf(path).find("\"intervalSeconds\": 120,"), std::string::npos);
}

TEST_F(PollerHeartbeatStoreTest, aClaimReplacesWhateverStoodThere)
{
    for (const std::string& old :
         {changed("extra", true), changed("schemaVersion", 2), std::string("{")}) {
        SCOPED_TRACE(old);
        folder.put("Quorle/poller.json", old);
        EXPECT_TRUE(store.claim(60, now));
        const Json found = Json::parse(test::contentsOf(path));
        EXPECT_EQ(found, (Json{{"schemaVersion", 1},
                               {"source", "vellumor"},
                               {"intervalSeconds", 60},
                               {"updatedAt", "2026-03-01T09:30:00.125Z"},
                               {"pid", ::getpid()}}));
    }
}

TEST_F(PollerHeartbeatStoreTest, ofTwoProgramsTheLastToClaimCounts)
{
    EXPECT_EQ(coverageOf(foreign.dump()), 300.0);
    EXPECT_TRUE(store.claim(60, now));
    EXPECT_EQ(store.foreignCoverageWindow(now), std::nullopt);
    EXPECT_EQ(coverageOf(foreign.dump()), 300.0);
}

TEST_F(PollerHeartbeatStoreTest, theOwnClaimCoversNothingWhateverItsAge)
{
    for (const int age : {-3600, -61, -1, 0, 1, 299, 100000}) {
        SCOPED_TRACE(age);
        EXPECT_EQ(coverageOf(changed("source", "vellumor"), now + std::chrono::seconds(age)),
                  std::nullopt);
    }
    EXPECT_EQ(coverageOf(changed("source", "Vellumor")), 300.0);
    EXPECT_EQ(coverageOf(changed("source", "vellumor ")), 300.0);
    EXPECT_EQ(coverageOf(changed("source", "")), 300.0);
}

TEST_F(PollerHeartbeatStoreTest, coverageLastsThreeIntervalsButFiveMinutesAtLeast)
{
    struct Row {
        double interval;
        int age; // milliseconds
        std::optional<double> window;
    };
    const Row rows[] = {
        {60, 0, 300.0},
        {60, 299000, 300.0},
        {60, 299999, 300.0},
        {60, 300000, std::nullopt},
        {100, 299999, 300.0},
        {100.5, 300000, 301.5},
        {100.5, 301500, std::nullopt},
        {600, 300000, 1800.0},
        {600, 1799999, 1800.0},
        {600, 1800000, std::nullopt},
        {0, 299999, 300.0},
        {-600, 299999, 300.0},
        {-600, 300000, std::nullopt},
    };
    for (const auto& [interval, age, window] : rows) {
        SCOPED_TRACE(testing::Message() << interval << " s, " << age << " ms");
        EXPECT_EQ(coverageAt(interval, age), window);
    }
}

TEST_F(PollerHeartbeatStoreTest, aClaimFromTheFutureCoversUpToAMinuteAhead)
{
    EXPECT_EQ(coverageAt(60, -1), 300.0);
    EXPECT_EQ(coverageAt(60, -60000), 300.0);
    EXPECT_EQ(coverageAt(60, -60001), std::nullopt);
    EXPECT_EQ(coverageAt(60, -61000), std::nullopt);
    EXPECT_EQ(coverageAt(600, -61000), std::nullopt);
}

TEST_F(PollerHeartbeatStoreTest, aNewerVersionCoversNothing)
{
    for (const Json& version : {Json(-2147483647), Json(-1), Json(0), Json(1), Json(1.0)})
        EXPECT_EQ(coverageOf(changed("schemaVersion", version)), 300.0) << version;
    for (const Json& version : {Json(2), Json(3), Json(2147483647), Json(1e10), Json(1.5)})
        EXPECT_EQ(coverageOf(changed("schemaVersion", version)), std::nullopt) << version;
}

TEST_F(PollerHeartbeatStoreTest, theDateIsATextOrSecondsSince2001)
{
    for (const Json& date :
         {Json("2026-03-01T09:30:00Z"), Json("2026-03-01T15:00:00+05:30"),
          Json("2026-03-01T09:30:00.000000Z"), Json(794050200), Json(794050200.0)}) {
        SCOPED_TRACE(date.dump());
        const auto heartbeat = PollerHeartbeat::decode(changed("updatedAt", date));
        ASSERT_TRUE(heartbeat);
        EXPECT_EQ(heartbeat->updatedAt, instant("2026-03-01T09:30:00Z"));
    }
    EXPECT_EQ(PollerHeartbeat::decode(changed("updatedAt", 794050200.125))->updatedAt, now);
    EXPECT_EQ(PollerHeartbeat::decode(changed("updatedAt", 0))->updatedAt,
              instant("2001-01-01T00:00:00Z"));
    EXPECT_EQ(coverageOf(changed("updatedAt", 794049901)), 300.0);
    EXPECT_EQ(coverageOf(changed("updatedAt", 794049900)), std::nullopt);
    EXPECT_EQ(coverageOf(changed("updatedAt", 1e300)), std::nullopt);
    EXPECT_EQ(coverageOf(changed("updatedAt", -1e300)), std::nullopt);
}

TEST_F(PollerHeartbeatStoreTest, allKeysButTheProcessAreNeeded)
{
    for (const char* key : {"schemaVersion", "source", "intervalSeconds", "updatedAt"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(PollerHeartbeat::decode(changed(key, std::nullopt)), std::nullopt);
        EXPECT_EQ(PollerHeartbeat::decode(changed(key, Json())), std::nullopt);
        EXPECT_EQ(coverageOf(changed(key, std::nullopt)), std::nullopt);
    }
    const auto whole = PollerHeartbeat::decode(changed("extra", Json::array({1})));
    EXPECT_EQ(whole, (PollerHeartbeat{1, "sibling", 60, now, 4711}));
    for (const auto& pid : {std::optional<Json>(), std::optional<Json>(Json())}) {
        const auto heartbeat = PollerHeartbeat::decode(changed("pid", pid));
        EXPECT_EQ(heartbeat, (PollerHeartbeat{1, "sibling", 60, now, std::nullopt}));
    }
}

TEST_F(PollerHeartbeatStoreTest, aWrongTypeAnywhereIsNoClaim)
{
    struct Row {
        const char* key;
        Json value;
    };
    const Row rows[] = {
        {"schemaVersion", "1"},
        {"schemaVersion", true},
        {"source", 1},
        {"source", Json::array()},
        {"source", false},
        {"intervalSeconds", "60"},
        {"intervalSeconds", true},
        {"updatedAt", true},
        {"updatedAt", "yesterday"},
        {"updatedAt", ""},
        {"updatedAt", {{}}},
        {"pid", "4711"},
        {"pid", 1.5},
        {"pid", 1e10},
        {"pid", true},
    };
    for (const auto& [key, value] : rows) {
        SCOPED_TRACE(changed(key, value));
        EXPECT_EQ(PollerHeartbeat::decode(changed(key, value)), std::nullopt);
        EXPECT_EQ(coverageOf(changed(key, value)), std::nullopt);
    }
    EXPECT_EQ(PollerHeartbeat::decode("[" + foreign.dump() + "]"), std::nullopt);
}

TEST_F(PollerHeartbeatStoreTest, whatIsNoFileOfItsKindIsNobody)
{
    ASSERT_EQ(coverageOf(test::withKey(foreign.dump(), "[]")), 300.0);
    ASSERT_EQ(coverageOf(test::padded(foreign.dump(), maxFileSize)), 300.0);
    for (const auto& [what, put] : test::hostileFiles(foreign.dump())) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        put(path);
        EXPECT_EQ(store.foreignCoverageWindow(now), std::nullopt);
    }
}

TEST_F(PollerHeartbeatStoreTest, whatIsWrittenReadsBack)
{
    for (const auto& pid : {std::optional<int>(), std::optional<int>(17)}) {
        const PollerHeartbeat heartbeat{1, "other \"name\" /\u00E9", 0.1, now, pid};
        const auto bytes = heartbeat.encode();
        ASSERT_TRUE(bytes);
        EXPECT_EQ(PollerHeartbeat::decode(*bytes), heartbeat);
        EXPECT_EQ(Json::parse(*bytes).contains("pid"), pid.has_value());
    }
    EXPECT_EQ((PollerHeartbeat{1, "\xFF", 60, now, {}}.encode()), std::nullopt);
}

TEST_F(PollerHeartbeatStoreTest, anIntervalThatIsNoNumberIsNotClaimed)
{
    using limits = std::numeric_limits<double>;
    folder.put("Quorle/poller.json", foreign.dump());
    const test::FileState before = test::stateOf(path);
    for (const double interval : {limits::quiet_NaN(), limits::infinity(), -limits::infinity()})
        EXPECT_FALSE(store.claim(interval, now));
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(PollerHeartbeatStoreTest, aClaimThatFailsSaysSoAndLeavesTheOldOne)
{
    folder.put("Quorle/poller.json", foreign.dump());
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        EXPECT_FALSE(PollerHeartbeatStore(failing, path).claim(60, now));
    });
    EXPECT_EQ(store.foreignCoverageWindow(now), 300.0);
}

} // namespace vellumor::pollerHeartbeatStoreTest
