#include "status/StatusJson.h"

#include "status/StatusTesting.h"

#include <gtest/gtest.h>

namespace vellumor::statusJsonTest {
namespace {

using test::reportedAt;

Json read(const StatusReport& report, StatusOrigin origin = StatusOrigin::program)
{
    return parseJson(StatusJson::text(report, origin, reportedAt, JsonLayout::compact))
        .value_or(Json());
}

TEST(StatusJson, everythingOfTheReportIsInIt)
{
    const Json expected = {{"schemaVersion", 1},
                           {"source", "program"},
                           {"updatedAt", "2026-03-29T11:58:00.000Z"},
                           {"accounts",
                            {{{"id", "Work-id"},
                              {"name", "Work"},
                              {"state", "ok"},
                              {"updatedAt", "2026-03-29T11:58:00.000Z"},
                              {"age", "2m ago"},
                              {"credits", "Usage credits · €12.50 of €50.00"},
                              {"creditsExhausted", false},
                              {"forecast", "↗ Weekly on pace to hit the limit ~15:05"},
                              {"notes", {"Offline — showing last update"}},
                              {"windows",
                               {{{"kind", "session"},
                                 {"title", "Session"},
                                 {"percent", 62},
                                 {"percentText", "62%"},
                                 {"resetsAt", "2026-03-29T14:14:00.000Z"},
                                 {"resetText", "2h 14m"},
                                 {"active", true},
                                 {"stale", false}},
                                {{"kind", "weekly_all"},
                                 {"title", "Weekly"},
                                 {"percent", 91},
                                 {"percentText", "91%"},
                                 {"resetText", "3d 2h"},
                                 {"scope", "Opus"},
                                 {"active", true},
                                 {"stale", false}}}}},
                             {{"id", "Home-id"},
                              {"name", "Home"},
                              {"state", "noData"},
                              {"creditsExhausted", false},
                              {"notes", Json::array()},
                              {"windows", Json::array()}}}}};
    EXPECT_EQ(read(test::statusReport()), expected) << read(test::statusReport()).dump(2);
}

TEST(StatusJson, withoutAccountsItIsAnEmptyList)
{
    EXPECT_EQ(StatusJson::text({}, StatusOrigin::files, reportedAt, JsonLayout::compact),
              R"({"accounts":[],"schemaVersion":1,"source":"files"})");
}

TEST(StatusJson, aNameThatIsNoTextLosesNothingElse)
{
    StatusReport report = test::statusReport();
    report.accounts[0].name = "\xFFWork";
    EXPECT_EQ(read(report)["accounts"][0]["name"], "�Work");
    EXPECT_EQ(read(report)["accounts"][1]["name"], "Home");
}

TEST(StatusJson, noNameCommandsTheTerminal)
{
    const std::string name = "a\u009b2J\u007f\u202eé…b";
    StatusReport report;
    report.accounts = {test::statusAccount(name, {})};
    const std::string text =
        StatusJson::text(report, StatusOrigin::program, reportedAt, JsonLayout::pretty);
    for (const char* raw : {"\u009b", "\u007f", "\u202e"})
        EXPECT_EQ(text.find(raw), std::string::npos);
    EXPECT_NE(text.find("é…b"), std::string::npos);
    EXPECT_EQ(read(report)["accounts"][0]["name"], name);
}

TEST(StatusJson, compactIsOneLineWhateverTheNamesAre)
{
    StatusReport report = test::statusReport();
    report.accounts[0].name = "a\nb\"\\";
    const auto line =
        StatusJson::text(report, StatusOrigin::program, reportedAt, JsonLayout::compact);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(read(report)["accounts"][0]["name"], "a\nb\"\\");
}

} // namespace
} // namespace vellumor::statusJsonTest
