#include "platform/linux/AutostartFile.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

namespace vellumor::autostartFileTest {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr const char* file = "autostart/dev.quorle.vellumor.desktop";

struct AutostartFileTest : testing::Test {
    test::TempFolder config;
    AutostartFile login{config.path(), "/usr/bin/vellumor"};

    [[nodiscard]] std::string text() const { return test::contentsOf(login.path()); }
};

TEST_F(AutostartFileTest, liesInTheAutostartFolderUnderTheProgramsName)
{
    EXPECT_EQ(login.path(), config.file(file));
}

TEST_F(AutostartFileTest, isOffWithoutAFileAndOnOnceSwitchedOn)
{
    EXPECT_FALSE(login.isEnabled());
    EXPECT_EQ(login.setEnabled(true), std::nullopt);
    EXPECT_TRUE(login.isEnabled());
    EXPECT_NE(text().find("\nExec=/usr/bin/vellumor\n"), std::string::npos);
    EXPECT_EQ(test::namesIn(config.file("autostart")), Names{"dev.quorle.vellumor.desktop"});
    EXPECT_EQ(login.setEnabled(false), std::nullopt);
    EXPECT_FALSE(login.isEnabled());
    EXPECT_EQ(test::namesIn(config.file("autostart")), Names{});
}

TEST_F(AutostartFileTest, switchedOffWithoutAFileNothingIsMade)
{
    EXPECT_EQ(login.setEnabled(false), std::nullopt);
    EXPECT_EQ(test::namesIn(config.path()), Names{});
}

TEST_F(AutostartFileTest, foldersThatAreMissingAreMadeForTheUserAlone)
{
    const mode_t before = ::umask(0);
    AutostartFile deep(config.file("a/b"), "/usr/bin/vellumor");
    EXPECT_EQ(deep.setEnabled(true), std::nullopt);
    ::umask(before);
    for (const char* made : {"a", "a/b", "a/b/autostart"})
        EXPECT_EQ(test::modeOf(config.file(made)), 0700U) << made;
    EXPECT_EQ(test::modeOf(deep.path()), 0644U);
}

TEST_F(AutostartFileTest, modesOfWhatIsThereAreLeftAlone)
{
    config.put(file, "[Desktop Entry]\nX-Mine=1\n");
    fs::permissions(config.path(), fs::perms(0755));
    fs::permissions(config.file("autostart"), fs::perms(0751));
    fs::permissions(login.path(), fs::perms(0640));
    for (const bool on : {true, false}) {
        EXPECT_EQ(login.setEnabled(on), std::nullopt);
        EXPECT_EQ(test::modeOf(config.path()), 0755U);
        EXPECT_EQ(test::modeOf(config.file("autostart")), 0751U);
        EXPECT_EQ(test::modeOf(login.path()), 0640U);
    }
}

TEST_F(AutostartFileTest, followsWhatOthersMakeOfTheFile)
{
    config.put(file, "[Desktop Entry]\nHidden=true\n");
    EXPECT_FALSE(login.isEnabled());
    config.put(file, "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(login.isEnabled());
    config.put(file, "[Desktop Entry]\nExec=/somewhere/else\n");
    EXPECT_TRUE(login.isEnabled());
}

TEST_F(AutostartFileTest, whatSomebodyWroteByHandOutlivesTheSwitch)
{
    config.put(file, "[Desktop Entry]\nExec=vellumor\nX-GNOME-Autostart-Delay=30\n");
    EXPECT_EQ(login.setEnabled(false), std::nullopt);
    EXPECT_FALSE(login.isEnabled());
    EXPECT_EQ(login.setEnabled(true), std::nullopt);
    EXPECT_TRUE(login.isEnabled());
    EXPECT_NE(text().find("\nX-GNOME-Autostart-Delay=30\n"), std::string::npos);
}

TEST_F(AutostartFileTest, aLinkStaysOneAndWhatItLeadsToIsWritten)
{
    const std::string real = config.put("dotfiles/entry", "[Desktop Entry]\nX-Mine=1\n");
    config.makeFolder("autostart");
    fs::create_symlink(real, login.path());
    EXPECT_EQ(login.setEnabled(true), std::nullopt);
    EXPECT_TRUE(fs::is_symlink(login.path()));
    EXPECT_NE(test::contentsOf(real).find("Exec=/usr/bin/vellumor"), std::string::npos);
    EXPECT_EQ(test::namesIn(config.file("dotfiles")), Names{"entry"});
}

TEST_F(AutostartFileTest, aLinkThatLeadsNowhereIsReplaced)
{
    config.makeFolder("autostart");
    fs::create_symlink(config.file("nowhere"), login.path());
    EXPECT_FALSE(login.isEnabled());
    EXPECT_EQ(login.setEnabled(true), std::nullopt);
    EXPECT_TRUE(login.isEnabled());
}

TEST_F(AutostartFileTest, whatCannotBeReadIsOffAndNeverWaitedFor)
{
    config.makeFolder("autostart");
    ASSERT_EQ(::mkfifo(login.path().c_str(), 0600), 0);
    EXPECT_FALSE(login.isEnabled());
    fs::remove(login.path());
    config.makeFolder(file);
    EXPECT_FALSE(login.isEnabled());
}

TEST(OwnProgram, isTheAppImageThatThisRunsOutOfElseTheExecutable)
{
    struct Row {
        Environment environment;
        std::string running;
        std::string program;
    };
    const std::string mounted = "/tmp/.mount_VelXYZ/usr/bin/vellumor";
    const std::string installed = "/usr/bin/vellumor";
    const Row rows[] = {
        {{}, installed, installed},
        {{}, installed + " (deleted)", installed},
        {{{"APPIMAGE", "/home/a/Vellumor.AppImage"}}, mounted, "/home/a/Vellumor.AppImage"},
        {{{"APPIMAGE", "/home/a/Vellumor.AppImage"}, {"APPDIR", "/tmp/.mount_VelXYZ"}},
         mounted,
         "/home/a/Vellumor.AppImage"},
        // Started from a terminal that is an AppImage itself.
        {{{"APPIMAGE", "/home/a/Editor.AppImage"}, {"APPDIR", "/tmp/.mount_Editor"}},
         installed,
         installed},
        {{{"APPIMAGE", "/home/a/Editor.AppImage"}, {"APPDIR", "/tmp/.mount_Vel"}},
         mounted,
         mounted},
        {{{"APPIMAGE", ""}}, installed, installed},
        {{{"APPIMAGE", "Vellumor.AppImage"}}, mounted, mounted}, // not absolute
    };
    for (const Row& row : rows)
        EXPECT_EQ(ownProgram(row.environment, row.running), row.program);
}

TEST(OwnProgram, whatPeopleStartIsTheSmallProgramWhereBothAreInstalled)
{
    const test::TempFolder place;
    const std::string own = place.put("usr/libexec/vellumor/vellumor", "");
    EXPECT_EQ(programToStart(own), own); // alone, as in a build folder
    const std::string front = place.put("usr/bin/vellumor", "");
    EXPECT_EQ(programToStart(own), own); // nobody may run it
    fs::permissions(front, fs::perms::owner_all);
    EXPECT_EQ(programToStart(own), front);
    EXPECT_EQ(programToStart("/home/a/Vellumor.AppImage"), "/home/a/Vellumor.AppImage");
}

TEST(OwnProgram, ofThisTestIsThisTest)
{
    const std::string program = ownProgram({});
    EXPECT_TRUE(fs::is_regular_file(program)) << program;
    EXPECT_NE(program.find("vellumor_platform_linux_login_tests"), std::string::npos);
}

} // namespace
} // namespace vellumor::autostartFileTest
