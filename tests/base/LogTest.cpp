#include "base/Log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace vellumor::logTest {

using namespace std::string_view_literals;

namespace {

std::string errorOutputOf(const std::function<void()>& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Log, aLineIsTheTagInBracketsAndTheText)
{
    EXPECT_EQ(errorOutputOf([] { log(Tag::poller, "tick"); }), "[poller] tick\n");
}

TEST(Log, aLineAboutAnAccountNamesItFirst)
{
    EXPECT_EQ(errorOutputOf([] { log(Tag::pipeline, "Work", "backing off for 300 s"); }),
              "[pipeline] Work: backing off for 300 s\n");
}

TEST(Log, eachPartOfTheProgramHasItsOwnTag)
{
    struct Row {
        Tag tag;
        const char* line;
    };
    const Row rows[] = {
        {Tag::main, "[main] x\n"},
        {Tag::accounts, "[accounts] x\n"},
        {Tag::usage, "[usage] x\n"},
        {Tag::poller, "[poller] x\n"},
        {Tag::stagger, "[stagger] x\n"},
        {Tag::pipeline, "[pipeline] x\n"},
        {Tag::revive, "[revive] x\n"},
        {Tag::fileStore, "[FileStore] x\n"},
        {Tag::sharedAccountsStore, "[SharedAccountsStore] x\n"},
    };
    for (const auto& [tag, line] : rows)
        EXPECT_EQ(errorOutputOf([tag = tag] { log(tag, "x"); }), line);
}

TEST(Log, noNameAndNoTextCanForgeALine)
{
    const std::string_view texts[] = {
        "a\n[main] forged",
        "a\r[main] forged",
        "a\v[main] forged",
        "a\f[main] forged",
        "a\0[main] b"sv,
        "a\x1B[2K[main]",
        "a\xC2\x85[main] forged",
        "a\x7F\x08[main]",
        "a\tb",
        "a\xC2\x9B"
        "2J",
        "a\xE2\x80\xA8[main] forged",
        "a\xE2\x80\xA9[main]",
        "a\xE2\x80\xAE[main]",
        "a\xFF\xFE[main]",
    };
    const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
    for (const std::string_view text : texts) {
        SCOPED_TRACE(text);
        for (const std::string& output : {errorOutputOf([&] { log(Tag::usage, text); }),
                                          errorOutputOf([&] { log(Tag::usage, text, "done"); }),
                                          errorOutputOf([&] { log(Tag::usage, "Work", text); })}) {
            ASSERT_FALSE(output.empty());
            EXPECT_EQ(output.rfind("[usage] ", 0), 0U);
            EXPECT_EQ(std::count_if(output.begin(), output.end(), isControl), 1) << output;
            EXPECT_EQ(output.back(), '\n');
            EXPECT_NE(output.find("\xEF\xBF\xBD"), std::string::npos) << output;
            for (const char* mark :
                 {"\xC2\x85", "\xC2\x9B", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAE", "\xFF"})
                EXPECT_EQ(output.find(mark), std::string::npos) << output;
        }
    }
}

TEST(Log, namesInOtherScriptsStayReadable)
{
    EXPECT_EQ(errorOutputOf([] { log(Tag::accounts, "Büro 東京", "ok"); }),
              "[accounts] Büro 東京: ok\n");
}

} // namespace vellumor::logTest
