#include "usage/caches/SharedCache.h"

#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

namespace vellumor::sharedCacheTest {

using test::instant;

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Outcome = FileStore::UpdateOutcome;

const Instant now = instant("2026-03-01T09:30:00.125Z");
const Instant until = instant("2026-03-01T09:35:00.250999Z");

// As a sibling writes it, with keys that this program knows nothing of.
const std::string foreign = R"({"schemaVersion":2,"fetchedAt":"2026-03-01T09:30:00.125Z",
    "source":"sibling","sourceVersion":"3.2.1","windows":[{"kind":"session","group":"session",
    "percent":42.5,"isActive":true,"pace":0.1}],"backoffUntil":"2026-03-01T09:31:00.000Z",
    "most":18446744073709551615,"least":-9223372036854775808,"tenth":0.1,"tiny":5e-324,
    "nested":{"list":[1,{"deep":null}],"a/b":"\u00E9 \"q\""},"none":null,"yes":true})";

Usage reading(Instant fetchedAt = now, double percent = 42.5)
{
    Usage usage;
    usage.fetchedAt = fetchedAt;
    usage.windows = {{"session", "session", percent, "normal", now + 1h, true, std::nullopt},
                     {"weekly/scoped", "weekly", 7, "normal", std::nullopt, false, "Opus"}};
    return usage;
}

struct SharedCacheTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string dir = folder.file("Quorle/usage-cache");
    std::string path = dir + "/6a50dc85.json"; // of "/a"
    SharedCache cache{files, dir};

    void put(const std::string& bytes) const { test::putBytes(path, bytes); }
    [[nodiscard]] Json found() const { return Json::parse(test::contentsOf(path)); }
};

std::string foreignOfVersion(const Json& version)
{
    Json json = Json::parse(foreign);
    json["schemaVersion"] = version;
    return json.dump();
}

} // namespace

TEST_F(SharedCacheTest, itMakesTheFolderAndNothingInIt)
{
    EXPECT_EQ(test::modeOf(dir), 0700U);
    EXPECT_EQ(cache.read("/a"), std::nullopt);
    EXPECT_EQ(SharedCache::readFrom(folder.file("other"), "/a"), std::nullopt);
    EXPECT_EQ(test::namesIn(folder.path()), Names{"Quorle"});
    EXPECT_EQ(test::namesIn(dir), Names());
}

TEST_F(SharedCacheTest, aReadingIsWrittenToTheFileOfItsAccount)
{
    Usage usage = reading();
    usage.extraUsage = ExtraUsage();
    cache.write(usage, "/a", until);
    EXPECT_EQ(test::contentsOf(path), R"({
  "backoffUntil": "2026-03-01T09:35:00.250Z",
  "extraUsage": {
    "isEnabled": false
  },
  "fetchedAt": "2026-03-01T09:30:00.125Z",
  "schemaVersion": 2,
  "source": "vellumor",
  "sourceVersion": "1.0.0",
  "windows": [
    {
      "group": "session",
      "isActive": true,
      "kind": "session",
      "percent": 42.5,
      "resetsAt": "2026-03-01T10:30:00.125Z"
    },
    {
      "group": "weekly",
      "isActive": false,
      "kind": "weekly\/scoped",
      "percent": 7,
      "scope": "Opus"
    }
  ]
})");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(test::namesIn(dir), Names{"6a50dc85.json"});
}

TEST_F(SharedCacheTest, whatIsWrittenIsReadBackAndByAnyOther)
{
    cache.write(reading(), "/a", std::nullopt);
    cache.write(reading(now, 99), "/b", now);
    const auto file = cache.read("/a");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->usage(), reading());
    EXPECT_EQ(file->backoffUntil, std::nullopt);
    EXPECT_FALSE(found().contains("backoffUntil"));
    EXPECT_EQ(SharedCache::readFrom(dir, "/b"), UsageCacheFile::of(reading(now, 99), now));
}

TEST_F(SharedCacheTest, aFileOfASiblingIsRead)
{
    put(foreign);
    const auto file = cache.read("/a");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->source, "sibling");
    EXPECT_EQ(file->backoffUntil, instant("2026-03-01T09:31:00Z"));
    EXPECT_EQ(file->windows.at(0).percent, 42.5);
}

TEST_F(SharedCacheTest, versionsBelowThreeAreReadAndOthersStayAsTheyAre)
{
    for (const Json& version : {Json(2), Json(1), Json(0), Json(-1), Json(2.0)}) {
        put(foreignOfVersion(version));
        EXPECT_TRUE(cache.read("/a")) << version;
    }
    for (const Json& version : {Json(3), Json(99), Json(2.5), Json(1e10), Json("2"), Json()}) {
        put(foreignOfVersion(version));
        const test::FileState before = test::stateOf(path);
        EXPECT_EQ(cache.read("/a"), std::nullopt) << version;
        EXPECT_EQ(test::stateOf(path), before);
    }
}

TEST_F(SharedCacheTest, aReadingReplacesWhateverStoodThere)
{
    for (const std::string& old : {foreign, foreignOfVersion(3), std::string("{")}) {
        put(old);
        cache.write(reading(), "/a", std::nullopt);
        EXPECT_EQ(cache.read("/a"), UsageCacheFile::of(reading(), std::nullopt));
        EXPECT_EQ(found(), UsageCacheFile::of(reading(), std::nullopt).encode());
    }
}

TEST_F(SharedCacheTest, aBackoffIsSetInTheFileAndAllElseStays)
{
    put(foreign);
    Json expected = found();
    expected["backoffUntil"] = "2026-03-01T09:35:00.250Z";
    EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::written);
    EXPECT_EQ(found(), expected);
    const std::string bytes = test::contentsOf(path);
    for (const char* text : {"18446744073709551615", "-9223372036854775808", "0.1,", "e-324",
                             "\"a\\/b\": \"\u00E9 \\\"q\\\"\"", "\"none\": null"})
        EXPECT_NE(bytes.find(text), std::string::npos) << text << " in " << bytes;
    EXPECT_EQ(cache.read("/a")->backoffUntil, instant("2026-03-01T09:35:00.250Z"));
}

TEST_F(SharedCacheTest, aBackoffIsAddedWhereNoneWas)
{
    cache.write(reading(), "/a", std::nullopt);
    EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::written);
    EXPECT_EQ(cache.read("/a"), UsageCacheFile::of(reading(), instant("2026-03-01T09:35:00.250Z")));
}

TEST_F(SharedCacheTest, noBackoffIsANullUnderItsKey)
{
    put(foreign);
    EXPECT_EQ(cache.setBackoff(std::nullopt, "/a"), Outcome::written);
    ASSERT_TRUE(found().contains("backoffUntil"));
    EXPECT_TRUE(found()["backoffUntil"].is_null());
    const auto file = cache.read("/a");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->backoffUntil, std::nullopt);
}

TEST_F(SharedCacheTest, aBackoffWithoutAFileIsNoChangeAndMakesNone)
{
    EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::noChange);
    EXPECT_EQ(cache.setBackoff(std::nullopt, "/a"), Outcome::noChange);
    std::filesystem::create_symlink("nothing.json", path);
    EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::noChange);
    EXPECT_EQ(test::filesBelow(folder.path()), Names());
    cache.write(reading(), "/b", std::nullopt);
    EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::noChange);
    EXPECT_EQ(cache.read("/b")->backoffUntil, std::nullopt);
}

TEST_F(SharedCacheTest, aBackoffLeavesAFileOfANewerVersionAlone)
{
    for (const Json& version : {Json(3), Json(2.5), Json(1e300)}) {
        SCOPED_TRACE(version.dump());
        put(foreignOfVersion(version));
        const test::FileState before = test::stateOf(path);
        testing::internal::CaptureStderr();
        EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::refusedNewerSchema);
        EXPECT_NE(testing::internal::GetCapturedStderr().find("not writing"), std::string::npos);
        EXPECT_EQ(test::stateOf(path), before);
    }
    for (const Json& version : {Json(2), Json(-1), Json("3"), Json()}) {
        put(foreignOfVersion(version));
        EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::written);
        EXPECT_EQ(found()["schemaVersion"], version);
    }
}

TEST_F(SharedCacheTest, aBackoffMakesNoReadingOfADamagedFile)
{
    put("{\"schemaVersion\":");
    EXPECT_EQ(cache.setBackoff(until, "/a"), Outcome::written);
    EXPECT_EQ(cache.read("/a"), std::nullopt);
}

TEST_F(SharedCacheTest, aWriterThatComesBetweenKeepsItsKeysAndTheBackoffIsSetAgain)
{
    put(foreign);
    test::FailingFileCalls calls;
    calls.onCreated([&, first = true](const std::string&) mutable {
        if (std::exchange(first, false))
            FileStore().write(R"({"came":"between"})", path);
    });
    EXPECT_EQ(SharedCache(FileStore(calls), dir).setBackoff(until, "/a"), Outcome::written);
    EXPECT_EQ(found(), Json({{"came", "between"}, {"backoffUntil", "2026-03-01T09:35:00.250Z"}}));
    EXPECT_EQ(calls.created().size(), 2U);
}

TEST_F(SharedCacheTest, aFileThatIsRemovedInBetweenIsNotMadeAgain)
{
    put(foreign);
    test::FailingFileCalls calls;
    calls.onCreated([&](const std::string&) { std::filesystem::remove(path); });
    EXPECT_EQ(SharedCache(FileStore(calls), dir).setBackoff(until, "/a"), Outcome::noChange);
    EXPECT_EQ(test::namesIn(dir), Names());
}

TEST_F(SharedCacheTest, afterThreeLostRacesTheBackoffIsWrittenOverTheLatest)
{
    put(foreign);
    test::FailingFileCalls calls;
    calls.onCreated([&, times = 0](const std::string&) mutable {
        if (++times <= 3)
            FileStore().write("{\"round\":" + std::to_string(times) + "}", path);
    });
    testing::internal::CaptureStderr();
    EXPECT_EQ(SharedCache(FileStore(calls), dir).setBackoff(until, "/a"), Outcome::lastWriterWins);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("3 conflicting writes"),
              std::string::npos);
    EXPECT_EQ(found(), Json({{"round", 3}, {"backoffUntil", "2026-03-01T09:35:00.250Z"}}));
    EXPECT_EQ(calls.created().size(), 4U);
}

TEST_F(SharedCacheTest, aCallThatFailsLeavesTheOldFile)
{
    put(foreign);
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        SharedCache(failing, dir).write(reading(), "/a", until);
    });
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        EXPECT_EQ(SharedCache(failing, dir).setBackoff(until, "/a"), Outcome::failed);
    });
    const test::FileState before = test::stateOf(path);
    Usage unwritable = reading();
    unwritable.windows[0].kind = "\xFF";
    cache.write(unwritable, "/a", until);
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(SharedCacheTest, whatIsNoFileOfItsKindIsNotThere)
{
    put(test::withKey(foreign, "[]"));
    ASSERT_TRUE(cache.read("/a"));
    put(test::padded(foreign, maxFileSize));
    ASSERT_TRUE(cache.read("/a"));
    for (const auto& [what, putFile] : test::hostileFiles(foreign)) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        putFile(path);
        EXPECT_EQ(cache.read("/a"), std::nullopt);
    }
}

TEST_F(SharedCacheTest, aWrongTypeOrABadDateAnywhereIsNoFile)
{
    struct Row {
        const char* path;
        Json value;
    };
    const Row rows[] = {
        {"/fetchedAt", "yesterday"},     {"/fetchedAt", 794050200}, {"/fetchedAt", Json()},
        {"/windows", Json::object()},    {"/windows", Json()},      {"/windows/0", Json()},
        {"/windows/0/percent", "42"},    {"/windows/0/kind", 1},    {"/source", 1},
        {"/windows/0/isActive", 1},      {"/extraUsage", "none"},   {"/backoffUntil", 17},
        {"/backoffUntil", "in a while"}, {"/sourceVersion", 1.0},   {"/windows/0/resetsAt", 0},
        {"/extraUsage", Json::object()},
    };
    for (const auto& [pointer, value] : rows) {
        Json json = Json::parse(foreign);
        json[Json::json_pointer(pointer)] = value;
        put(json.dump());
        EXPECT_EQ(cache.read("/a"), std::nullopt) << pointer << " " << value;
    }
    put("[" + foreign + "]");
    EXPECT_EQ(cache.read("/a"), std::nullopt);
}

TEST_F(SharedCacheTest, aDirectoryInEitherCompositionHasOneFile)
{
    cache.write(reading(), "/home/me/Caf\u00E9", std::nullopt);
    EXPECT_EQ(cache.setBackoff(now, "/home/me/Cafe\u0301"), Outcome::written);
    EXPECT_EQ(cache.read("/home/me/Caf\u00E9"), UsageCacheFile::of(reading(), now));
    EXPECT_EQ(cache.read("/home/me/Cafe\u0301"), cache.read("/home/me/Caf\u00E9"));
    EXPECT_EQ(test::namesIn(dir).size(), 1U);
    cache.prune({"/home/me/Cafe\u0301"});
    EXPECT_EQ(test::namesIn(dir).size(), 1U);
}

TEST_F(SharedCacheTest, pruneRemovesWhatOnlyASiblingWroteToo)
{
    cache.write(reading(), "/a", std::nullopt);
    cache.write(reading(), "/b", std::nullopt);
    for (const char* name : {"deadbeef.json", "x.txt", ".6a50dc85.json.17.abc.tmp", "json"})
        test::putBytes(dir + "/" + name, foreign);
    cache.prune({"/b", "/unknown"});
    EXPECT_EQ(test::namesIn(dir),
              (Names{".6a50dc85.json.17.abc.tmp", "9812b0b9.json", "json", "x.txt"}));
    cache.prune({});
    EXPECT_EQ(test::namesIn(dir), (Names{".6a50dc85.json.17.abc.tmp", "json", "x.txt"}));
}

TEST_F(SharedCacheTest, aFileOfANewerVersionIsKeptWithItsAccount)
{
    put(foreignOfVersion(3));
    const test::FileState before = test::stateOf(path);
    cache.prune({"/a"});
    EXPECT_EQ(test::stateOf(path), before);
}

} // namespace vellumor::sharedCacheTest
