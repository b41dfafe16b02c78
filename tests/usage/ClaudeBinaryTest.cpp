#include "usage/ClaudeBinary.h"

#include "store/DiskPath.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

namespace vellumor::claudeBinaryTest {
namespace {

using Paths = std::vector<std::string>;
using test::TempFolder;

TEST(ClaudeBinary, theNewestVersionComesFirst)
{
    const std::string huge(40, '9');
    const std::string hugeAndOneMore = "1" + std::string(40, '0');
    const std::string zeros(40, '0');
    const Paths rows[] = {
        {"v18.12.1", "v18.1.0", "v9.2.0"},
        {"v10", "v9", "v1"},
        {"1.0.10", "1.0.9", "1.0.1"},
        {"2.0", "1.9.9.9"},
        // One of 40 digits is larger than any that a machine counts with.
        {"v" + hugeAndOneMore, "v" + huge, "v18446744073709551616", "v18446744073709551615", "v1"},
        {"v" + huge + "8.1", "v" + huge + "7.2", "v" + huge + "7.1"},
        {"v" + zeros + "3", "v2", "v" + zeros + "1"},
        // A missing number counts as 0.
        {"v1.0.1", "v1.0.0", "v1.0", "v1"},
        {"v1.1", "v1"},
        {"v0.0.1", "vz", "v0.0", "v"},
        // With equal numbers the later text comes first.
        {"v2", "v02", "v002", "v1"},
        {"zeta-1.2", "alpha-1.2"},
        {"1.2-linux", "1.2-arm", "1-2"},
        {"node", "iojs", "Node", ""},
        // Whatever is no digit parts two numbers.
        {"claude-code-1.0.10-linux-x64", "claude-code-1.0.9-linux-x64"},
        {"1a2b4", "1.2.3", "1 2 2"},
        {"v1.\u0663", "v1.", "v1"}, // digits of other scripts are none
        {"v-5", "v-4"},             // a sign is none
    };
    for (const Paths& sorted : rows) {
        SCOPED_TRACE(sorted.front());
        Paths names = sorted;
        std::sort(names.begin(), names.end());
        do
            EXPECT_EQ(ClaudeBinary::versionSortedDescending(names), sorted);
        while (std::next_permutation(names.begin(), names.end()));
    }
}

TEST(ClaudeBinary, sortingKeepsEveryName)
{
    EXPECT_EQ(ClaudeBinary::versionSortedDescending({}), Paths{});
    EXPECT_EQ(ClaudeBinary::versionSortedDescending({"v1", "v2", "v1", "", "v2", ""}),
              (Paths{"v2", "v2", "v1", "v1", "", ""}));
}

ClaudeBinary::Hints allHints()
{
    ClaudeBinary::Hints hints;
    hints.override = "/override/claude";
    hints.preference = "/preference/claude";
    hints.whichPath = "/which/claude";
    hints.persisted = "/persisted/claude";
    hints.home = "/home/me";
    hints.nvmPaths = {"/n/v9.2.0/claude", "/n/v18.12.1/claude", "/n/v18.1.0/claude"};
    hints.bundledPaths = {"/x/claude-code-1.0.9/claude", "/x/claude-code-1.0.10/claude"};
    return hints;
}

TEST(ClaudeBinary, candidatesComeInTheOrderOfTheTrustPutInThem)
{
    EXPECT_EQ(ClaudeBinary::candidates(allHints()), (Paths{
                                                        "/override/claude",
                                                        "/preference/claude",
                                                        "/which/claude",
                                                        "/persisted/claude",
                                                        "/opt/homebrew/bin/claude",
                                                        "/usr/local/bin/claude",
                                                        "/home/me/.local/bin/claude",
                                                        "/home/me/.claude/local/claude",
                                                        "/n/v18.12.1/claude",
                                                        "/n/v18.1.0/claude",
                                                        "/n/v9.2.0/claude",
                                                        "/x/claude-code-1.0.10/claude",
                                                        "/x/claude-code-1.0.9/claude",
                                                    }));
}

TEST(ClaudeBinary, whatIsAbsentOrEmptyIsNoCandidate)
{
    const Paths fixed = {"/opt/homebrew/bin/claude", "/usr/local/bin/claude",
                         "/home/me/.local/bin/claude", "/home/me/.claude/local/claude"};
    ClaudeBinary::Hints hints;
    hints.home = "/home/me";
    EXPECT_EQ(ClaudeBinary::candidates(hints), fixed);
    hints.override = hints.preference = hints.whichPath = hints.persisted = "";
    hints.nvmPaths = hints.bundledPaths = {"", ""};
    EXPECT_EQ(ClaudeBinary::candidates(hints), fixed);
}

TEST(ClaudeBinary, aPathThatSeveralHintsGiveIsTriedOnceAtItsBestPlace)
{
    ClaudeBinary::Hints hints = allHints();
    hints.override = "/usr/local/bin/claude";
    hints.whichPath = hints.persisted = hints.preference;
    hints.nvmPaths = {"/home/me/.local/bin/claude", "/n/v1/claude", "/n/v1/claude"};
    hints.bundledPaths = {"/n/v1/claude"};
    EXPECT_EQ(
        ClaudeBinary::candidates(hints),
        (Paths{"/usr/local/bin/claude", "/preference/claude", "/opt/homebrew/bin/claude",
               "/home/me/.local/bin/claude", "/home/me/.claude/local/claude", "/n/v1/claude"}));
}

struct ClaudeBinaryOnDiskTest : testing::Test {
    TempFolder home;

    [[nodiscard]] std::string putExecutable(std::string_view name) const
    {
        const std::string path = home.put(name, "#!/bin/sh\n");
        ::chmod(path.c_str(), 0700);
        return path;
    }
};

TEST_F(ClaudeBinaryOnDiskTest, everyNodeOfTheVersionManagerGivesAPathNewestFirst)
{
    const std::string node = home.makeFolder(".nvm/versions/node");
    for (const char* version : {"v9.2.0", "v18.1.0", "v18.12.1"})
        home.makeFolder(std::string(".nvm/versions/node/") + version);
    EXPECT_EQ(ClaudeBinary::globbedNvmPaths(home.path()),
              (Paths{node + "/v18.12.1/bin/claude", node + "/v18.1.0/bin/claude",
                     node + "/v9.2.0/bin/claude"}));
}

TEST_F(ClaudeBinaryOnDiskTest, ofTheEditorsExtensionsThoseOfClaudeCodeGiveAPathNewestFirst)
{
    const std::string extensions = home.makeFolder(".vscode/extensions");
    for (const char* name :
         {"anthropic.claude-code-1.0.9", "anthropic.claude-code-1.0.10-linux-x64",
          "anthropic.claude-codex-3.0.0", "anthropic.claude-3.0.0", "other.claude-code-9.9.9",
          "not-anthropic.claude-code-9.9.9"})
        home.makeFolder(std::string(".vscode/extensions/") + name);
    home.put(".vscode/extensions/extensions.json", "[]");
    const std::string inside = "/resources/native-binary/claude";
    EXPECT_EQ(ClaudeBinary::globbedBundledPaths(home.path()),
              (Paths{extensions + "/anthropic.claude-code-1.0.10-linux-x64" + inside,
                     extensions + "/anthropic.claude-code-1.0.9" + inside}));
}

TEST_F(ClaudeBinaryOnDiskTest, aFolderThatCannotBeListedGivesNoPath)
{
    EXPECT_EQ(ClaudeBinary::globbedNvmPaths(home.path()), Paths{});
    EXPECT_EQ(ClaudeBinary::globbedBundledPaths(home.path()), Paths{});
    home.put(".nvm/versions/node", "a file");
    home.put(".vscode/extensions", "a file");
    EXPECT_EQ(ClaudeBinary::globbedNvmPaths(home.path()), Paths{});
    EXPECT_EQ(ClaudeBinary::globbedBundledPaths(home.path()), Paths{});
}

TEST_F(ClaudeBinaryOnDiskTest, aRegularFileThatMayBeRunIsExecutableAlsoThroughALink)
{
    const std::string program = putExecutable("claude");
    std::filesystem::create_symlink("claude", home.file("link"));
    EXPECT_TRUE(DiskPath::isProgram(program));
    EXPECT_TRUE(DiskPath::isProgram(home.file("link")));
    EXPECT_TRUE(DiskPath::isProgram(putExecutable("a b/\u00E9 'x'\n$y/claude")));
}

TEST_F(ClaudeBinaryOnDiskTest, nothingElseIsExecutable)
{
    const std::string program = putExecutable("claude");
    std::filesystem::create_symlink("nowhere", home.file("dangling"));
    std::filesystem::create_symlink("loop", home.file("loop"));
    ASSERT_EQ(::mkfifo(home.file("pipe").c_str(), 0700), 0);
    const std::string rows[] = {
        home.put("plain", "#!/bin/sh\n"),
        home.makeFolder("folder"),
        home.file("missing"),
        home.file("dangling"),
        home.file("loop"),
        home.file("pipe"),
        program + "/",
        std::filesystem::relative(program).string(),
        "claude",
        "sh", // what is on the search path, too
        "alias claude='" + program + "'",
        " " + program,
        program + "\n" + program,
        program + std::string("\0x", 2), // the system would see its beginning
        "~/claude",
        "",
    };
    for (const std::string& path : rows)
        EXPECT_FALSE(DiskPath::isProgram(path)) << path;
}

} // namespace
} // namespace vellumor::claudeBinaryTest
