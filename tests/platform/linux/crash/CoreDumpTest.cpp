#include "platform/linux/crash/CoreDump.h"

#include "base/Json.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::coreDumpTest {
namespace {

using test::instant;

Json entry()
{
    return {{"__REALTIME_TIMESTAMP", "1772357406500000"},
            {"__CURSOR", "s=1"},
            {"_BOOT_ID", "0123456789abcdef0123456789abcdef"},
            {"COREDUMP_PID", "4242"},
            {"COREDUMP_EXE", "/usr/bin/vellumor"},
            {"COREDUMP_SIGNAL", "11"},
            {"COREDUMP_SIGNAL_NAME", "SIGSEGV"},
            {"COREDUMP_TIMESTAMP", "1772357405000000"},
            {"MESSAGE", "Process 4242"}};
}

std::optional<CoreDump> decode(const Json& json)
{
    return CoreDump::decode(json.dump());
}

TEST(CoreDump, anEntryIsRead)
{
    const CoreDump expected = {instant("2026-03-01T09:30:05Z"),
                               "0123456789abcdef0123456789abcdef",
                               4242,
                               "/usr/bin/vellumor",
                               "SIGSEGV",
                               "Process 4242"};
    EXPECT_EQ(decode(entry()), expected);
}

TEST(CoreDump, theIncidentIsMadeOfBootProcessAndMoment)
{
    EXPECT_EQ(decode(entry())->incidentID(),
              "0123456789abcdef0123456789abcdef-4242-1772357405000000");
    for (const auto& [key, value] :
         {std::pair{"_BOOT_ID", "1123456789abcdef0123456789abcdef"},
          std::pair{"COREDUMP_PID", "4243"}, std::pair{"COREDUMP_TIMESTAMP", "1772357406000000"}}) {
        Json other = entry();
        other[key] = value;
        EXPECT_NE(decode(other)->incidentID(), decode(entry())->incidentID()) << key;
    }
    Json later = entry(); // the same crash, seen again from another journal
    later["__REALTIME_TIMESTAMP"] = "1772357409000000";
    EXPECT_EQ(decode(later)->incidentID(), decode(entry())->incidentID());
}

TEST(CoreDump, aSignalWithoutNameIsKnownByItsNumber)
{
    struct Row {
        const char* number;
        const char* name;
    };
    const Row rows[] = {{"11", "SIGSEGV"}, {"6", "SIGABRT"}, {"5", "SIGTRAP"},  {"7", "SIGBUS"},
                        {"4", "SIGILL"},   {"8", "SIGFPE"},  {"3", "unknown"},  {"0", "unknown"},
                        {"", "unknown"},   {"x", "unknown"}, {"-11", "unknown"}};
    for (const auto& [number, name] : rows) {
        Json json = entry();
        json.erase("COREDUMP_SIGNAL_NAME");
        json["COREDUMP_SIGNAL"] = number;
        EXPECT_EQ(decode(json)->signal, name) << number;
    }
}

TEST(CoreDump, withoutItsOwnMomentThatOfTheEntryCounts)
{
    for (const Json& moment : {Json(), Json("soon"), Json(""), Json(1772357405000000), Json("-5"),
                               Json("99999999999999999999"), Json("253402300800000000")}) {
        Json json = entry();
        json["COREDUMP_TIMESTAMP"] = moment;
        EXPECT_EQ(decode(json)->crashedAt,
                  instant("2026-03-01T09:30:06.5Z") + std::chrono::milliseconds(500))
            << moment;
        json.erase("__REALTIME_TIMESTAMP");
        EXPECT_EQ(decode(json), std::nullopt) << moment;
    }
}

TEST(CoreDump, anEntryThatNamesNoProcessIsNone)
{
    for (const char* key : {"COREDUMP_PID", "_BOOT_ID"}) {
        for (const Json& value : {Json(), Json("x"), Json(""), Json(4242), Json(Json::array({52})),
                                  Json("0123456789ABCDEF0123456789ABCDEF"), Json("-1")}) {
            Json json = entry();
            json[key] = value;
            EXPECT_EQ(decode(json), std::nullopt) << key << value;
        }
    }
}

TEST(CoreDump, aTextThatTheJournalGivesAsBytesCountsAsNone)
{
    Json json = entry();
    for (const char* key : {"MESSAGE", "COREDUMP_EXE", "COREDUMP_SIGNAL_NAME"})
        json[key] = Json::array({80, 255});
    EXPECT_EQ(decode(json)->message, "");
    EXPECT_EQ(decode(json)->executable, "");
    EXPECT_EQ(decode(json)->signal, "SIGSEGV"); // by its number
}

TEST(CoreDump, whatIsNoEntryIsNone)
{
    for (const char* line : {"", "{", "[]", "null", "{}", "-- No entries --"}) {
        EXPECT_EQ(CoreDump::decode(line), std::nullopt) << line;
        EXPECT_EQ(journalTime(line), std::nullopt) << line;
    }
    EXPECT_EQ(journalTime(R"({"__REALTIME_TIMESTAMP":"1772357405000000"})"),
              instant("2026-03-01T09:30:05Z"));
}

} // namespace
} // namespace vellumor::coreDumpTest
