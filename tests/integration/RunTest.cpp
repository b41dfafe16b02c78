// The real program, running: what it does by itself for the accounts of a home.

#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace vellumor::runTest {
namespace {

using test::Answer;
using test::LoopbackServer;
using test::ProgramWorld;
using test::SeenRequest;

struct RunTest : testing::Test {
    ProgramWorld world;
    Answer answer{200, {}, R"({"limits":[{"kind":"session","group":"session","percent":62}]})"};
    LoopbackServer server{[this](const SeenRequest&) { return answer; }};

    RunTest()
    {
        world.environment["QT_QPA_PLATFORM"] = "offscreen";
        world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.environment["VELLUMOR_API_BASE"] =
            "http://127.0.0.1:" + std::to_string(server.port());
    }
};

TEST_F(RunTest, itFetchesEachAccountOnceAtTheStartTwoSecondsApart)
{
    world.signIn(".claude", "first-token");
    world.signIn(".claude-work", "second-token");
    const auto program = world.start();
    ASSERT_TRUE(world.waitUntil([&] { return server.requests().size() == 2; }));
    EXPECT_TRUE(world.waitUntil(
        [&] { return world.hasFile(".local/share/Vellumor/usage-snapshots.json"); }));
    EXPECT_NE(server.requests()[0].header("authorization"),
              server.requests()[1].header("authorization"));
    EXPECT_TRUE(world.hasFile(".local/share/Quorle/presence/vellumor.json"));
    EXPECT_NE(test::contentsOf(world.home + "/.local/share/Quorle/poller.json")
                  .find(R"("source": "vellumor")"),
              std::string::npos);
    EXPECT_NE(world.sharedReading().find("62"), std::string::npos);
}

TEST_F(RunTest, aRestartServesWhatIsFreshWithoutACall)
{
    world.signIn(".claude", "a-token");
    for (const char* const log : {"first", "second"}) {
        const auto program = world.start(log);
        ASSERT_TRUE(world.waitForLog("[main] running", log));
        ASSERT_TRUE(world.waitUntil(
            [&] { return world.hasFile(".local/share/Vellumor/reset-anchors.json"); }));
        ASSERT_TRUE(world.waitUntil([&] { return !world.sharedReading().empty(); }));
    }
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(RunTest, aRefusalHoldsOverARestart)
{
    world.signIn(".claude", "a-token");
    {
        const auto program = world.start("first");
        ASSERT_TRUE(world.waitUntil([&] { return !world.sharedReading().empty(); }));
    }
    // The reading is old by now, and another program was told to wait.
    world.makeSharedReadingOld("\"backoffUntil\": \"2100-01-01T00:00:00.000Z\",");
    const auto program = world.start("second");
    ASSERT_TRUE(world.waitForLog("[main] running", "second"));
    EXPECT_FALSE(world.waitUntil([&] { return server.requests().size() > 1; }));
}

TEST_F(RunTest, whatOthersMayReadBelowItsFoldersIsClosedToThemAfterAStart)
{
    using std::filesystem::perms;
    const auto readable = perms::group_read | perms::others_read;
    std::map<std::string, unsigned> wanted; // of what no store ever writes
    for (const std::string name : {"Vellumor", "Quorle"}) {
        const std::string file = world.folder.put("home/.local/share/" + name + "/old/kept", "");
        const std::string folder = std::filesystem::path(file).parent_path();
        std::filesystem::permissions(folder, readable | perms::owner_all | perms::group_exec |
                                                 perms::others_exec);
        std::filesystem::permissions(file, readable | perms::owner_read | perms::owner_write);
        wanted.insert({{file, 0600}, {folder, 0700}});
    }
    const auto program = world.start();
    for (const auto& [path, mode] : wanted)
        EXPECT_TRUE(world.waitUntil([&] { return test::modeOf(path) == mode; })) << path;
}

TEST_F(RunTest, withoutAnAccountItWaitsForOneAndCallsNobody)
{
    const auto program = world.start();
    ASSERT_TRUE(world.waitUntil([&] { return world.hasFile(".local/share/Quorle/poller.json"); }));
    EXPECT_TRUE(server.requests().empty());
}

} // namespace
} // namespace vellumor::runTest
