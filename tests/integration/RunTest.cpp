// The real program, running: what it does by itself for the accounts of a home.

#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"
#include "support/private_bus/PrivateBus.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <functional>

namespace vellumor {
namespace {

using test::Answer;
using test::LoopbackServer;
using test::PrivateBus;
using test::ProgramWorld;
using test::SeenRequest;

struct RunTest : testing::Test {
    ProgramWorld world;
    Answer answer{200, {}, R"({"limits":[{"kind":"session","group":"session","percent":62}]})"};
    LoopbackServer server{[this](const SeenRequest&) { return answer; }};

    RunTest()
    {
        world.environment["DISPLAY"] = ":99";
        world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.environment["VELLUMOR_API_BASE"] =
            "http://127.0.0.1:" + std::to_string(server.port());
    }
    // False when it has not come about within ten seconds.
    static bool waitUntil(const std::function<bool()>& isSo)
    {
        const QDeadlineTimer limit(10'000);
        while (!isSo() && !limit.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return isSo();
    }
    [[nodiscard]] bool hasFile(const std::string& name) const
    {
        const auto files = world.filesInHome();
        return std::find(files.begin(), files.end(), name) != files.end();
    }
    // The path of the one shared reading; empty without one.
    [[nodiscard]] std::string sharedFile() const
    {
        for (const std::string& file : world.filesInHome()) {
            if (file.find("usage-cache/") != std::string::npos && file.ends_with(".json"))
                return world.home + "/" + file;
        }
        return {};
    }
    [[nodiscard]] std::string sharedReading() const { return test::contentsOf(sharedFile()); }
};

TEST_F(RunTest, itFetchesEachAccountOnceAtTheStartTwoSecondsApart)
{
    world.signIn(".claude", "first-token");
    world.signIn(".claude-work", "second-token");
    const auto program = world.start();
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == 2; }));
    EXPECT_TRUE(waitUntil([&] { return hasFile(".local/share/Vellumor/usage-snapshots.json"); }));
    EXPECT_NE(server.requests()[0].header("authorization"),
              server.requests()[1].header("authorization"));
    EXPECT_TRUE(hasFile(".local/share/Quorle/presence/vellumor.json"));
    EXPECT_NE(test::contentsOf(world.home + "/.local/share/Quorle/poller.json")
                  .find(R"("source": "vellumor")"),
              std::string::npos);
    EXPECT_NE(sharedReading().find("62"), std::string::npos);
}

TEST_F(RunTest, aRestartServesWhatIsFreshWithoutACall)
{
    world.signIn(".claude", "a-token");
    for (const char* const log : {"first", "second"}) {
        const auto program = world.start(log);
        ASSERT_TRUE(world.waitForLog("[main] running", log));
        ASSERT_TRUE(waitUntil([&] { return hasFile(".local/share/Vellumor/reset-anchors.json"); }));
        ASSERT_TRUE(waitUntil([&] { return !sharedReading().empty(); }));
    }
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(RunTest, aRefusalHoldsOverARestart)
{
    world.signIn(".claude", "a-token");
    {
        const auto program = world.start("first");
        ASSERT_TRUE(waitUntil([&] { return !sharedReading().empty(); }));
    }
    // The reading is old by now, and another program was told to wait.
    std::string reading = sharedReading();
    const auto begin = reading.find("\"fetchedAt\": \"") + 14;
    reading.replace(begin, 24, "2026-01-01T00:00:00.000Z");
    reading.insert(1, "\"backoffUntil\": \"2100-01-01T00:00:00.000Z\",");
    std::ofstream(sharedFile()) << reading;
    const auto program = world.start("second");
    ASSERT_TRUE(world.waitForLog("[main] running", "second"));
    EXPECT_FALSE(waitUntil([&] { return server.requests().size() > 1; }));
}

TEST_F(RunTest, withoutAnAccountItWaitsForOneAndCallsNobody)
{
    const auto program = world.start();
    ASSERT_TRUE(waitUntil([&] { return hasFile(".local/share/Quorle/poller.json"); }));
    EXPECT_TRUE(server.requests().empty());
}

} // namespace
} // namespace vellumor
