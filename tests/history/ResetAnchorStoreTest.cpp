#include "history/ResetAnchorStore.h"

#include "base/Json.h"
#include "support/ChangedJson.h"
#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

namespace vellumor::resetAnchorStoreTest {

using test::instant;

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr std::chrono::seconds week(604800);

const Instant reset = instant("2026-03-01T09:30:00.125Z");

const std::string valid = R"({"schemaVersion":1,"anchors":{"/a":{
    "weekly_all":{"resetsAt":"2026-03-01T09:30:00.125Z","offCadence":false},
    "seven_day_opus":{"resetsAt":"2026-03-02T00:00:00.000Z","offCadence":true}},"/b":{}}})";

const ResetAnchors validAnchors = {
    {"/a",
     {{"weekly_all", {reset, false}}, {"seven_day_opus", {instant("2026-03-02T00:00:00Z"), true}}}},
    {"/b", {}}};

const std::string emptyFile = "{\n  \"anchors\": {},\n  \"schemaVersion\": 1\n}";

LimitWindow window(const char* kind, const char* group, std::optional<Instant> resetsAt)
{
    LimitWindow reported;
    reported.kind = kind;
    reported.group = group;
    reported.resetsAt = resetsAt;
    return reported;
}

Usage reporting(Instant resetsAt)
{
    return {{window("weekly_all", "weekly", resetsAt)}, std::nullopt, reset};
}

// The valid file with `value` at `path`; without a value the key is taken away.
std::string changed(const std::string& path, const std::optional<Json>& value)
{
    return test::changed(Json::parse(valid), path, value).dump();
}

struct ResetAnchorStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string path = folder.makeFolder("Vellumor") + "/reset-anchors.json";
    ResetAnchorStore store{files, path};

    // The anchor of the weekly window of "/a".
    [[nodiscard]] ResetAnchor learned() const { return store.load().at("/a").at("weekly_all"); }
    // True when the report is written.
    bool isWritten(const Usage& usage)
    {
        const test::FileState before = test::stateOf(path);
        store.record(usage, "/a");
        return test::stateOf(path) != before;
    }
};

} // namespace

TEST_F(ResetAnchorStoreTest, itMakesNothingUntilThereIsSomethingToKeep)
{
    const std::string file = folder.file("other/file.json");
    ResetAnchorStore elsewhere(files, file);
    EXPECT_EQ(elsewhere.load(), ResetAnchors());
    EXPECT_EQ(ResetAnchorStore::loadFrom(file), ResetAnchors());
    EXPECT_EQ(test::namesIn(folder.path()), Names{"Vellumor"});
    elsewhere.record(reporting(reset), "/a");
    EXPECT_EQ(test::namesIn(folder.path()), (Names{"Vellumor", "other"}));
    EXPECT_EQ(test::modeOf(folder.file("other")), 0700U);
}

TEST_F(ResetAnchorStoreTest, theFirstReportIsOnTheCadenceWhateverItsDate)
{
    for (const Instant date : {reset, reset - 1000 * week, instant("0001-01-01T00:00:00Z"),
                               instant("9999-12-31T23:59:59Z")}) {
        std::filesystem::remove(path);
        store.record(reporting(date), "/a");
        EXPECT_EQ(learned(), (ResetAnchor{date, false}));
    }
}

TEST_F(ResetAnchorStoreTest, theFileIsOneOfAllAccountsInPrettyJson)
{
    Usage usage = reporting(reset + 999us);
    usage.windows.push_back(window("seven_day/opus", "weekly", reset + 1h));
    store.record(usage, "/home/me/\u00E9");
    store.record(reporting(reset), "/b");
    EXPECT_EQ(test::contentsOf(path), R"({
  "anchors": {
    "\/b": {
      "weekly_all": {
        "offCadence": false,
        "resetsAt": "2026-03-01T09:30:00.125Z"
      }
    },
    "\/home\/me\/é": {
      "seven_day\/opus": {
        "offCadence": false,
        "resetsAt": "2026-03-01T10:30:00.125Z"
      },
      "weekly_all": {
        "offCadence": false,
        "resetsAt": "2026-03-01T09:30:00.125Z"
      }
    }
  },
  "schemaVersion": 1
})");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(
        store.load(),
        (ResetAnchors{{"/home/me/\u00E9",
                       {{"weekly_all", {reset, false}}, {"seven_day/opus", {reset + 1h, false}}}},
                      {"/b", {{"weekly_all", {reset, false}}}}}));
}

TEST_F(ResetAnchorStoreTest, aReportOffTheCadenceIsTold)
{
    struct Row {
        std::chrono::milliseconds moved;
        bool offCadence;
    };
    const Row rows[] = {
        {week, false},           {3 * week, false},
        {-week, false},          {week + 300s, false},
        {week + 300001ms, true}, {week + 301s, true},
        {week - 300s, false},    {week - 301s, true},
        {300s, false},           {301s, true},
        {-299s, false},          {-300s, false},
        {-400s, true},           {-week - 300s, false},
        {-week - 301s, true},    {302400s, true},
        {-302400s, true},        {302399s, true},
        {20 * week + 12h, true},
    };
    for (const auto& [moved, offCadence] : rows) {
        SCOPED_TRACE(moved.count());
        std::filesystem::remove(path);
        store.record(reporting(reset), "/a");
        EXPECT_TRUE(isWritten(reporting(reset + moved)));
        EXPECT_EQ(learned(), (ResetAnchor{reset + moved, offCadence}));
    }
}

TEST_F(ResetAnchorStoreTest, jitterOfTwoSecondsWritesNothingAndKeepsTheOldDate)
{
    store.record(reporting(reset), "/a");
    for (const std::chrono::milliseconds moved : {0ms, 1500ms, -1500ms, 2000ms, -2000ms}) {
        SCOPED_TRACE(moved.count());
        EXPECT_FALSE(isWritten(reporting(reset + moved)));
        EXPECT_EQ(learned(), (ResetAnchor{reset, false}));
    }
    for (const std::chrono::milliseconds moved : {2001ms, -500ms, 2000ms, -1ms}) {
        SCOPED_TRACE(moved.count());
        EXPECT_TRUE(isWritten(reporting(reset + moved)));
        EXPECT_EQ(learned(), (ResetAnchor{reset + moved, false}));
    }
}

TEST_F(ResetAnchorStoreTest, theReportAfterAJumpClearsTheMark)
{
    store.record(reporting(reset), "/a");
    store.record(reporting(reset + 1h), "/a");
    ASSERT_EQ(learned(), (ResetAnchor{reset + 1h, true}));
    EXPECT_TRUE(isWritten(reporting(reset + 1h)));
    EXPECT_EQ(learned(), (ResetAnchor{reset + 1h, false}));
    EXPECT_FALSE(isWritten(reporting(reset + 1h)));
}

TEST_F(ResetAnchorStoreTest, theReportAfterAJumpClearsTheMarkThoughItJitters)
{
    store.record(reporting(reset), "/a");
    store.record(reporting(reset + 1h), "/a");
    EXPECT_TRUE(isWritten(reporting(reset + 1h + 1s)));
    EXPECT_EQ(learned(), (ResetAnchor{reset + 1h + 1s, false}));
}

TEST_F(ResetAnchorStoreTest, aReadingWithoutTheResetTimeKeepsTheMark)
{
    store.record(reporting(reset), "/a");
    store.record(reporting(reset + 1h), "/a");
    Usage idle = reporting(reset);
    idle.windows[0].resetsAt.reset();
    EXPECT_FALSE(isWritten(idle));
    EXPECT_EQ(learned(), (ResetAnchor{reset + 1h, true}));
}

TEST_F(ResetAnchorStoreTest, onlyWindowsOfTheWeeklyFamilyAreLearned)
{
    struct Row {
        const char* kind;
        const char* group;
        bool isLearned;
    };
    const Row rows[] = {
        {"weekly_all", "", true},
        {"weekly_scoped", "weekly", true},
        {"seven_day_opus", "", true},
        {"seven_day_opus", "other", true},
        {"unknown", "weekly", true},
        {"session", "session", false},
        {"session", "weekly", false},
        {"weekly_all", "session", false},
        {"weekly_scoped", "", false},
        {"monthly", "monthly", false},
        {"", "", false},
    };
    for (const auto& [kind, group, isLearned] : rows) {
        SCOPED_TRACE(std::string(kind) + " in " + group);
        store.prune({});
        EXPECT_EQ(isWritten({{window(kind, group, reset)}, std::nullopt, reset}), isLearned);
        ResetAnchors expected;
        if (isLearned)
            expected["/a"][kind] = {reset, false};
        EXPECT_EQ(store.load(), expected);
    }
}

TEST_F(ResetAnchorStoreTest, aReadingThatTeachesNothingMakesNoFile)
{
    store.record({{}, std::nullopt, reset}, "/a");
    store.record({{window("session", "session", reset), window("monthly", "monthly", reset),
                   window("weekly_all", "weekly", std::nullopt)},
                  std::nullopt,
                  reset},
                 "/a");
    EXPECT_EQ(test::namesIn(folder.file("Vellumor")), Names());
}

TEST_F(ResetAnchorStoreTest, aReadingWithoutWindowsLeavesEvenADamagedFile)
{
    folder.put("Vellumor/reset-anchors.json", "{");
    EXPECT_FALSE(isWritten({{}, std::nullopt, reset}));
}

TEST_F(ResetAnchorStoreTest, eachKindAndEachAccountHasItsOwnAnchor)
{
    store.record(reporting(reset), "/a");
    store.record(reporting(reset + 1h), "/b");
    store.record({{window("seven_day_opus", "weekly", reset + 2h)}, std::nullopt, reset}, "/a");
    const ResetAnchors expected = {
        {"/a", {{"weekly_all", {reset, false}}, {"seven_day_opus", {reset + 2h, false}}}},
        {"/b", {{"weekly_all", {reset + 1h, false}}}}};
    EXPECT_EQ(store.load(), expected);
}

TEST_F(ResetAnchorStoreTest, oneChangedWindowAmongUnchangedOnesIsWritten)
{
    Usage usage = reporting(reset);
    usage.windows.push_back(window("seven_day_opus", "weekly", reset));
    usage.windows.push_back(window("seven_day_sonnet", "weekly", reset));
    store.record(usage, "/a");
    EXPECT_FALSE(isWritten(usage));
    usage.windows[1].resetsAt = reset + week;
    EXPECT_TRUE(isWritten(usage));
    EXPECT_EQ(store.load().at("/a").at("seven_day_opus"), (ResetAnchor{reset + week, false}));
    EXPECT_EQ(learned(), (ResetAnchor{reset, false}));
}

TEST_F(ResetAnchorStoreTest, ofTwoRowsOfOneKindTheSecondIsComparedWithTheFirst)
{
    Usage usage = reporting(reset);
    usage.windows.push_back(usage.windows[0]);
    usage.windows[1].resetsAt = reset + 1h;
    store.record(usage, "/a");
    EXPECT_EQ(learned(), (ResetAnchor{reset + 1h, true}));
    usage.windows[1].resetsAt = reset + 1s;
    EXPECT_TRUE(isWritten(usage));
    EXPECT_EQ(learned(), (ResetAnchor{reset + 1s, false}));
}

TEST_F(ResetAnchorStoreTest, onlyAVersionThatIsKnownIsRead)
{
    EXPECT_EQ(ResetAnchorStore::decode(valid), validAnchors);
    for (const Json& version : {Json(-2147483647), Json(-1), Json(0), Json(1), Json(1.0)})
        EXPECT_EQ(ResetAnchorStore::decode(changed("/schemaVersion", version)), validAnchors)
            << version;
    for (const Json& version :
         {Json(2), Json(3), Json(1e10), Json(1.5), Json("1"), Json(true), Json(), Json::array({1})})
        EXPECT_EQ(ResetAnchorStore::decode(changed("/schemaVersion", version)), ResetAnchors())
            << version;
}

TEST_F(ResetAnchorStoreTest, oneBadAnchorCostsThemAll)
{
    for (const char* key : {"/schemaVersion", "/anchors", "/anchors/~1a/weekly_all/resetsAt",
                            "/anchors/~1a/weekly_all/offCadence"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(ResetAnchorStore::decode(changed(key, std::nullopt)), ResetAnchors());
        for (const Json& wrong : {Json(), Json("text"), Json(7), Json::array()})
            EXPECT_EQ(ResetAnchorStore::decode(changed(key, wrong)), ResetAnchors()) << wrong;
    }
    for (const char* key : {"/anchors/~1a", "/anchors/~1b", "/anchors/~1a/weekly_all"}) {
        SCOPED_TRACE(key);
        for (const Json& wrong : {Json(), Json("text"), Json(7), Json::array()})
            EXPECT_EQ(ResetAnchorStore::decode(changed(key, wrong)), ResetAnchors()) << wrong;
    }
    for (const char* key : {"/x", "/anchors/~1a/weekly_all/x"})
        EXPECT_EQ(ResetAnchorStore::decode(changed(key, Json::array({1}))), validAnchors);
    EXPECT_EQ(ResetAnchorStore::decode("[" + valid + "]"), ResetAnchors());
}

TEST_F(ResetAnchorStoreTest, whatIsNoFileOfItsKindIsEmptyAndIsReplaced)
{
    ASSERT_EQ(ResetAnchorStore::decode(test::withKey(valid, "[]")), validAnchors);
    test::putBytes(path, test::padded(valid, maxFileSize));
    ASSERT_EQ(store.load(), validAnchors);
    for (const auto& [what, put] : test::hostileFiles(valid)) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        put(path);
        EXPECT_EQ(store.load(), ResetAnchors());
        if (std::filesystem::symlink_status(path).type() == std::filesystem::file_type::directory)
            continue;
        store.record(reporting(reset), "/c");
        EXPECT_EQ(store.load(), (ResetAnchors{{"/c", {{"weekly_all", {reset, false}}}}}));
    }
}

TEST_F(ResetAnchorStoreTest, aNewerFileIsEmptyAndPruneReplacesIt)
{
    folder.put("Vellumor/reset-anchors.json", changed("/schemaVersion", 2));
    EXPECT_EQ(store.load(), ResetAnchors());
    store.prune({"/a", "/b"});
    EXPECT_EQ(test::contentsOf(path), emptyFile);
}

TEST_F(ResetAnchorStoreTest, pruneForgetsEveryOtherAccountAndWritesAlways)
{
    test::putBytes(path, valid);
    const test::FileState before = test::stateOf(path);
    store.prune({"/a", "/b", "/c"});
    EXPECT_NE(test::stateOf(path), before);
    EXPECT_EQ(store.load(), validAnchors);
    store.prune({"/b", "/A", "/a/"});
    EXPECT_EQ(store.load(), (ResetAnchors{{"/b", {}}}));
    store.prune({});
    EXPECT_EQ(test::contentsOf(path), emptyFile);
    std::filesystem::remove(path);
    store.prune({"/a"});
    EXPECT_EQ(test::contentsOf(path), emptyFile);
}

TEST_F(ResetAnchorStoreTest, aWriteThatFailsLeavesTheOldFile)
{
    test::putBytes(path, valid);
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        ResetAnchorStore(failing, path).record(reporting(reset + 1h), "/a");
    });
    test::expectTheOldFileStays(
        path, [&](const FileStore& failing) { ResetAnchorStore(failing, path).prune({}); });
    EXPECT_FALSE(isWritten({{window("\xFF", "weekly", reset)}, std::nullopt, reset}));
    EXPECT_EQ(store.load(), validAnchors);
}

} // namespace vellumor::resetAnchorStoreTest
