#include "platform/linux/LoginShell.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace vellumor::loginShellTest {
namespace {

using test::TempFolder;

struct LoginShellTest : testing::Test {
    TempFolder folder;

    std::string putExecutable(std::string_view name) const
    {
        const std::string path = folder.put(name, "#!/bin/sh\n");
        ::chmod(path.c_str(), 0700);
        return path;
    }
};

TEST_F(LoginShellTest, aShellThatIsKnownByItsNameAndCanBeRunIsTaken)
{
    for (const char* name : {"zsh", "bash", "ksh", "dash", "sh"}) {
        const std::string path = putExecutable(std::string("a b/") + name);
        EXPECT_EQ(LoginShell::firstUsable({path}), path);
        EXPECT_EQ(LoginShell::path({{"SHELL", path}}), path);
    }
}

TEST_F(LoginShellTest, aLinkIsKnownByItsOwnName)
{
    putExecutable("zsh-5.9");
    std::filesystem::create_symlink("zsh-5.9", folder.file("zsh"));
    EXPECT_EQ(LoginShell::firstUsable({folder.file("zsh")}), folder.file("zsh"));
    putExecutable("bash");
    std::filesystem::create_symlink("bash", folder.file("fish"));
    EXPECT_NE(LoginShell::firstUsable({folder.file("fish")}), folder.file("fish"));
}

TEST_F(LoginShellTest, anythingElseLeavesItToTheNext)
{
    const std::string next = putExecutable("next/bash");
    std::filesystem::create_symlink("nowhere", folder.file("sh"));
    const std::string rows[] = {
        "",
        "zsh",
        "bin/zsh",
        "./zsh",
        "/",
        folder.file("missing/zsh"),
        folder.put("plain/zsh", "#!/bin/sh\n"),
        folder.makeFolder("folder/zsh"),
        folder.file("sh"),
        putExecutable("fish"),
        putExecutable("csh"),
        putExecutable("zsh5"),
        putExecutable("rbash"),
        putExecutable("ZSH"),
        putExecutable("zsh/nologin"),
        putExecutable("bash "),
    };
    for (const std::string& path : rows)
        EXPECT_EQ(LoginShell::firstUsable({path, next}), next) << path;
}

TEST_F(LoginShellTest, theFirstThatCanBeTakenCounts)
{
    const std::string zsh = putExecutable("zsh");
    const std::string bash = putExecutable("bash");
    EXPECT_EQ(LoginShell::firstUsable({zsh, bash}), zsh);
    EXPECT_EQ(LoginShell::firstUsable({bash, zsh}), bash);
}

TEST_F(LoginShellTest, whereNoneCanBeTakenItIsTheSystemsOwn)
{
    EXPECT_EQ(LoginShell::firstUsable({}), "/bin/zsh");
    EXPECT_EQ(LoginShell::firstUsable({"/bin/false", "/usr/sbin/nologin"}), "/bin/zsh");
}

TEST_F(LoginShellTest, theDatabaseIsAskedWhereTheVariableDoesNotSay)
{
    const passwd* const entry = ::getpwuid(::getuid());
    const std::string inDatabase = entry == nullptr ? "" : entry->pw_shell;
    const std::string expected = LoginShell::firstUsable({inDatabase});
    for (const Environment& environment :
         {Environment{}, Environment{{"SHELL", ""}}, Environment{{"SHELL", "/bin/false"}}})
        EXPECT_EQ(LoginShell::path(environment), expected);
}

} // namespace
} // namespace vellumor::loginShellTest
