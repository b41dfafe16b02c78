#include "platform/linux/LinuxDesktopActions.h"

#include "async/LiveClock.h"
#include "platform/linux/desktop/FakeFileManager.h"
#include "platform/linux/desktop/FakePrograms.h"
#include "support/BusTesting.h"

#include <QCoroCore>

#include <filesystem>

namespace vellumor::linuxDesktopActionsTest {
namespace {

using namespace std::chrono_literals;
using test::FakeFileManager;
using Calls = std::vector<std::string>;
using Answer = FakeFileManager::Answer;

struct LinuxDesktopActionsTest : test::BusTest {
    test::FakePrograms programs{folder};
    LiveClock clock;
    Worker worker;
    LinuxDesktopActions actions{clock, worker, programs.environment(), client, 20s};

    bool show(const std::string& path) { return QCoro::waitFor(actions.showFolder(path)); }
    bool show(const std::string& path, QDBusConnection on, std::chrono::milliseconds limit)
    {
        LinuxDesktopActions other(clock, worker, programs.environment(), std::move(on), limit);
        return QCoro::waitFor(other.showFolder(path));
    }
};

TEST_F(LinuxDesktopActionsTest, theTerminalIsTheDesktopsOwnElseTheDistributions)
{
    EXPECT_FALSE(QCoro::waitFor(actions.openTerminal()));
    programs.put("x-terminal-emulator", "echo y > " + folder.file("emulator"));
    EXPECT_TRUE(QCoro::waitFor(actions.openTerminal()));
    EXPECT_EQ(test::contentsOf(folder.file("emulator")), "y\n");
    std::filesystem::remove(folder.file("emulator"));
    programs.put("xdg-terminal-exec", "echo x > " + folder.file("exec"));
    EXPECT_TRUE(QCoro::waitFor(actions.openTerminal()));
    EXPECT_EQ(test::contentsOf(folder.file("exec")), "x\n");
    EXPECT_EQ(test::contentsOf(folder.file("emulator")), "");
}

TEST_F(LinuxDesktopActionsTest, aTerminalOfTheDesktopThatFindsNoneIsFollowedByTheDistributions)
{
    programs.put("xdg-terminal-exec", "exit 1");
    EXPECT_FALSE(QCoro::waitFor(actions.openTerminal()));
    programs.put("x-terminal-emulator");
    EXPECT_TRUE(QCoro::waitFor(actions.openTerminal()));
}

TEST_F(LinuxDesktopActionsTest, aFolderIsShownByTheFileManager)
{
    const FakeFileManager manager(server);
    programs.put("xdg-open");
    const std::string path = folder.makeFolder("reports");
    EXPECT_TRUE(show(path));
    EXPECT_EQ(manager.calls(), Calls{"ShowFolders file://" + path + " ''"});
    EXPECT_EQ(programs.note("xdg-open"), "");
}

TEST_F(LinuxDesktopActionsTest, aFileIsShownInItsFolder)
{
    const FakeFileManager manager(server);
    const std::string path = folder.put("reports/one.ips", "");
    EXPECT_TRUE(show(path));
    EXPECT_EQ(manager.calls(), Calls{"ShowItems file://" + path + " ''"});
}

TEST_F(LinuxDesktopActionsTest, whereNothingIsTheNearestFolderAboveIsShown)
{
    const FakeFileManager manager(server);
    EXPECT_TRUE(show(folder.file("none/of/this")));
    EXPECT_TRUE(show(folder.file("none")));
    EXPECT_TRUE(show("/no such folder/a"));
    EXPECT_TRUE(show("/no such folder"));
    EXPECT_TRUE(show("/"));
    const std::string here = "ShowFolders file://" + folder.path() + " ''";
    const std::string root = "ShowFolders file:/// ''";
    EXPECT_EQ(manager.calls(), (Calls{here, here, root, root, root}));
}

TEST_F(LinuxDesktopActionsTest, anAddressIsThePathsVeryBytes)
{
    const FakeFileManager manager(server);
    const std::pair<const char*, const char*> rows[] = {
        {"a b", "a%20b"},
        {"100%", "100%25"},
        {"j\xc3\xb6rg", "j%C3%B6rg"},
        {"\xff", "%FF"},
        {"a#b?c", "a%23b%3Fc"},
        {"x\"'y", "x%22%27y"},
        {"line\nend", "line%0Aend"},
        {"A-z_0.9~", "A-z_0.9~"},
        {"c:\\d", "c%3A%5Cd"},
    };
    Calls expected;
    for (const auto& [name, text] : rows) {
        EXPECT_TRUE(show(folder.makeFolder(name)));
        expected.push_back("ShowFolders file://" + folder.path() + "/" + text + " ''");
    }
    EXPECT_EQ(manager.calls(), expected);
}

TEST_F(LinuxDesktopActionsTest, withoutAFileManagerOnTheBusTheDefaultProgramIsTaken)
{
    const std::string path = folder.makeFolder("reports");
    EXPECT_FALSE(show(path));
    programs.put("gio");
    EXPECT_TRUE(show(path));
    EXPECT_EQ(programs.note("gio"), "open\n" + path + "\n");
    programs.put("xdg-open");
    EXPECT_TRUE(show(folder.put("reports/one.ips", "")));
    EXPECT_EQ(programs.note("xdg-open"), path + "\n"); // a file would be opened, not shown
}

TEST_F(LinuxDesktopActionsTest, aFileManagerThatRefusesOrHangsIsGivenUp)
{
    programs.put("xdg-open");
    const std::string path = folder.makeFolder("reports");
    for (const Answer answer : {Answer::refuses, Answer::owes}) {
        const FakeFileManager manager(server, answer);
        std::filesystem::remove(folder.file("xdg-open.note"));
        EXPECT_TRUE(show(path, client, 200ms));
        EXPECT_EQ(manager.calls().size(), 1U);
        EXPECT_EQ(programs.note("xdg-open"), path + "\n");
    }
}

TEST_F(LinuxDesktopActionsTest, withoutABusTheDefaultProgramIsTaken)
{
    programs.put("xdg-open");
    const QDBusConnection none = QDBusConnection::connectToBus(
        QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("no bus"));
    EXPECT_TRUE(show(folder.path(), none, 20s));
    EXPECT_EQ(programs.note("xdg-open"), folder.path() + "\n");
    QDBusConnection::disconnectFromBus(QStringLiteral("no bus"));
}

TEST_F(LinuxDesktopActionsTest, aPageIsOpenedInTheBrowser)
{
    const std::string page = "https://example.org/a?b=c&d=%20#e";
    EXPECT_FALSE(QCoro::waitFor(actions.openPage(page)));
    for (const char* name : {"x-www-browser", "gio", "xdg-open"}) { // each before the last
        programs.put(name);
        EXPECT_TRUE(QCoro::waitFor(actions.openPage(page)));
        EXPECT_TRUE(programs.note(name).ends_with(page + "\n")) << name;
        std::filesystem::remove(folder.file(std::string(name) + ".note"));
    }
    EXPECT_EQ(programs.note("gio") + programs.note("x-www-browser"), "");
}

TEST_F(LinuxDesktopActionsTest, whatIsNoPageIsNotOpened)
{
    programs.put("xdg-open");
    for (const char* url : {"", "--help", "file:///etc/passwd", "/etc/passwd", "javascript:1",
                            "ftp://example.org/", "https:example.org", " https://example.org/"})
        EXPECT_FALSE(QCoro::waitFor(actions.openPage(url))) << url;
    EXPECT_EQ(programs.note("xdg-open"), "");
}

} // namespace
} // namespace vellumor::linuxDesktopActionsTest
