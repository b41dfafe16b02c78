#include "cli/CommandLine.h"

#include <gtest/gtest.h>

namespace vellumor::commandLineTest {
namespace {

using Form = CommandLine::Form;
using Status = CommandLine::Status;
using Arguments = std::vector<std::string>;

TEST(CommandLine, withoutArgumentsItIsTheProgramItself)
{
    EXPECT_EQ(CommandLine::read({}), CommandLine::Purpose(CommandLine::Desktop{}));
}

TEST(CommandLine, theStatusTakesItsOptionsInAnyOrder)
{
    struct Row {
        Arguments arguments;
        Status status;
    };
    const Row rows[] = {
        {{"status"}, {}},
        {{"status", "--json"}, {.form = Form::json}},
        {{"status", "--json", "--json"}, {.form = Form::json}},
        {{"status", "--watch", "--waybar"}, {.form = Form::waybar, .isWatching = true}},
        {{"status", "--format", "{name}"},
         {.form = Form::fields, .format = "{name}", .separator = "\n"}},
        {{"status", "--format={name}={id}"},
         {.form = Form::fields, .format = "{name}={id}", .separator = "\n"}},
        {{"status", "--watch", "--format", "{name}"},
         {.form = Form::fields, .format = "{name}", .separator = "  ", .isWatching = true}},
        {{"status", "--format", "{name}", "--watch", "--separator="},
         {.form = Form::fields, .format = "{name}", .isWatching = true}},
        {{"status", "--separator", " | ", "--format", ""},
         {.form = Form::fields, .format = "", .separator = " | "}},
        {{"status", "--account", "Work"}, {.account = "Work"}},
        {{"status", "--account=--json"}, {.account = "--json"}},
        {{"status", "--account="}, {.account = ""}},
    };
    for (const auto& [arguments, status] : rows) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        EXPECT_EQ(CommandLine::read(arguments), CommandLine::Purpose(status));
    }
}

TEST(CommandLine, helpAndVersionAreThereOnBothLevels)
{
    for (const Arguments& arguments :
         {Arguments{"--help"}, {"-h"}, {"status", "--help"}, {"status", "--json", "-h"}}) {
        const auto purpose = CommandLine::read(arguments);
        ASSERT_TRUE(std::holds_alternative<CommandLine::Text>(purpose));
        EXPECT_NE(std::get<CommandLine::Text>(purpose).text.find("vellumor status"),
                  std::string::npos);
    }
    for (const Arguments& arguments : {Arguments{"--version"}, {"status", "--version"}}) {
        EXPECT_EQ(CommandLine::read(arguments),
                  CommandLine::Purpose(CommandLine::Text{"Vellumor 1.0.0\n"}));
    }
}

TEST(CommandLine, whatItDoesNotKnowIsAMistakeWithAHint)
{
    const Arguments rows[] = {
        {"statsu"},
        {""},
        {"-platform", "offscreen"},
        {"--json"},
        {"--version", "nonsense"},
        {"--help", "status"},
        {"status", "--jsn"},
        {"status", "Work"},
        {"status", "--json=yes"},
        {"status", "--watch=1"},
        {"status", "--json", "--waybar"},
        {"status", "--format", "{name}", "--json"},
        {"status", "--format"},
        {"status", "--account"},
        {"status", "--format", "{nmae}"},
        {"status", "--separator", ","},
        {"status", "a\nb\033[2J" + std::string(10000, 'x')},
    };
    for (const Arguments& arguments : rows) {
        const auto purpose = CommandLine::read(arguments);
        ASSERT_TRUE(std::holds_alternative<CommandLine::Mistake>(purpose))
            << testing::PrintToString(arguments);
        const auto& text = std::get<CommandLine::Mistake>(purpose).text;
        EXPECT_FALSE(text.empty());
        EXPECT_LT(text.size(), 300U);
        EXPECT_EQ(text.find_first_of("\n\033"), std::string::npos);
    }
}

} // namespace
} // namespace vellumor::commandLineTest
