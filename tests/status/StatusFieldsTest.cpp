#include "status/StatusFields.h"

#include "status/StatusTesting.h"

#include <gtest/gtest.h>

namespace vellumor::statusFieldsTest {
namespace {

using test::reportedAt;

std::string text(const std::string& format, const StatusReport& report = test::statusReport())
{
    return StatusFields::text(report.only("Work"), format, "|", reportedAt);
}

TEST(StatusFields, eachFieldStandsForWhatItsHelpSays)
{
    struct Row {
        const char* format;
        const char* text;
    };
    const Row rows[] = {
        {"", ""},
        {"plain", "plain"},
        {"{name}", "Work"},
        {"{id}", "Work-id"},
        {"{state}", "ok"},
        {"{session}", "62%"},
        {"{session.reset}", "2h 14m"},
        {"{weekly}", "91%"},
        {"{weekly.reset}", "3d 2h"},
        {"{worst}", "91%"},
        {"{worst.title}", "Weekly"},
        {"{worst.reset}", "3d 2h"},
        {"{forecast}", "↗ Weekly on pace to hit the limit ~15:05"},
        {"{credits}", "Usage credits · €12.50 of €50.00"},
        {"{age}", "2m ago"},
        {"{note}", "Offline — showing last update"},
        {"{name}: {session}/{weekly}!", "Work: 62%/91%!"},
        {"{{{name}}}", "{Work}"},
    };
    for (const auto& [format, expected] : rows) {
        SCOPED_TRACE(format);
        EXPECT_EQ(StatusFields::mistake(format), std::nullopt);
        EXPECT_EQ(text(format), expected);
        const std::string name(format);
        if (name.starts_with('{') && name.find("{", 1) == std::string::npos) {
            EXPECT_NE(StatusFields::help().find("  " + name + " "), std::string::npos);
        }
    }
}

TEST(StatusFields, whatMeansNothingIsNamed)
{
    struct Row {
        const char* format;
        const char* mistake;
    };
    const Row rows[] = {{"{nmae}", "{nmae}"},
                        {"{}", "{}"},
                        {"{name", "{"},
                        {"a } b", "}"},
                        {"{name}}", "}"},
                        {"{{{bad}}}", "{bad}"},
                        {"{session.}", "{session.}"}};
    for (const auto& [format, mistake] : rows) {
        SCOPED_TRACE(format);
        EXPECT_EQ(StatusFields::mistake(format), mistake);
    }
}

TEST(StatusFields, ofAnAccountOfWhichNothingIsKnownFieldsAreEmpty)
{
    EXPECT_EQ(StatusFields::text(test::statusReport().only("Home"),
                                 "[{session}{weekly}{worst}{worst.title}{worst.reset}{age}{note}]",
                                 "|", reportedAt),
              "[]");
}

TEST(StatusFields, accountsStandApartByWhatWasAskedFor)
{
    const auto report = test::statusReport();
    EXPECT_EQ(StatusFields::text(report, "{name}", "|", reportedAt), "Work|Home");
    EXPECT_EQ(StatusFields::text(report, "{name}", "\n", reportedAt), "Work\nHome");
    EXPECT_EQ(StatusFields::text({}, "{name}", "|", reportedAt), "");
}

TEST(StatusFields, aNameCannotBreakTheLineOrTheTerminal)
{
    StatusReport report = test::statusReport();
    report.accounts[0].name = "a\nb\033[31m{id}";
    report.accounts.resize(1);
    EXPECT_EQ(StatusFields::text(report, "{name}", "|", reportedAt), "a�b�[31m{id}");
}

} // namespace
} // namespace vellumor::statusFieldsTest
