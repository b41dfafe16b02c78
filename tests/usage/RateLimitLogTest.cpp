#include "usage/RateLimitLog.h"

#include "base/Format.h"
#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/FileState.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::rateLimitLogTest {
namespace {

using test::contentsOf;
using test::instant;
using test::TempFolder;

RateLimitEntry fullEntry()
{
    RateLimitEntry entry;
    entry.at = instant("2026-03-01T09:30:00.125Z");
    entry.configDir = "/home/ann/.claude-work";
    entry.trigger = "auto";
    entry.sinceLastRequestSeconds = 2.5;
    entry.lastRequestConfigDir = "/home/ann/.claude";
    entry.effectiveIntervalSeconds = 120;
    entry.backoffSeconds = 240;
    entry.retryAfterSeconds = 60;
    return entry;
}

struct RateLimitLogTest : testing::Test {
    TempFolder folder;
    FileStore files;
    std::string path = folder.file("Vellumor/429-log.jsonl");
    RateLimitLog log{files, path};
};

TEST_F(RateLimitLogTest, aLineHasSortedKeysPlainSlashesAndWholeSeconds)
{
    log.record(fullEntry());
    EXPECT_EQ(
        contentsOf(path),
        R"({"at":"2026-03-01T09:30:00Z","backoffSeconds":240,"configDir":"/home/ann/.claude-work",)"
        R"("effectiveIntervalSeconds":120,"lastRequestConfigDir":"/home/ann/.claude",)"
        R"("retryAfterSeconds":60,"sinceLastRequestSeconds":2.5,"trigger":"auto"})"
        "\n");
}

TEST_F(RateLimitLogTest, absentValuesAreLeftOutOfTheLine)
{
    RateLimitEntry entry;
    entry.trigger = "manual";
    const auto line = entry.encode();
    ASSERT_TRUE(line);
    const auto json = parseJsonObject(*line);
    ASSERT_TRUE(json);
    for (const char* key : {"sinceLastRequestSeconds", "lastRequestConfigDir", "retryAfterSeconds"})
        EXPECT_FALSE(json->contains(key)) << key;
}

TEST_F(RateLimitLogTest, theDateOfALineReadsBack)
{
    const auto line = fullEntry().encode();
    ASSERT_TRUE(line);
    const auto json = parseJsonObject(*line);
    ASSERT_TRUE(json);
    EXPECT_EQ(Format::parseISO8601(json->at("at").get<std::string>()),
              instant("2026-03-01T09:30:00Z"));
}

TEST_F(RateLimitLogTest, aNegativeTimeSinceTheLastRequestIsLoggedAsItIs)
{
    RateLimitEntry entry = fullEntry();
    entry.sinceLastRequestSeconds = -1.5;
    EXPECT_NE(entry.encode()->find(R"("sinceLastRequestSeconds":-1.5)"), std::string::npos);
}

TEST_F(RateLimitLogTest, anInfiniteRetryAfterIsLeftOutAndTheRestIsKept)
{
    RateLimitEntry entry = fullEntry();
    entry.retryAfterSeconds = std::numeric_limits<double>::infinity();
    const auto line = entry.encode();
    ASSERT_TRUE(line);
    EXPECT_EQ(line->find("retryAfterSeconds"), std::string::npos);
    EXPECT_NE(line->find("backoffSeconds"), std::string::npos);
}

TEST_F(RateLimitLogTest, anEntryThatIsNotUtf8IsDropped)
{
    RateLimitEntry entry = fullEntry();
    entry.configDir = "/home/\xff";
    log.record(entry);
    EXPECT_TRUE(log.recent(5).empty());
}

TEST_F(RateLimitLogTest, aLineFeedInANameStaysWithinItsLine)
{
    RateLimitEntry entry = fullEntry();
    entry.configDir = "/home/a\nb";
    log.record(entry);
    EXPECT_EQ(log.recent(5).size(), 1U);
}

TEST_F(RateLimitLogTest, the501stEntryDropsTheOldestLine)
{
    RateLimitEntry entry = fullEntry();
    std::string existing;
    for (int i = 0; i < 500; ++i) {
        entry.backoffSeconds = i;
        existing += *entry.encode() + "\n";
    }
    folder.put("Vellumor/429-log.jsonl", existing);
    entry.backoffSeconds = 500;
    log.record(entry);
    const auto lines = log.recent(1000);
    ASSERT_EQ(lines.size(), 500U);
    EXPECT_NE(lines.front().find(R"("backoffSeconds":1,)"), std::string::npos);
    EXPECT_NE(lines.back().find(R"("backoffSeconds":500,)"), std::string::npos);
}

TEST_F(RateLimitLogTest, aBlankLineIsLostAtTheNextRecord)
{
    folder.put("Vellumor/429-log.jsonl", "{\"a\":1}\n\n{\"b\":2}\n");
    log.record(fullEntry());
    const auto lines = log.recent(10);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(contentsOf(path).find("\n\n"), std::string::npos);
}

TEST_F(RateLimitLogTest, recentGivesTheLastLinesOldestFirst)
{
    EXPECT_TRUE(log.recent(5).empty());
    folder.put("Vellumor/429-log.jsonl", "one\ntwo\nthree\n");
    EXPECT_EQ(log.recent(5), (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_EQ(log.recent(2), (std::vector<std::string>{"two", "three"}));
    EXPECT_TRUE(log.recent(0).empty());
}

TEST_F(RateLimitLogTest, aFileThatIsNotUtf8CountsAsEmpty)
{
    folder.put("Vellumor/429-log.jsonl", "\xff\xfe\n");
    EXPECT_TRUE(log.recent(5).empty());
    log.record(fullEntry());
    EXPECT_EQ(log.recent(5).size(), 1U);
}

TEST_F(RateLimitLogTest, anEntryThatCannotBeWrittenLeavesTheOldFile)
{
    log.record(fullEntry());
    test::expectTheOldFileStays(
        path, [&](const FileStore& failing) { RateLimitLog(failing, path).record(fullEntry()); });
}

TEST_F(RateLimitLogTest, trimmingDropsFromTheFront)
{
    const std::vector<std::string> two = {"a", "b"};
    EXPECT_EQ(RateLimitLog::trimmed(two, "c", 3), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(RateLimitLog::trimmed(two, "c", 2), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(RateLimitLog::trimmed({"a", "b", "c", "d"}, "e", 2),
              (std::vector<std::string>{"d", "e"}));
}

TEST(RateLimitLog, readingForTheReportCreatesNothing)
{
    const TempFolder folder;
    EXPECT_TRUE(RateLimitLog::recentIn(folder.file("Vellumor/429-log.jsonl"), 5).empty());
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

} // namespace
} // namespace vellumor::rateLimitLogTest
