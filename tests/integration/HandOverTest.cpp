#include "integration/ProgramWorld.h"
#include "support/private_bus/PrivateBus.h"

#include <gtest/gtest.h>

#include <csignal>

namespace vellumor::handOverTest {
namespace {

using namespace std::chrono_literals;
using test::ChildProcess;
using test::PrivateBus;
using test::ProgramWorld;

constexpr const char* running = "[main] running\n";

std::string handingOverTo(const ChildProcess& first)
{
    return "[main] another Vellumor (pid " + std::to_string(first.pid()) +
           ") is already running — handing over\n";
}

struct HandOverTest : testing::Test {
    ProgramWorld world;

    HandOverTest() { world.environment["QT_QPA_PLATFORM"] = "offscreen"; }
};

struct HandOverOnABusTest : HandOverTest {
    PrivateBus bus{world.folder.makeFolder("bus")};

    HandOverOnABusTest() { world.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address(); }
};

TEST_F(HandOverTest, withoutAScreenItEndsAndLeavesNoFile)
{
    world.environment.erase("QT_QPA_PLATFORM");
    EXPECT_EQ(world.run(), 1);
    EXPECT_EQ(world.log(), "[main] no display — cannot start\n");
    EXPECT_TRUE(test::namesIn(world.home).empty());
}

TEST_F(HandOverTest, anyOtherValueOfTheSwitchStartsTheApplication)
{
    world.environment.erase("QT_QPA_PLATFORM");
    for (const char* text : {"0", "true"}) {
        world.environment["VELLUMOR_DIAG"] = text;
        EXPECT_EQ(world.run(text), 1);
        EXPECT_EQ(world.log(text), "[main] no display — cannot start\n");
    }
}

TEST_F(HandOverOnABusTest, theOnlyCopyRunsAndLeavesItsLockAlone)
{
    const auto program = world.start();
    ASSERT_TRUE(world.waitForLog(running));
    EXPECT_TRUE(world.log().starts_with(running));
    EXPECT_EQ(test::contentsOf(world.home + "/.local/share/Vellumor/.lock"),
              std::to_string(program->pid()) + "\n");
    EXPECT_EQ(program->wait(0ms), std::nullopt);
}

TEST_F(HandOverOnABusTest, aSecondCopyNamesTheFirstAndLeaves)
{
    const auto first = world.start("first");
    ASSERT_TRUE(world.waitForLog(running, "first"));
    EXPECT_EQ(world.run("second"), 0);
    EXPECT_EQ(world.log("second"), handingOverTo(*first));
    EXPECT_EQ(first->wait(0ms), std::nullopt);
}

TEST_F(HandOverOnABusTest, ofCopiesStartedAtOneMomentExactlyOneStays)
{
    std::vector<std::unique_ptr<ChildProcess>> programs;
    for (const char* name : {"0", "1", "2", "3"})
        programs.push_back(world.start(name));
    std::size_t staying = 0;
    std::string stayed;
    for (std::size_t i = 0; i < programs.size(); ++i) {
        const std::string name = std::to_string(i);
        if (const auto status = programs[i]->wait(8s)) {
            EXPECT_EQ(*status, 0) << world.log(name);
        } else {
            ++staying;
            stayed = name;
        }
    }
    EXPECT_EQ(staying, 1U);
    EXPECT_TRUE(world.waitForLog(running, stayed));
}

TEST_F(HandOverOnABusTest, aCopyOnTheBusIsFoundFromAnotherDataFolder)
{
    const auto first = world.start("first");
    ASSERT_TRUE(world.waitForLog(running, "first"));
    world.environment["XDG_DATA_HOME"] = world.folder.makeFolder("other");
    EXPECT_EQ(world.run("second"), 0);
    EXPECT_EQ(world.log("second"), handingOverTo(*first));
    EXPECT_TRUE(test::namesIn(world.folder.file("other")).empty());
}

TEST_F(HandOverOnABusTest, aCopyWithoutTheBusIsFoundByItsLock)
{
    ProgramWorld& withBus = world;
    const std::string address = withBus.environment["DBUS_SESSION_BUS_ADDRESS"];
    withBus.environment.erase("DBUS_SESSION_BUS_ADDRESS");
    const auto first = world.start("first");
    ASSERT_TRUE(world.waitForLog(running, "first"));
    withBus.environment["DBUS_SESSION_BUS_ADDRESS"] = address;
    EXPECT_EQ(world.run("second"), 0);
    EXPECT_EQ(world.log("second"), handingOverTo(*first));
}

TEST_F(HandOverTest, withoutABusTheLockAloneKeepsTwoCopiesApart)
{
    const auto first = world.start("first");
    ASSERT_TRUE(world.waitForLog(running, "first"));
    EXPECT_TRUE(world.log("first").starts_with(
        "[main] no session bus — a second start cannot be handed over\n" + std::string(running)));
    EXPECT_EQ(world.run("second"), 0);
    EXPECT_EQ(world.log("second"), handingOverTo(*first));
    EXPECT_EQ(first->wait(0ms), std::nullopt);
}

TEST_F(HandOverTest, aDataFolderThatCannotBeMadeDoesNotStopTheStart)
{
    world.environment["XDG_DATA_HOME"] = world.folder.put("file", "") + "/data";
    const auto program = world.start();
    EXPECT_TRUE(world.waitForLog(running));
}

TEST_F(HandOverTest, everyEndingSignalEndsItAtOnceAndTheNextStartRuns)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGKILL}) {
        const std::string name = std::to_string(signal);
        const auto program = world.start(name);
        ASSERT_TRUE(world.waitForLog(running, name));
        ::kill(program->pid(), signal);
        EXPECT_EQ(program->wait(5s), 128 + signal);
    }
}

} // namespace
} // namespace vellumor::handOverTest
