#include "usage/TokenReviver.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <vector>

namespace vellumor::tokenReviverCommandTest {
namespace {

using test::TempFolder;
using Texts = std::vector<std::string>;

const std::string home = "/home/me";

TEST(TokenReviverCommand, isOneLineForTheShell)
{
    struct Row {
        const char* binary;
        const char* configDir;
        const char* command;
    };
    const Row rows[] = {
        {"/opt/x/claude", "/home/me/.claude-work",
         R"(CLAUDE_CONFIG_DIR='/home/me/.claude-work' PATH='/opt/x':"$PATH" '/opt/x/claude' )"
         R"(-p '/usage' >/dev/null 2>&1)"},
        {"/opt/x/claude", "/h/it's",
         R"(CLAUDE_CONFIG_DIR='/h/it'\''s' PATH='/opt/x':"$PATH" '/opt/x/claude' )"
         R"(-p '/usage' >/dev/null 2>&1)"},
        {"/it's/a b/claude", "/h/''",
         R"(CLAUDE_CONFIG_DIR='/h/'\'''\''' PATH='/it'\''s/a b':"$PATH" '/it'\''s/a b/claude' )"
         R"(-p '/usage' >/dev/null 2>&1)"},
        // The default directory has to be named by no variable.
        {"/opt/x/claude", "/home/me/.claude",
         R"(unset CLAUDE_CONFIG_DIR; PATH='/opt/x':"$PATH" '/opt/x/claude' )"
         R"(-p '/usage' >/dev/null 2>&1)"},
        // A program at the top has the top for a folder, a bare name has none.
        {"/claude", "/home/me/.claude",
         R"(unset CLAUDE_CONFIG_DIR; PATH='/':"$PATH" '/claude' -p '/usage' >/dev/null 2>&1)"},
        {"claude", "/home/me/.claude",
         R"(unset CLAUDE_CONFIG_DIR; 'claude' -p '/usage' >/dev/null 2>&1)"},
    };
    for (const auto& [binary, configDir, command] : rows)
        EXPECT_EQ(TokenReviver::usageCommand(binary, configDir, home), command);
}

// A program that notes what it was given, each text ended by a zero byte, in the file RECORD.
constexpr const char* recorder = R"(#!/bin/sh
printf '%s\0' "$0" "$#" "$@" "${CLAUDE_CONFIG_DIR-unset}" "$PATH" >"$RECORD"
echo noise
echo noise >&2
)";

struct TokenReviverCommandInAShellTest : testing::Test {
    TempFolder folder;

    // What the program at `binary` was given by the command, read by a real shell.
    [[nodiscard]] Texts given(const std::string& binary, const std::string& configDir) const
    {
        const std::string record = folder.put("record", "");
        const std::string command = "RECORD=" + record +
                                    " PATH=/bin:/usr/bin CLAUDE_CONFIG_DIR=/elsewhere; " +
                                    "export RECORD PATH CLAUDE_CONFIG_DIR\n" +
                                    TokenReviver::usageCommand(binary, configDir, home);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = std::system(command.c_str());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(status, 0);
        return split(test::contentsOf(record));
    }
    [[nodiscard]] static Texts split(const std::string& bytes)
    {
        Texts texts;
        for (std::size_t at = 0; at < bytes.size();) {
            const auto end = bytes.find('\0', at);
            texts.push_back(bytes.substr(at, end - at));
            at = end + 1;
        }
        return texts;
    }
    [[nodiscard]] std::string putRecorder(const std::string& parent) const
    {
        const std::string path = folder.put(parent + "/claude", recorder);
        ::chmod(path.c_str(), 0700);
        return path;
    }
};

const char* const names[] = {
    "plain",
    "a b  c ",
    "it's",
    "'",
    "''' '",
    "\"double\"",
    "new\nline",
    "\n",
    "tab\tand\rreturn",
    "$HOME",
    "$(echo hi)",
    "`echo hi`",
    "back\\slash\\",
    "-dash",
    "--",
    "~",
    "*?[a]{b,c}",
    "!history!",
    "#comment",
    ";&|<>()",
    "equals=sign",
    "co:lon",
    "caf\u00E9",
    "cafe\u0301",
    "\u6771\u4EAC",
    "latin-\xE9",
    "\x01\x7F",
};

TEST_F(TokenReviverCommandInAShellTest, theProgramIsRunUnderItsOwnPathWhateverIsInIt)
{
    for (const char* name : names) {
        SCOPED_TRACE(name);
        const std::string binary = putRecorder(name);
        EXPECT_EQ(given(binary, "/h/x"), (Texts{binary, "2", "-p", "/usage", "/h/x",
                                                folder.file(name) + ":/bin:/usr/bin"}));
    }
}

TEST_F(TokenReviverCommandInAShellTest, theDirectoryReachesTheProgramWhateverIsInIt)
{
    const std::string binary = putRecorder("bin");
    for (const char* name : names) {
        SCOPED_TRACE(name);
        const std::string configDir = folder.file(name);
        EXPECT_EQ(given(binary, configDir), (Texts{binary, "2", "-p", "/usage", configDir,
                                                   folder.file("bin") + ":/bin:/usr/bin"}));
    }
}

TEST_F(TokenReviverCommandInAShellTest, forTheDefaultDirectoryTheVariableIsTakenAway)
{
    const std::string binary = putRecorder("bin");
    EXPECT_EQ(given(binary, "/home/me/.claude"),
              (Texts{binary, "2", "-p", "/usage", "unset", folder.file("bin") + ":/bin:/usr/bin"}));
}

} // namespace
} // namespace vellumor::tokenReviverCommandTest
