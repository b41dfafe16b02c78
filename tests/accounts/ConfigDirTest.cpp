#include "accounts/ConfigDir.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::configDirTest {
namespace {

const std::string home = "/home/me";
const std::string composedName = "/srv/.claude-\u00E9";
const std::string decomposedName = "/srv/.claude-e\u0301";

TEST(ConfigDir, aPathHasOneSpelling)
{
    const struct {
        std::string path;
        std::string canonical;
    } rows[] = {
        {"/srv/.claude-work", "/srv/.claude-work"},
        {"~", "/home/me"},
        {"~/", "/home/me"},
        {"~/.claude", "/home/me/.claude"},
        {"~/.claude-work///", "/home/me/.claude-work"},
        {"/srv/.claude-work/", "/srv/.claude-work"},
        {"/", "/"},
        {"///", "/"},
        {"", ""},
        // Only a tilde that stands alone is the home folder.
        {"~you/.claude", "~you/.claude"},
        {"/srv/~/.claude", "/srv/~/.claude"},
        // What stands inside is as it was given: the credential's name is a hash of this text.
        {"/srv//a/../.claude", "/srv//a/../.claude"},
        {"  ", "  "},
        {decomposedName, composedName},
        {composedName, composedName},
        {decomposedName + "/", composedName},
    };
    for (const auto& [path, canonical] : rows) {
        SCOPED_TRACE(path);
        EXPECT_EQ(ConfigDir::canonical(path, home), canonical);
        EXPECT_EQ(ConfigDir::canonical(canonical, home), canonical);
    }
}

TEST(ConfigDir, aDecomposedHomeFolderIsComposedToo)
{
    EXPECT_EQ(ConfigDir::canonical("~/.claude", "/home/e\u0301va"), "/home/\u00E9va/.claude");
}

TEST(ConfigDir, whatIsNotUtf8HasNoSpelling)
{
    EXPECT_EQ(ConfigDir::canonical("/srv/.claude-\xFF", home), "");
    EXPECT_EQ(ConfigDir::canonical("/srv/.claude-\xC3", home), "");
    EXPECT_EQ(ConfigDir::canonical("~/\xED\xA0\x80", home), "");
}

TEST(ConfigDir, aLinkIsNotResolved)
{
    const test::TempFolder folder;
    const std::string link = folder.file("link");
    std::filesystem::create_directory_symlink(folder.makeFolder("real"), link);
    EXPECT_EQ(ConfigDir::canonical(link, home), link);
}

TEST(ConfigDir, aNameIsDerivedFromTheLastComponent)
{
    const struct {
        std::string path;
        std::string name;
    } rows[] = {
        {"/home/me/.claude", "Default"},
        {"/home/me/.claude-work", "Work"},
        {"/home/me/.claude-WORK", "Work"},
        {"/home/me/.claude-my-old_work2go", "My-Old_Work2go"},
        {"/home/me/.claude-a b.c", "A B.C"},
        // Every occurrence goes, wherever it stands.
        {"/home/me/.claude-.claude-work", "Work"},
        {"/home/me/team.claude-work", "Teamwork"},
        {"/home/me/.claude-", ".claude-"},
        {"/home/me/.claude-.claude-", ".claude-.claude-"},
        {"/home/.claude-x/sub", "Sub"},
        {"/home/me/config", "Config"},
        {"config", "Config"},
        {"/home/me/.claude-\u00E9cole", "\u00C9cole"},
    };
    for (const auto& [path, name] : rows) {
        SCOPED_TRACE(path);
        EXPECT_EQ(ConfigDir::derivedName(path), name);
    }
}

} // namespace
} // namespace vellumor::configDirTest
