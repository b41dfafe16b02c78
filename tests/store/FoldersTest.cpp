#include "store/Folders.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

namespace vellumor::foldersTest {

TEST(Folders, withoutVariablesOfTheirOwnTheyLieInTheHomeFolder)
{
    const Folders folders = Folders::fromEnvironment({{"HOME", "/home/a"}});
    EXPECT_EQ(folders.home, "/home/a");
    EXPECT_EQ(folders.data, "/home/a/.local/share");
    EXPECT_EQ(folders.config, "/home/a/.config");
    EXPECT_EQ(folders.vellumor(), "/home/a/.local/share/Vellumor");
    EXPECT_EQ(folders.quorle(), "/home/a/.local/share/Quorle");
    EXPECT_EQ(folders.crashReports(), "/home/a/.local/share/Vellumor/DiagnosticReports");
}

TEST(Folders, aVariableCountsOnlyWhenItIsAbsolute)
{
    struct Row {
        const char* variable;
        const char* data;
        const char* config;
    };
    const Row rows[] = {
        {"/x/y", "/x/y", "/x/y"},
        {"/x/y/", "/x/y", "/x/y"},
        {"/x//", "/x", "/x"},
        {"x/y", "/home/a/.local/share", "/home/a/.config"},
        {"~/x", "/home/a/.local/share", "/home/a/.config"},
        {"", "/home/a/.local/share", "/home/a/.config"},
    };
    for (const auto& [variable, data, config] : rows) {
        SCOPED_TRACE(variable);
        const Folders folders = Folders::fromEnvironment(
            {{"HOME", "/home/a"}, {"XDG_DATA_HOME", variable}, {"XDG_CONFIG_HOME", variable}});
        EXPECT_EQ(folders.data, data);
        EXPECT_EQ(folders.config, config);
    }
}

TEST(Folders, trailingSlashesOfTheHomeFolderGo)
{
    EXPECT_EQ(Folders::fromEnvironment({{"HOME", "/home/a//"}}).home, "/home/a");
    EXPECT_EQ(Folders::fromEnvironment({{"HOME", "/"}}).home, "/");
}

TEST(Folders, withoutAnAbsoluteHomeThePasswordDatabaseIsAsked)
{
    const passwd* entry = ::getpwuid(::getuid());
    const std::string home = entry != nullptr ? entry->pw_dir : "/";
    for (const Environment& environment :
         {Environment{}, Environment{{"HOME", ""}}, Environment{{"HOME", "relative"}}})
        EXPECT_EQ(Folders::fromEnvironment(environment).home, home);
}

// A decomposed home folder on disk has a composed name in the records, but files must not be made
// in a second folder.
TEST(Folders, theHomeFolderIsComposedAndTheFoldersForFilesKeepTheSpellingOfTheDisk)
{
    const Folders folders = Folders::fromEnvironment({{"HOME", "/home/jose\xCC\x81"}});
    EXPECT_EQ(folders.home, "/home/jos\xC3\xA9");
    EXPECT_EQ(folders.data, "/home/jose\xCC\x81/.local/share");
    EXPECT_EQ(folders.config, "/home/jose\xCC\x81/.config");
}

TEST(Folders, linksAreNotResolved)
{
    EXPECT_EQ(Folders::fromEnvironment({{"HOME", "/proc/self/cwd"}}).home, "/proc/self/cwd");
}

} // namespace vellumor::foldersTest
