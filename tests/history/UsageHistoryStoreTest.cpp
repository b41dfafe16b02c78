#include "history/UsageHistoryStore.h"

#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <limits>

namespace vellumor::usageHistoryStoreTest {

using test::instant;

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr std::chrono::seconds retention(604800);
constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

const Instant now = instant("2026-03-01T09:30:00.125Z");

Usage reading(Instant fetchedAt, double percent = 42.5)
{
    Usage usage;
    usage.fetchedAt = fetchedAt;
    usage.windows = {{"session", "session", percent, "normal", std::nullopt, true, std::nullopt}};
    return usage;
}

UsageSample sample(Instant at, double percent = 42.5)
{
    return {at, {{"session", percent}}};
}

struct UsageHistoryStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string dir = folder.file("Vellumor/history");
    std::string path = dir + "/6a50dc85.json"; // of "/a"
    UsageHistoryStore store{files, dir};

    void put(const UsageSamples& samples) const
    {
        test::putBytes(path, encodeSamples(samples).value());
    }
};

// Nobody, where the tests are run by the one who may read everything.
class AsSomebodyElse {
public:
    AsSomebodyElse()
    {
        if (::geteuid() == 0)
            m_isOther = ::seteuid(65534) == 0;
    }
    AsSomebodyElse(const AsSomebodyElse&) = delete;
    AsSomebodyElse& operator=(const AsSomebodyElse&) = delete;
    ~AsSomebodyElse()
    {
        if (m_isOther && ::seteuid(0) != 0)
            ADD_FAILURE() << "nobody for good";
    }

private:
    bool m_isOther = false;
};

TEST_F(UsageHistoryStoreTest, whatCouldNotBeReadIsReadTheNextTimeThoughTheFileIsTheSame)
{
    put({sample(now)});
    for (const std::string& entered : {folder.path(), folder.file("Vellumor"), dir})
        ASSERT_EQ(::chmod(entered.c_str(), 0755), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    {
        const AsSomebodyElse somebody;
        EXPECT_EQ(*store.load("/a"), UsageSamples());
    }
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(*store.load("/a"), UsageSamples{sample(now)});
}

TEST_F(UsageHistoryStoreTest, whatStandsAsBeforeIsNotReadAgain)
{
    put({sample(now)});
    const auto first = store.load("/a");
    EXPECT_EQ(store.load("/a"), first);
    store.append(reading(now + 1s), "/a", now);
    const auto appended = store.load("/a");
    EXPECT_EQ(appended->size(), 2U);
    EXPECT_EQ(store.load("/a"), appended);
    EXPECT_EQ(*appended, UsageHistoryStore::loadFrom(dir, "/a"));
    put({sample(now + 2s)});
    EXPECT_EQ(*store.load("/a"), UsageSamples{sample(now + 2s)});
    EXPECT_EQ(first->size(), 1U); // who holds them keeps them
}

} // namespace

TEST_F(UsageHistoryStoreTest, itMakesTheFolderAndNothingInIt)
{
    EXPECT_EQ(test::modeOf(dir), 0700U);
    EXPECT_EQ(*store.load("/a"), UsageSamples());
    EXPECT_EQ(test::namesIn(dir), Names());
}

TEST_F(UsageHistoryStoreTest, readingAFolderThatIsNotThereMakesNothing)
{
    EXPECT_EQ(UsageHistoryStore::loadFrom(folder.file("other/history"), "/a"), UsageSamples());
    EXPECT_EQ(test::namesIn(folder.path()), Names{"Vellumor"});
    put({sample(now)});
    EXPECT_EQ(UsageHistoryStore::loadFrom(dir, "/a"), UsageSamples{sample(now)});
}

TEST_F(UsageHistoryStoreTest, aReadingIsAppendedToTheFileOfItsAccount)
{
    Usage usage = reading(now);
    usage.windows.push_back({"weekly/all", "weekly", 7, "critical", now, false, "Opus"});
    store.append(usage, "/a", now + 1h);
    store.append(reading(now + 5min, 0), "/a", now + 1h);
    EXPECT_EQ(test::contentsOf(path), R"([
  {
    "at": "2026-03-01T09:30:00.125Z",
    "percents": {
      "session": 42.5,
      "weekly\/all": 7
    }
  },
  {
    "at": "2026-03-01T09:35:00.125Z",
    "percents": {
      "session": 0
    }
  }
])");
    EXPECT_EQ(test::modeOf(path), 0600U);
    store.append(reading(now), "/b", now);
    EXPECT_EQ(test::namesIn(dir), (Names{"6a50dc85.json", "9812b0b9.json"}));
    EXPECT_EQ(store.load("/a")->size(), 2U);
    EXPECT_EQ(*store.load("/b"), UsageSamples{sample(now)});
}

TEST_F(UsageHistoryStoreTest, aReadingWithoutWindowsIsASampleToo)
{
    store.append(Usage{{}, std::nullopt, now}, "/a", now);
    EXPECT_EQ(*store.load("/a"), (UsageSamples{{now, {}}}));
}

TEST_F(UsageHistoryStoreTest, ofTwoWindowsOfOneKindTheLaterCounts)
{
    Usage usage = reading(now, 90);
    usage.windows.push_back(reading(now, 10).windows[0]);
    store.append(usage, "/a", now);
    EXPECT_EQ(*store.load("/a"), UsageSamples{sample(now, 10)});
}

TEST_F(UsageHistoryStoreTest, aSecondReadingOfTheSameMomentLeavesTheFileByteForByte)
{
    store.append(reading(now - retention), "/a", now);
    store.append(reading(now), "/a", now);
    ASSERT_EQ(store.load("/a")->size(), 2U);
    const test::FileState before = test::stateOf(path);
    store.append(reading(now), "/a", now);
    store.append(reading(now, 99), "/a", now + 1h);
    store.append(reading(now), "/a", now + 100 * retention);
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(UsageHistoryStoreTest, theMomentIsKnownAgainAfterARestart)
{
    store.append(reading(now), "/a", now);
    const test::FileState before = test::stateOf(path);
    UsageHistoryStore(files, dir).append(reading(now), "/a", now);
    EXPECT_EQ(test::stateOf(path), before);
}

// The extension for VS Code and a sibling may write dates to the microsecond; the file keeps
// milliseconds.
TEST_F(UsageHistoryStoreTest, aMomentWithMicrosecondsIsKnownAgain)
{
    const Instant precise = instant("2026-03-01T09:30:00.123456Z");
    store.append(reading(precise), "/a", now);
    const test::FileState before = test::stateOf(path);
    store.append(reading(precise), "/a", now);
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(UsageHistoryStoreTest, onlyTheLastSampleIsComparedAndNoSpacingIsAsked)
{
    const UsageSamples expected = {sample(now), sample(now + 1ms), sample(now), sample(now - 1h),
                                   sample(now + 1s)};
    for (const UsageSample& each : expected)
        store.append(reading(each.at), "/a", now);
    EXPECT_EQ(*store.load("/a"), expected);
}

TEST_F(UsageHistoryStoreTest, aSampleAsOldAsTheRetentionSurvivesAndAnOlderOneDoesNot)
{
    put({sample(now - retention - 1ms), sample(now - retention), sample(now - retention + 1ms)});
    store.append(reading(now), "/a", now);
    EXPECT_EQ(*store.load("/a"),
              (UsageSamples{sample(now - retention), sample(now - retention + 1ms), sample(now)}));
}

TEST_F(UsageHistoryStoreTest, theCallersTimeTrimsAndNotThatOfTheReading)
{
    put({sample(now - retention)});
    store.append(reading(now + 1h), "/a", now);
    EXPECT_EQ(store.load("/a")->size(), 2U);
    store.append(reading(now), "/a", now + 1s);
    EXPECT_EQ(*store.load("/a"), (UsageSamples{sample(now + 1h), sample(now)}));
}

TEST_F(UsageHistoryStoreTest, aReadingBehindTheRetentionLeavesAnEmptyArray)
{
    store.append(reading(now), "/a", now);
    store.append(reading(now + 1s), "/a", now + 2 * retention);
    EXPECT_EQ(test::contentsOf(path), "[]");
    EXPECT_EQ(*store.load("/a"), UsageSamples());
    store.append(reading(now), "/a", now);
    EXPECT_EQ(*store.load("/a"), UsageSamples{sample(now)});
}

TEST_F(UsageHistoryStoreTest, trimKeepsTheOrderAndWhateverIsNotTooOld)
{
    const UsageSamples samples = {sample(now + 1h),  sample(now - 11s),     sample(now),
                                  sample(now - 10s), sample(now - 10001ms), sample(now)};
    EXPECT_EQ(UsageHistoryStore::trim(samples, now, 10.0),
              (UsageSamples{sample(now + 1h), sample(now), sample(now - 10s), sample(now)}));
    EXPECT_EQ(UsageHistoryStore::trim(samples, now, 604800.0), samples);
    EXPECT_EQ(UsageHistoryStore::trim(samples, now - 10001ms, 0.0).size(), 5U);
    EXPECT_EQ(UsageHistoryStore::trim({}, now, 10.0), UsageSamples());
}

TEST_F(UsageHistoryStoreTest, loadingTrimsNothingAndSortsNothing)
{
    const UsageSamples samples = {sample(now + 1h), sample(instant("1999-01-01T00:00:00Z")),
                                  sample(now)};
    put(samples);
    const test::FileState before = test::stateOf(path);
    EXPECT_EQ(*store.load("/a"), samples);
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(UsageHistoryStoreTest, aDamagedFileIsEmptyAndHealsAtTheNextAppend)
{
    const std::string valid = encodeSamples({sample(now - 1h), sample(now - 1min)}).value();
    for (const auto& [what, bytes] : test::hostileTexts(valid)) {
        SCOPED_TRACE(what);
        test::putBytes(path, bytes);
        const test::FileState before = test::stateOf(path);
        EXPECT_EQ(*store.load("/a"), UsageSamples());
        EXPECT_EQ(test::stateOf(path), before);
        store.append(reading(now), "/a", now);
        EXPECT_EQ(test::contentsOf(path), encodeSamples({sample(now)}));
    }
}

TEST_F(UsageHistoryStoreTest, oneBadElementLosesTheWholeFile)
{
    std::string bytes = encodeSamples({sample(now - 1h), sample(now - 1min)}).value();
    bytes.insert(bytes.rfind("42.5"), "\"x\" ");
    test::putBytes(path, bytes);
    EXPECT_EQ(*store.load("/a"), UsageSamples());
}

TEST_F(UsageHistoryStoreTest, whatIsNoFileOfItsKindIsEmpty)
{
    const std::string valid = encodeSamples({sample(now)}).value();
    for (const auto& [what, put] : test::hostileFiles(valid, 32 * mebibyte)) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        put(path);
        EXPECT_EQ(*store.load("/a"), UsageSamples());
    }
}

TEST_F(UsageHistoryStoreTest, aFileMayBeLargerThanOthersUpToThirtyTwoMebibytes)
{
    const std::string valid = encodeSamples({sample(now)}).value();
    for (const std::size_t size : {maxFileSize, maxFileSize + 1, 32 * mebibyte}) {
        SCOPED_TRACE(size);
        test::putBytes(path, test::padded(valid, size));
        EXPECT_EQ(*store.load("/a"), UsageSamples{sample(now)});
    }
    test::putBytes(path, test::padded(valid, 32 * mebibyte + 1));
    EXPECT_EQ(*store.load("/a"), UsageSamples());
}

TEST_F(UsageHistoryStoreTest, aLongHistoryIsAppendedTo)
{
    UsageSamples samples;
    for (int i = 0; i < 30000; ++i)
        samples.push_back({now - 100h + i * 10s, {{std::string(300, 'k'), i}}});
    put(samples);
    ASSERT_GT(test::contentsOf(path).size(), maxFileSize);
    store.append(reading(now), "/a", now);
    samples.push_back(sample(now));
    EXPECT_EQ(*store.load("/a"), samples);
}

TEST_F(UsageHistoryStoreTest, aDirectoryInEitherCompositionHasOneHistory)
{
    store.append(reading(now), "/home/me/Caf\u00E9", now);
    store.append(reading(now + 1s), "/home/me/Cafe\u0301", now);
    EXPECT_EQ(test::namesIn(dir).size(), 1U);
    EXPECT_EQ(store.load("/home/me/Caf\u00E9")->size(), 2U);
    store.prune({"/home/me/Cafe\u0301"});
    EXPECT_EQ(store.load("/home/me/Caf\u00E9")->size(), 2U);
}

TEST_F(UsageHistoryStoreTest, pruneForgetsEveryOtherAccount)
{
    for (const char* configDir : {"/a", "/b", "/c"})
        store.append(reading(now), configDir, now);
    test::putBytes(dir + "/notes.txt", "mine");
    store.prune({"/b", "/unknown"});
    EXPECT_EQ(test::namesIn(dir), (Names{"9812b0b9.json", "notes.txt"}));
    EXPECT_EQ(*store.load("/b"), UsageSamples{sample(now)});
    store.prune({});
    EXPECT_EQ(test::namesIn(dir), Names{"notes.txt"});
    EXPECT_EQ(test::contentsOf(dir + "/notes.txt"), "mine");
}

TEST_F(UsageHistoryStoreTest, anAppendThatFailsLeavesTheOldFile)
{
    put({sample(now)});
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        UsageHistoryStore(failing, dir).append(reading(now + 1s), "/a", now);
    });
}

TEST_F(UsageHistoryStoreTest, whatCouldNotBeWrittenIsNotRememberedEither)
{
    using Call = test::FailingFileCalls::Call;
    for (const Call call : {Call::create, Call::write, Call::rename}) {
        put({sample(now)});
        test::FailingFileCalls calls;
        const FileStore failing(calls);
        UsageHistoryStore remembering(failing, dir);
        calls.failNext(call, 1, ENOSPC);
        remembering.append(reading(now + 1s), "/a", now);
        EXPECT_EQ(*remembering.load("/a"), UsageSamples{sample(now)});
        remembering.append(reading(now + 1s), "/a", now);
        EXPECT_EQ(UsageHistoryStore::loadFrom(dir, "/a"),
                  (UsageSamples{sample(now), sample(now + 1s)}));
    }
}

TEST_F(UsageHistoryStoreTest, aReadingThatCannotBeWrittenLeavesTheOldFile)
{
    put({sample(now)});
    const test::FileState before = test::stateOf(path);
    store.append(reading(now + 1s, std::numeric_limits<double>::quiet_NaN()), "/a", now);
    Usage usage = reading(now + 1s);
    usage.windows[0].kind = "\xFF";
    store.append(usage, "/a", now);
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(UsageHistoryStoreTest, aPipeIsNotWaitedForAndGivesWayToAFile)
{
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    store.append(reading(now), "/a", now);
    EXPECT_EQ(*store.load("/a"), UsageSamples{sample(now)});
}

} // namespace vellumor::usageHistoryStoreTest
