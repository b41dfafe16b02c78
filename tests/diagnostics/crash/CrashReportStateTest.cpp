#include "diagnostics/crash/CrashReportState.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::crashReportStateTest {
namespace {

using Sent = CrashReportState::Sent;

CrashDigest crash(const std::string& incident, const std::string& signature = "0a1b2c3d")
{
    CrashDigest digest;
    digest.incidentID = incident;
    digest.signature = signature;
    return digest;
}

TEST(CrashReportState, isWrittenWithSortedKeysAndReadBackTheSame)
{
    CrashReportState state;
    state.consumedIncidents = {"b", "a/1"};
    state.lastReportedDay = {{"ffffffff", "2026-03-02"}, {"0a1b2c3d", "2026-03-01"}};
    const std::string text =
        R"({"consumedIncidents":["b","a\/1"],)"
        R"("lastReportedDay":{"0a1b2c3d":"2026-03-01","ffffffff":"2026-03-02"}})";
    EXPECT_EQ(state.encode(), text);
    EXPECT_EQ(CrashReportState::decode(text), state);
    EXPECT_EQ(CrashReportState().encode(), R"({"consumedIncidents":[],"lastReportedDay":{}})");
}

TEST(CrashReportState, oneWrongTypeMakesAllOfItUnusable)
{
    const char* texts[] = {
        "",
        "[]",
        "{}",
        R"({"consumedIncidents":[]})",
        R"({"lastReportedDay":{}})",
        R"({"consumedIncidents":null,"lastReportedDay":{}})",
        R"({"consumedIncidents":{},"lastReportedDay":{}})",
        R"({"consumedIncidents":["a",1],"lastReportedDay":{}})",
        R"({"consumedIncidents":[],"lastReportedDay":[]})",
        R"({"consumedIncidents":[],"lastReportedDay":{"a":1}})",
        R"({"consumedIncidents":[],"lastReportedDay":{"a":null}})",
    };
    for (const char* text : texts)
        EXPECT_EQ(CrashReportState::decode(text), std::nullopt) << text;
    EXPECT_TRUE(
        CrashReportState::decode(R"({"consumedIncidents":[],"lastReportedDay":{},"more":1})"));
}

TEST(CrashReportState, aFileThatIsMissingOrBrokenIsAnEmptyStateAndHealsAtTheNextSave)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string url = CrashReportState::fileURL(folder.file("Vellumor"));
    EXPECT_EQ(url, folder.file("Vellumor/crash-state.json"));
    EXPECT_EQ(CrashReportState::load(url), CrashReportState());
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
    folder.put("Vellumor/crash-state.json", "broken");
    EXPECT_EQ(CrashReportState::load(url), CrashReportState());
    CrashReportState state;
    state.record(crash("one"), "2026-03-01", Sent::yes);
    state.save(files, url);
    EXPECT_EQ(CrashReportState::load(url), state);
    EXPECT_EQ(test::modeOf(url), 0600U);
}

TEST(CrashReportState, anIncidentIsKeptOnce)
{
    CrashReportState state;
    state.record(crash("one"), "2026-03-01", Sent::no);
    state.record(crash("two"), "2026-03-01", Sent::no);
    state.record(crash("one"), "2026-03-01", Sent::no);
    EXPECT_EQ(state.consumedIncidents, (std::vector<std::string>{"one", "two"}));
    EXPECT_TRUE(state.isConsumed(crash("two")));
    EXPECT_FALSE(state.isConsumed(crash("three")));
}

TEST(CrashReportState, aCrashWithoutIncidentIsNeverConsumed)
{
    CrashReportState state;
    state.record(crash(""), "2026-03-01", Sent::yes);
    EXPECT_TRUE(state.consumedIncidents.empty());
    EXPECT_FALSE(state.isConsumed(crash("")));
    EXPECT_EQ(state.lastReportedDay.at("0a1b2c3d"), "2026-03-01");
}

TEST(CrashReportState, onlyWhatWasSentMovesTheDay)
{
    CrashReportState state;
    state.record(crash("one"), "2026-03-01", Sent::no);
    EXPECT_TRUE(state.lastReportedDay.empty());
    state.record(crash("one"), "2026-03-01", Sent::yes);
    state.record(crash("two"), "2026-03-02", Sent::no);
    EXPECT_EQ(state.lastReportedDay.at("0a1b2c3d"), "2026-03-01");
}

TEST(CrashReportState, theTwoHundredAndFirstIncidentPushesOutTheFirst)
{
    CrashReportState state;
    for (int i = 1; i <= 200; ++i)
        state.record(crash(std::to_string(i)), "2026-03-01", Sent::no);
    EXPECT_EQ(state.consumedIncidents.size(), 200U);
    EXPECT_TRUE(state.isConsumed(crash("1")));
    state.record(crash("201"), "2026-03-01", Sent::no);
    EXPECT_EQ(state.consumedIncidents.size(), 200U);
    EXPECT_FALSE(state.isConsumed(crash("1")));
    EXPECT_EQ(state.consumedIncidents.front(), "2");
    EXPECT_EQ(state.consumedIncidents.back(), "201");
}

TEST(CrashReportState, aListThatIsTooLongIsCutAtTheNextRecord)
{
    CrashReportState state;
    for (int i = 1; i <= 300; ++i)
        state.consumedIncidents.push_back(std::to_string(i));
    state.record(crash("300"), "2026-03-01", Sent::no);
    EXPECT_EQ(state.consumedIncidents.size(), 200U);
    EXPECT_EQ(state.consumedIncidents.front(), "101");
}

} // namespace
} // namespace vellumor::crashReportStateTest
