#include "usage/caches/VscodeStatusCache.h"

#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/HostileFiles.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::vscodeStatusCacheTest {

using test::instant;
using VscodeStatusCache::merge;
using VscodeStatusCache::parse;
using VscodeStatusCache::Snapshot;

namespace {

using namespace std::chrono_literals;

const Instant now = instant("2026-03-01T09:30:00Z");

const std::string whole = R"({"updatedAt":"2026-03-01T09:30:00.125Z","usageData":{
    "utilization5h":42.5,"utilization7d":107,"reset5hAt":1772370000,"reset7dAt":1772800000.5}})";

const Snapshot snapshot = {now + 125ms, 42.5, 107, instant("2026-03-01T13:00:00Z"),
                           instant("2026-03-06T12:26:40.500Z")};

// A file of this date with this usage data.
std::string fileOf(const std::string& usageData)
{
    return R"({"updatedAt":"2026-03-01T09:30:00Z","usageData":)" + usageData + "}";
}

LimitWindow window(const std::string& kind, const std::string& group, double percent,
                   std::optional<Instant> resetsAt)
{
    return {kind, group, percent, "normal", resetsAt, resetsAt.has_value(), std::nullopt};
}

Usage reading(Instant fetchedAt)
{
    Usage usage;
    usage.fetchedAt = fetchedAt;
    usage.windows = {
        {"seven_day_opus", "weekly", 3, "warning", now + 1h, false, "Opus"},
        {"weekly_all", "week", 2, "critical", std::nullopt, false, "all"},
        {"session", "short", 1, "warning", now + 2h, false, "here"},
        {"weekly_scoped", "weekly", 4, "normal", std::nullopt, true, std::nullopt},
        {"session", "session", 5, "normal", std::nullopt, false, std::nullopt},
    };
    usage.extraUsage = ExtraUsage{true, 1250.5, "EUR", 2, 5000, 25, false, false, true};
    return usage;
}

} // namespace

TEST(VscodeStatusCache, aWholeFileIsRead)
{
    EXPECT_EQ(parse(whole), snapshot);
    EXPECT_EQ(parse(test::withKey(whole, "[1]")), snapshot);
}

TEST(VscodeStatusCache, aMissingPercentIsZeroAndAMissingResetIsNone)
{
    const Snapshot nothing = {now, 0, 0, std::nullopt, std::nullopt};
    EXPECT_EQ(parse(fileOf("{}")), nothing);
    EXPECT_EQ(parse(fileOf(R"({"utilization5h":null,"utilization7d":null,"reset5hAt":null,
                               "reset7dAt":null,"utilization":"x"})")),
              nothing);
    struct Row {
        const char* usageData;
        Snapshot expected;
    };
    const Row rows[] = {
        {R"({"utilization5h":5})", {now, 5, 0, std::nullopt, std::nullopt}},
        {R"({"utilization7d":0.25})", {now, 0, 0.25, std::nullopt, std::nullopt}},
        {R"({"reset5hAt":1772370000})", {now, 0, 0, instant("2026-03-01T13:00:00Z"), std::nullopt}},
        {R"({"reset7dAt":1772370000})", {now, 0, 0, std::nullopt, instant("2026-03-01T13:00:00Z")}},
        {R"({"utilization5h":-1e300})", {now, -1e300, 0, std::nullopt, std::nullopt}},
    };
    for (const auto& [usageData, expected] : rows)
        EXPECT_EQ(parse(fileOf(usageData)), expected) << usageData;
}

TEST(VscodeStatusCache, aResetIsSecondsSince1970AsItStands)
{
    struct Row {
        const char* number;
        const char* date;
    };
    const Row rows[] = {{"0", "1970-01-01T00:00:00Z"},
                        {"-1", "1969-12-31T23:59:59Z"},
                        {"1772370000.125", "2026-03-01T13:00:00.125Z"},
                        {"1e300", "9999-12-31T23:59:59Z"},
                        {"-1e300", "0001-01-01T00:00:00Z"}};
    for (const auto& [number, date] : rows) {
        SCOPED_TRACE(number);
        const auto parsed = parse(
            fileOf(R"({"reset5hAt":)" + std::string(number) + R"(,"reset7dAt":)" + number + "}"));
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->reset5h, instant(date));
        EXPECT_EQ(parsed->reset7d, instant(date));
    }
}

TEST(VscodeStatusCache, withoutADateOrDataThereIsNoSnapshot)
{
    for (const char* bytes :
         {"{}", R"({"updatedAt":"2026-03-01T09:30:00Z"})", R"({"usageData":{}})",
          R"({"updatedAt":"2026-03-01T09:30:00Z","usageData":null})",
          R"({"updatedAt":null,"usageData":{}})", R"({"updatedAt":"","usageData":{}})",
          R"({"updatedAt":"yesterday","usageData":{}})",
          R"({"updatedAt":"2026-03-01T09:30:00","usageData":{}})",
          R"({"updatedAt":1772357400,"usageData":{}})", R"({"updatedAt":true,"usageData":{}})",
          R"([{"updatedAt":"2026-03-01T09:30:00Z","usageData":{}}])", "[]", "null"})
        EXPECT_EQ(parse(bytes), std::nullopt) << bytes;
}

TEST(VscodeStatusCache, aWrongTypeAnywhereInTheDataIsNoSnapshot)
{
    for (const char* key : {"utilization5h", "utilization7d", "reset5hAt", "reset7dAt"}) {
        for (const char* value : {R"("5")", "true", "[]", "{}", R"("2026-03-01T09:30:00Z")"}) {
            const std::string data = std::string("{\"") + key + "\":" + value + "}";
            EXPECT_EQ(parse(fileOf(data)), std::nullopt) << data;
        }
    }
    for (const char* data : {"[]", "5", R"("text")", "true"})
        EXPECT_EQ(parse(fileOf(data)), std::nullopt) << data;
}

TEST(VscodeStatusCache, theDateHasEveryFormThatServersSend)
{
    for (const char* date : {"2026-03-01T09:30:00Z", "2026-03-01T15:00:00+05:30",
                             "2026-03-01T09:30:00.000Z", "2026-03-01T09:30:00.0000000Z"}) {
        const auto parsed = parse(R"({"updatedAt":")" + std::string(date) + R"(","usageData":{}})");
        ASSERT_TRUE(parsed) << date;
        EXPECT_EQ(parsed->updatedAt, now) << date;
    }
}

TEST(VscodeStatusCache, whatIsNoFileOfItsKindIsNoSnapshot)
{
    const test::TempFolder folder;
    const std::string path = folder.put("vscode-claude-status-cache.json", whole);
    EXPECT_EQ(VscodeStatusCache::read(folder.path()), snapshot);
    test::putBytes(path, test::padded(whole, maxFileSize));
    EXPECT_EQ(VscodeStatusCache::read(folder.path()), snapshot);
    for (const auto& [what, put] : test::hostileFiles(whole)) {
        SCOPED_TRACE(what);
        std::filesystem::remove_all(path);
        put(path);
        EXPECT_EQ(VscodeStatusCache::read(folder.path()), std::nullopt);
    }
}

TEST(VscodeStatusCache, readingWhereNothingIsMakesNothing)
{
    const test::TempFolder folder;
    EXPECT_EQ(VscodeStatusCache::read(folder.path()), std::nullopt);
    EXPECT_EQ(VscodeStatusCache::read(folder.file("missing")), std::nullopt);
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST(VscodeStatusCache, withoutASnapshotTheBaseStands)
{
    EXPECT_EQ(merge(std::nullopt, std::nullopt), std::nullopt);
    EXPECT_EQ(merge(reading(now), std::nullopt), reading(now));
    EXPECT_EQ(merge(Usage{}, std::nullopt), Usage{});
}

TEST(VscodeStatusCache, withoutABaseThatHasWindowsThereAreJustTheTwo)
{
    const Usage expected = {{window("session", "session", 42.5, snapshot.reset5h),
                             window("weekly_all", "weekly", 107, snapshot.reset7d)},
                            std::nullopt,
                            snapshot.updatedAt};
    EXPECT_EQ(merge(std::nullopt, snapshot), expected);
    Usage withoutWindows = reading(now + 1h); // newer, and not asked for its age
    withoutWindows.windows.clear();
    EXPECT_EQ(merge(withoutWindows, snapshot), expected);
}

TEST(VscodeStatusCache, aFileWithoutNumbersGivesTwoIdleWindowsAtZero)
{
    EXPECT_EQ(merge(std::nullopt, parse(fileOf("{}"))),
              (Usage{{window("session", "session", 0, std::nullopt),
                      window("weekly_all", "weekly", 0, std::nullopt)},
                     std::nullopt,
                     now}));
}

TEST(VscodeStatusCache, aNewerSnapshotReplacesTheSessionAndTheWeekAlone)
{
    Usage expected = reading(snapshot.updatedAt);
    for (const std::size_t i : {2U, 4U}) {
        expected.windows[i].percent = 42.5;
        expected.windows[i].resetsAt = snapshot.reset5h;
        expected.windows[i].isActive = true;
    }
    expected.windows[1].percent = 107;
    expected.windows[1].resetsAt = snapshot.reset7d;
    expected.windows[1].isActive = true;
    EXPECT_EQ(merge(reading(now), snapshot), expected);
    EXPECT_EQ(merge(reading(snapshot.updatedAt - 1us), snapshot), expected);
}

TEST(VscodeStatusCache, aSnapshotAsOldAsTheBaseOrOlderChangesNothing)
{
    EXPECT_EQ(merge(reading(snapshot.updatedAt), snapshot), reading(snapshot.updatedAt));
    EXPECT_EQ(merge(reading(snapshot.updatedAt + 1us), snapshot),
              reading(snapshot.updatedAt + 1us));
}

TEST(VscodeStatusCache, aWindowWithoutAResetBecomesIdle)
{
    Usage base = reading(now - 1h);
    for (LimitWindow& each : base.windows) {
        each.isActive = true;
        each.resetsAt = now;
    }
    const auto merged = merge(base, Snapshot{now, 1, 2, std::nullopt, std::nullopt});
    ASSERT_TRUE(merged);
    for (const LimitWindow& each : merged->windows) {
        const bool isReplaced = each.kind == "session" || each.kind == "weekly_all";
        EXPECT_EQ(each.isActive, !isReplaced) << each.kind;
        EXPECT_EQ(each.resetsAt.has_value(), !isReplaced) << each.kind;
    }
}

TEST(VscodeStatusCache, aBaseOfOtherWindowsGetsTheMomentAndNoWindow)
{
    Usage base = reading(now);
    base.windows = {window("seven_day_opus", "weekly", 3, now)};
    Usage expected = base;
    expected.fetchedAt = snapshot.updatedAt;
    EXPECT_EQ(merge(base, snapshot), expected);
}

} // namespace vellumor::vscodeStatusCacheTest
