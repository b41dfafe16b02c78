#include "history/ReceiptStore.h"

#include "base/Json.h"
#include "support/ChangedJson.h"
#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::receiptStoreTest {

using test::instant;

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr std::chrono::seconds week(604800);
constexpr std::chrono::seconds retention(7257600);

const Instant now = instant("2026-11-21T09:30:00.125Z");

const std::string emptyFile = "{\n  \"receipts\": [],\n  \"schemaVersion\": 1\n}";

WeeklyReceipt receipt(Instant weekEnd, double coverage = 87.5)
{
    return {weekEnd - week,
            weekEnd,
            coverage,
            1998,
            {{"session", 100, weekEnd - 2 * 24h, 30}, {"weekly_all", 92.5, weekEnd - 1h, 0}},
            now};
}

const std::string valid = R"({"schemaVersion":1,"receipts":[{
    "weekStart":"2026-11-14T09:30:00.125Z","weekEnd":"2026-11-21T09:30:00.125Z",
    "coveragePercent":87.5,"sampleCount":1998,"archivedAt":"2026-11-21T09:30:00.125Z","windows":[
    {"kind":"session","peakPercent":100,"peakAt":"2026-11-19T09:30:00.125Z","observedResets":30},
    {"kind":"weekly_all","peakPercent":92.5,"peakAt":"2026-11-21T08:30:00.125Z","observedResets":0}
    ]}]})";

const WeeklyReceipts validReceipts = {receipt(now)};

// The valid file with `value` at `path`; without a value the key is taken away.
std::string changed(const std::string& path, const std::optional<Json>& value)
{
    return test::changed(Json::parse(valid), path, value).dump();
}

struct ReceiptStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string dir = folder.file("Vellumor/receipts");
    std::string path = dir + "/6a50dc85.json"; // of "/a"
    ReceiptStore store{files, dir};

    // The ends of the weeks in the file, in its order.
    [[nodiscard]] std::vector<Instant> ends() const
    {
        std::vector<Instant> all;
        for (const WeeklyReceipt& each : ReceiptStore::decode(test::contentsOf(path)))
            all.push_back(each.weekEnd);
        return all;
    }
    // True when the receipt is written.
    bool isWritten(const WeeklyReceipt& added, Instant at = now)
    {
        const test::FileState before = test::stateOf(path);
        store.append(added, "/a", at);
        return test::stateOf(path) != before;
    }
};

} // namespace

TEST_F(ReceiptStoreTest, itMakesTheFolderAndNothingInIt)
{
    EXPECT_EQ(test::modeOf(dir), 0700U);
    EXPECT_EQ(store.load("/a"), WeeklyReceipts());
    EXPECT_EQ(test::namesIn(dir), Names());
}

TEST_F(ReceiptStoreTest, aReceiptIsAppendedToTheFileOfItsAccount)
{
    WeeklyReceipt first = receipt(now);
    first.windows[0].kind = "session/\u00E9";
    first.archivedAt = now + 999us;
    WeeklyReceipt second = receipt(now + week, 100);
    second.windows.clear();
    store.append(first, "/a", now);
    store.append(second, "/a", now);
    EXPECT_EQ(test::contentsOf(path), R"({
  "receipts": [
    {
      "archivedAt": "2026-11-21T09:30:00.125Z",
      "coveragePercent": 87.5,
      "sampleCount": 1998,
      "weekEnd": "2026-11-21T09:30:00.125Z",
      "weekStart": "2026-11-14T09:30:00.125Z",
      "windows": [
        {
          "kind": "session\/é",
          "observedResets": 30,
          "peakAt": "2026-11-19T09:30:00.125Z",
          "peakPercent": 100
        },
        {
          "kind": "weekly_all",
          "observedResets": 0,
          "peakAt": "2026-11-21T08:30:00.125Z",
          "peakPercent": 92.5
        }
      ]
    },
    {
      "archivedAt": "2026-11-21T09:30:00.125Z",
      "coveragePercent": 100,
      "sampleCount": 1998,
      "weekEnd": "2026-11-28T09:30:00.125Z",
      "weekStart": "2026-11-21T09:30:00.125Z",
      "windows": []
    }
  ],
  "schemaVersion": 1
})");
    EXPECT_EQ(test::modeOf(path), 0600U);
    first.archivedAt = now; // the file keeps milliseconds
    EXPECT_EQ(store.load("/a"), (WeeklyReceipts{first, second}));
    store.append(receipt(now), "/b", now);
    EXPECT_EQ(test::namesIn(dir), (Names{"6a50dc85.json", "9812b0b9.json"}));
    EXPECT_EQ(store.load("/b"), WeeklyReceipts{receipt(now)});
    EXPECT_EQ(store.load("/a").size(), 2U);
}

TEST_F(ReceiptStoreTest, receiptsAreLoadedByTheEndOfTheirWeek)
{
    for (const int weeks : {3, 5, 1})
        store.append(receipt(now - weeks * week), "/a", now);
    EXPECT_EQ(store.load("/a"), (WeeklyReceipts{receipt(now - 5 * week), receipt(now - 3 * week),
                                                receipt(now - week)}));
    // In the file the newest stands last, behind those that were there.
    EXPECT_EQ(ends(), (std::vector<Instant>{now - 5 * week, now - 3 * week, now - week}));
    store.append(receipt(now - 4 * week), "/a", now);
    EXPECT_EQ(ends(),
              (std::vector<Instant>{now - 5 * week, now - 3 * week, now - week, now - 4 * week}));
}

TEST(ReceiptStore, aWeekIsAmongReceiptsWhoseEndIsLessThanAMinuteAway)
{
    const WeeklyReceipts receipts = {receipt(now - week), receipt(now)};
    const std::pair<std::chrono::microseconds, bool> rows[] = {
        {0us, true},   {59'999'999us, true}, {-59'999'999us, true},
        {60s, false},  {-60s, false},        {week, false},
        {-week, true}, {-week - 30s, true},  {-week / 2, false}};
    for (const auto& [moved, isThere] : rows)
        EXPECT_EQ(ReceiptStore::hasWeek(receipts, now + moved), isThere) << moved.count();
    EXPECT_FALSE(ReceiptStore::hasWeek({}, now));
}

TEST_F(ReceiptStoreTest, aWeekThatEndsLessThanAMinuteAwayIsThereAlready)
{
    store.append(receipt(now), "/a", now);
    for (const std::chrono::microseconds moved : {0us, 1us, 59'900'000us, 59'999'999us}) {
        SCOPED_TRACE(moved.count());
        EXPECT_FALSE(isWritten(receipt(now + moved, 1)));
        EXPECT_FALSE(isWritten(receipt(now - moved, 1)));
    }
    EXPECT_EQ(store.load("/a"), WeeklyReceipts{receipt(now)});
    EXPECT_TRUE(isWritten(receipt(now + 60s)));
    EXPECT_TRUE(isWritten(receipt(now - 60s)));
    EXPECT_FALSE(isWritten(receipt(now + 119s)));
    EXPECT_FALSE(isWritten(receipt(now - 119s)));
}

// A reset time that drifts by more than a minute after its week was archived makes another of it.
TEST_F(ReceiptStoreTest, twoWeeksThatEndNinetySecondsApartAreTwo)
{
    store.append(receipt(now), "/a", now);
    store.append(receipt(now + 90s), "/a", now + 90s);
    EXPECT_EQ(store.load("/a"), (WeeklyReceipts{receipt(now), receipt(now + 90s)}));
}

TEST_F(ReceiptStoreTest, aWeekThatIsThereLeavesTheFileThoughOthersAreTooOld)
{
    store.append(receipt(now), "/a", now);
    EXPECT_FALSE(isWritten(receipt(now), now + 2 * retention));
    EXPECT_EQ(store.load("/a").size(), 1U);
}

TEST_F(ReceiptStoreTest, trimKeepsWeeksThatEndedWithinTwelveWeeks)
{
    const WeeklyReceipts receipts = {receipt(now - retention + 1us), receipt(now + week),
                                     receipt(now - retention - 1us), receipt(now - retention),
                                     receipt(now - 85 * 24h)};
    EXPECT_EQ(ReceiptStore::trim(receipts, now),
              (WeeklyReceipts{receipts[0], receipts[1], receipts[3]}));
    EXPECT_EQ(ReceiptStore::trim({}, now), WeeklyReceipts());
    EXPECT_EQ(ReceiptStore::retention, 84.0 * 24 * 3600);
}

TEST_F(ReceiptStoreTest, appendForgetsWhatIsOlderThanTwelveWeeks)
{
    store.append(receipt(now), "/a", now);
    store.append(receipt(now + week), "/a", now);
    EXPECT_TRUE(isWritten(receipt(now + 2 * week), now + retention));
    EXPECT_EQ(ends(), (std::vector<Instant>{now, now + week, now + 2 * week}));
    EXPECT_TRUE(isWritten(receipt(now + 3 * week), now + retention + 1ms));
    EXPECT_EQ(ends(), (std::vector<Instant>{now + week, now + 2 * week, now + 3 * week}));
    EXPECT_TRUE(isWritten(receipt(now - week), now + 4 * retention)); // itself too old
    EXPECT_EQ(test::contentsOf(path), emptyFile);
    EXPECT_EQ(store.load("/a"), WeeklyReceipts());
}

TEST_F(ReceiptStoreTest, loadingTrimsNothingAndWritesNothing)
{
    store.append(receipt(now), "/a", now);
    const test::FileState before = test::stateOf(path);
    EXPECT_EQ(ReceiptStore(files, dir).load("/a"), WeeklyReceipts{receipt(now)});
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(ReceiptStoreTest, onlyAVersionThatIsKnownIsRead)
{
    EXPECT_EQ(ReceiptStore::decode(valid), validReceipts);
    for (const Json& version : {Json(-1), Json(0), Json(1), Json(1.0)})
        EXPECT_EQ(ReceiptStore::decode(changed("/schemaVersion", version)), validReceipts)
            << version;
    for (const Json& version :
         {Json(2), Json(3), Json(1e10), Json(1.5), Json("1"), Json(true), Json()})
        EXPECT_EQ(ReceiptStore::decode(changed("/schemaVersion", version)), WeeklyReceipts())
            << version;
}

TEST_F(ReceiptStoreTest, oneBadReceiptCostsThemAll)
{
    for (const std::string key :
         {"/schemaVersion", "/receipts", "/receipts/0/weekStart", "/receipts/0/weekEnd",
          "/receipts/0/coveragePercent", "/receipts/0/sampleCount", "/receipts/0/windows",
          "/receipts/0/archivedAt", "/receipts/0/windows/1/kind",
          "/receipts/0/windows/1/peakPercent", "/receipts/0/windows/1/peakAt",
          "/receipts/0/windows/1/observedResets"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(ReceiptStore::decode(changed(key, std::nullopt)), WeeklyReceipts());
        for (const Json& wrong : {Json(), Json(true), Json::object()})
            EXPECT_EQ(ReceiptStore::decode(changed(key, wrong)), WeeklyReceipts()) << wrong;
    }
    const std::pair<const char*, Json> rows[] = {
        {"/receipts/0", Json::array()},          {"/receipts/0/windows/0", "session"},
        {"/receipts/0/weekEnd", "2026-11-21"},   {"/receipts/0/weekEnd", 1763717400},
        {"/receipts/0/coveragePercent", "87.5"}, {"/receipts/0/sampleCount", 1998.5},
        {"/receipts/0/sampleCount", 1e10},       {"/receipts/0/windows/0/observedResets", 0.5},
        {"/receipts/0/windows/0/kind", 7},
    };
    for (const auto& [key, wrong] : rows)
        EXPECT_EQ(ReceiptStore::decode(changed(key, wrong)), WeeklyReceipts()) << key << wrong;
    EXPECT_EQ(ReceiptStore::decode("[" + valid + "]"), WeeklyReceipts());
}

TEST_F(ReceiptStoreTest, unknownKeysArePassedOver)
{
    for (const char* key : {"/x", "/receipts/0/x", "/receipts/0/windows/0/x"})
        EXPECT_EQ(ReceiptStore::decode(changed(key, Json::array({1}))), validReceipts) << key;
    EXPECT_EQ(ReceiptStore::decode(changed("/receipts/0/sampleCount", 1998.0)), validReceipts);
}

TEST_F(ReceiptStoreTest, whatIsNoFileOfItsKindIsEmptyAndIsReplaced)
{
    ASSERT_EQ(ReceiptStore::decode(test::withKey(valid, "[]")), validReceipts);
    test::putBytes(path, test::padded(valid, maxFileSize));
    ASSERT_EQ(store.load("/a"), validReceipts);
    for (const auto& [what, put] : test::hostileFiles(valid)) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        put(path);
        EXPECT_EQ(store.load("/a"), WeeklyReceipts());
        if (std::filesystem::symlink_status(path).type() == std::filesystem::file_type::directory)
            continue;
        store.append(receipt(now - week), "/a", now);
        EXPECT_EQ(store.load("/a"), WeeklyReceipts{receipt(now - week)});
    }
}

TEST_F(ReceiptStoreTest, aNewerFileIsEmptyAndIsReplaced)
{
    test::putBytes(path, changed("/schemaVersion", 2));
    EXPECT_EQ(store.load("/a"), WeeklyReceipts());
    store.append(receipt(now), "/a", now);
    EXPECT_EQ(store.load("/a"), validReceipts);
}

TEST_F(ReceiptStoreTest, aDirectoryInEitherCompositionHasOneFile)
{
    store.append(receipt(now), "/home/me/Caf\u00E9", now);
    store.append(receipt(now + week), "/home/me/Cafe\u0301", now);
    EXPECT_EQ(test::namesIn(dir).size(), 1U);
    store.prune({"/home/me/Cafe\u0301"});
    EXPECT_EQ(store.load("/home/me/Caf\u00E9").size(), 2U);
}

TEST_F(ReceiptStoreTest, pruneForgetsEveryOtherAccount)
{
    for (const char* configDir : {"/a", "/b", "/c"})
        store.append(receipt(now), configDir, now);
    test::putBytes(dir + "/notes.txt", "mine");
    store.prune({"/b", "/unknown"});
    EXPECT_EQ(test::namesIn(dir), (Names{"9812b0b9.json", "notes.txt"}));
    EXPECT_EQ(store.load("/b"), validReceipts);
    store.prune({});
    EXPECT_EQ(test::namesIn(dir), Names{"notes.txt"});
}

TEST_F(ReceiptStoreTest, anAppendThatFailsLeavesTheOldFile)
{
    store.append(receipt(now), "/a", now);
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        ReceiptStore(failing, dir).append(receipt(now + week), "/a", now);
    });
}

// A number that JSON has no text for would make the file unreadable, with all that it holds.
TEST_F(ReceiptStoreTest, aReceiptThatCannotBeWrittenLeavesTheOldFile)
{
    store.append(receipt(now), "/a", now);
    for (const double none :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        WeeklyReceipt odd = receipt(now + week);
        odd.windows[0].peakPercent = none;
        EXPECT_FALSE(isWritten(odd)) << none;
        EXPECT_FALSE(isWritten(receipt(now + week, none))) << none;
    }
    WeeklyReceipt odd = receipt(now + week);
    odd.windows[0].kind = "\xFF";
    EXPECT_FALSE(isWritten(odd));
    EXPECT_EQ(store.load("/a"), validReceipts);
}

} // namespace vellumor::receiptStoreTest
