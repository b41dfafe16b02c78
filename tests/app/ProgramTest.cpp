#include "app/Program.h"

#include "support/TempFolder.h"

#include <QCoreApplication>
#include <QCoroCore>

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::programTest {
namespace {

// The whole program in a home without an account, and without a bus.
struct ProgramTest : testing::Test {
    test::TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    Program program{{{"HOME", home.path()},
                     {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
                     {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"}},
                    folders,
                    [] {}};

    // Ends what is under way. A tick goes back and forth between the threads a few times.
    void settle()
    {
        for (int i = 0; i < 20; ++i) {
            QCoro::waitFor(program.appState().examineFolder("/"));
            program.finishWrites();
            QCoreApplication::processEvents();
        }
    }
    [[nodiscard]] bool hasClaimedThePolling() const
    {
        return std::filesystem::exists(folders.quorle() + "/poller.json");
    }
};

TEST_F(ProgramTest, aStartBeginsWithARoundThatClaimsThePolling)
{
    program.startPolling();
    settle();
    EXPECT_TRUE(hasClaimedThePolling());
}

// All data removed while the first scan was under way: its end must not begin the loop.
TEST_F(ProgramTest, aLoopThatWasStoppedBeforeItsStartDoesNotBegin)
{
    program.stopPolling();
    program.startPolling();
    settle();
    EXPECT_FALSE(hasClaimedThePolling());
}

} // namespace
} // namespace vellumor::programTest
