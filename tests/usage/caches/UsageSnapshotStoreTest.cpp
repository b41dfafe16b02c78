#include "usage/caches/UsageSnapshotStore.h"

#include "base/Json.h"
#include "support/ChangedJson.h"
#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

namespace vellumor::usageSnapshotStoreTest {

using test::instant;

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Readings = std::map<std::string, Usage>;

const Instant now = instant("2026-03-01T09:30:00.125Z");
const std::string emptyFile = "{\n  \"schemaVersion\": 1,\n  \"snapshots\": {}\n}";

Usage reading(double percent = 42.5)
{
    Usage usage;
    usage.fetchedAt = now;
    usage.windows = {{"session", "session", percent, "normal", now + 1h, true, std::nullopt}};
    return usage;
}

// "/a" and "/b", as they may stand in a file that another version has written.
Json twoSnapshots()
{
    Json json = {{"schemaVersion", 1}, {"snapshots", Json::object()}};
    json["snapshots"]["/a"] = UsageCacheFile::of(reading(1), now).encode();
    json["snapshots"]["/b"] = UsageCacheFile::of(reading(2), std::nullopt).encode();
    return json;
}

const Readings twoReadings = {{"/a", reading(1)}, {"/b", reading(2)}};

Readings readingsIn(const std::string& bytes)
{
    Readings readings;
    for (const auto& [configDir, snapshot] : UsageSnapshotStore::File::decode(bytes).snapshots)
        readings[configDir] = snapshot.usage();
    return readings;
}

// The two snapshots with `value` at `path`; without a value the key is taken away.
std::string changed(const std::string& path, const std::optional<Json>& value)
{
    return test::changed(twoSnapshots(), path, value).dump();
}

struct UsageSnapshotStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string path = folder.file("Vellumor/usage-snapshots.json");
    UsageSnapshotStore store{files, path};

    void put(const std::string& bytes) const { test::putBytes(path, bytes); }
};

} // namespace

TEST_F(UsageSnapshotStoreTest, itMakesTheFolderAndNothingInIt)
{
    EXPECT_EQ(test::modeOf(folder.file("Vellumor")), 0700U);
    EXPECT_EQ(store.load(), Readings());
    EXPECT_EQ(test::namesIn(folder.file("Vellumor")), Names());
}

TEST_F(UsageSnapshotStoreTest, theFileIsOneOfAllAccountsInPrettyJson)
{
    store.save(reading(7), "/home/me/\u00E9");
    store.save(Usage{{}, std::nullopt, now + 999us}, "/b");
    EXPECT_EQ(test::contentsOf(path), R"({
  "schemaVersion": 1,
  "snapshots": {
    "\/b": {
      "fetchedAt": "2026-03-01T09:30:00.125Z",
      "schemaVersion": 2,
      "source": "vellumor",
      "sourceVersion": "1.0.0",
      "windows": []
    },
    "\/home\/me\/é": {
      "fetchedAt": "2026-03-01T09:30:00.125Z",
      "schemaVersion": 2,
      "source": "vellumor",
      "sourceVersion": "1.0.0",
      "windows": [
        {
          "group": "session",
          "isActive": true,
          "kind": "session",
          "percent": 7,
          "resetsAt": "2026-03-01T10:30:00.125Z"
        }
      ]
    }
  }
})");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(test::namesIn(folder.file("Vellumor")), Names{"usage-snapshots.json"});
    EXPECT_EQ(UsageSnapshotStore(files, path).load(),
              (Readings{{"/b", Usage{{}, std::nullopt, now}}, {"/home/me/\u00E9", reading(7)}}));
}

TEST_F(UsageSnapshotStoreTest, aReadingComesBackWithoutItsSeverity)
{
    Usage usage = reading();
    usage.windows[0].severity = "critical";
    usage.extraUsage = ExtraUsage{true, 1250.5, "EUR", 2, 5000, 25, false, false, true};
    store.save(usage, "/a");
    usage.windows[0].severity = "normal";
    EXPECT_EQ(store.load(), (Readings{{"/a", usage}}));
}

TEST_F(UsageSnapshotStoreTest, savingReplacesTheEntryOfItsAccountAlone)
{
    put(twoSnapshots().dump());
    store.save(reading(3), "/b");
    EXPECT_EQ(store.load(), (Readings{{"/a", reading(1)}, {"/b", reading(3)}}));
    store.save(reading(4), "/c");
    EXPECT_EQ(store.load(), (Readings{{"/a", reading(1)}, {"/b", reading(3)}, {"/c", reading(4)}}));
}

TEST_F(UsageSnapshotStoreTest, aKeyIsThePathAsItIsGiven)
{
    store.save(reading(1), "/Caf\u00E9");
    store.save(reading(2), "/Cafe\u0301");
    store.save(reading(3), "");
    EXPECT_EQ(
        store.load(),
        (Readings{{"/Caf\u00E9", reading(1)}, {"/Cafe\u0301", reading(2)}, {"", reading(3)}}));
}

TEST_F(UsageSnapshotStoreTest, onlyAVersionThatIsKnownIsRead)
{
    for (const Json& version : {Json(1), Json(1.0), Json(0), Json(-1), Json(-2147483647)})
        EXPECT_EQ(readingsIn(changed("/schemaVersion", version)), twoReadings) << version;
    for (const Json& version : {Json(2), Json(99), Json(1.5), Json(1e10), Json("1"), Json(true)})
        EXPECT_EQ(readingsIn(changed("/schemaVersion", version)), Readings()) << version;
}

TEST_F(UsageSnapshotStoreTest, aNewerFileIsReplacedByTheNextSave)
{
    put(changed("/schemaVersion", 2));
    EXPECT_EQ(store.load(), Readings());
    store.save(reading(), "/c");
    EXPECT_EQ(store.load(), (Readings{{"/c", reading()}}));
    EXPECT_EQ(Json::parse(test::contentsOf(path))["schemaVersion"], 1);
}

TEST_F(UsageSnapshotStoreTest, oneBadEntryEmptiesTheWholeFile)
{
    ASSERT_EQ(readingsIn(twoSnapshots().dump()), twoReadings);
    for (const char* key : {"/schemaVersion", "/snapshots", "/snapshots/~1b/fetchedAt",
                            "/snapshots/~1b/schemaVersion", "/snapshots/~1a/windows",
                            "/snapshots/~1a/windows/0/percent"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(readingsIn(changed(key, std::nullopt)), Readings());
        for (const Json& wrong : {Json(), Json("text"), Json::object({{"a", 1}}), Json(false)})
            EXPECT_EQ(readingsIn(changed(key, wrong)), Readings()) << wrong;
    }
    for (const Json& wrong : {Json(), Json("text"), Json(7), Json::array(), Json::object()})
        EXPECT_EQ(readingsIn(changed("/snapshots/~1b", wrong)), Readings()) << wrong;
    EXPECT_EQ(readingsIn(changed("/snapshots", Json::array())), Readings());
    for (const char* key : {"/x", "/snapshots/~1a/x", "/snapshots/~1a/windows/0/x"})
        EXPECT_EQ(readingsIn(changed(key, 1)), twoReadings);
    EXPECT_EQ(readingsIn("[" + twoSnapshots().dump() + "]"), Readings());
}

TEST_F(UsageSnapshotStoreTest, whatIsNoFileOfItsKindIsEmptyAndIsReplaced)
{
    const std::string valid = twoSnapshots().dump();
    put(test::withKey(valid, "[]"));
    ASSERT_EQ(store.load(), twoReadings);
    put(test::padded(valid, maxFileSize));
    ASSERT_EQ(store.load(), twoReadings);
    for (const auto& [what, putFile] : test::hostileFiles(valid)) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        putFile(path);
        EXPECT_EQ(store.load(), Readings());
        store.save(reading(), "/c");
        const bool isFolder = what == "a folder"; // which no file can replace
        EXPECT_EQ(store.load(), isFolder ? Readings() : (Readings{{"/c", reading()}}));
    }
}

TEST_F(UsageSnapshotStoreTest, pruneForgetsEveryOtherAccountAndWritesAlways)
{
    put(twoSnapshots().dump());
    const test::FileState before = test::stateOf(path);
    store.prune({"/a", "/b", "/c"});
    EXPECT_NE(test::stateOf(path), before);
    EXPECT_EQ(store.load(), twoReadings);
    store.prune({"/b", "/A", "/a/"});
    EXPECT_EQ(store.load(), (Readings{{"/b", reading(2)}}));
    store.prune({});
    EXPECT_EQ(test::contentsOf(path), emptyFile);
}

TEST_F(UsageSnapshotStoreTest, pruneReplacesWhatItCannotRead)
{
    for (const std::string& old : {changed("/schemaVersion", 2), std::string("{")}) {
        put(old);
        store.prune({"/a", "/b"});
        EXPECT_EQ(test::contentsOf(path), emptyFile);
    }
    std::filesystem::remove(path);
    store.prune({"/a"});
    EXPECT_EQ(test::contentsOf(path), emptyFile);
}

TEST_F(UsageSnapshotStoreTest, aWriteThatFailsLeavesTheOldFile)
{
    put(twoSnapshots().dump());
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        UsageSnapshotStore(failing, path).save(reading(), "/c");
    });
    test::expectTheOldFileStays(
        path, [&](const FileStore& failing) { UsageSnapshotStore(failing, path).prune({}); });
    store.save(reading(), "/\xFF");
    EXPECT_EQ(store.load(), twoReadings);
}

} // namespace vellumor::usageSnapshotStoreTest
