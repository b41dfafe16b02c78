// The event loop of the real program's main thread turns, and ProgramWorld looks whether it does.

#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"
#include "support/loop_watch/LoopReport.h"

#include "base/Format.h"
#include "base/Sha256.h"
#include "base/SystemClock.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace vellumor::loopTest {
namespace {

using namespace std::chrono_literals;
using test::Answer;
using test::LoopbackServer;
using test::ProgramWorld;
using test::SeenRequest;

void runAProgramWhoseLoopStandsStill()
{
    ProgramWorld world;
    world.arguments = {VELLUMOR_TURNING_LOOP, "sleep", "80"};
    EXPECT_EQ(world.run(), 0);
}

TEST(LoopTest, aProgramWhoseLoopStandsStillFailsTheTestThatRunsIt)
{
    EXPECT_NONFATAL_FAILURE(runAProgramWhoseLoopStandsStill(),
                            "the program's event loop stood still");
}

// A reading a minute for seven days, as the program itself would have left them.
std::string weekOfHistory()
{
    constexpr int minutes = 7 * 24 * 60;
    const Instant now = systemNow();
    std::string text = "[";
    for (int i = minutes; i > 0; --i) {
        text += R"({"at":")" + Format::isoFractional(now - i * 60s) +
                R"(","percents":{"session":12.5,"weekly_all":40,"weekly_opus":7}})" +
                (i > 1 ? "," : "]");
    }
    return text;
}

TEST(LoopTest, theProgramTurnsWhileItScansFetchesAndKeepsAWholeWeek)
{
    ProgramWorld world;
    const LoopbackServer server([](const SeenRequest&) {
        return Answer{200, {}, R"({"limits":[{"kind":"session","group":"session","percent":62}]})"};
    });
    world.environment["QT_QPA_PLATFORM"] = "offscreen";
    world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
    world.environment["VELLUMOR_API_BASE"] = "http://127.0.0.1:" + std::to_string(server.port());
    world.signIn(".claude", "a-token");
    const std::string history =
        ".local/share/Vellumor/history/" + Sha256::first8Hex(world.home + "/.claude") + ".json";
    const std::string file = world.folder.put("home/" + history, weekOfHistory());
    const auto program = world.start();
    EXPECT_TRUE(world.waitUntil(
        [&] { return test::contentsOf(file).find("\"session\": 62") != std::string::npos; }));
    EXPECT_GT(world.loopReport().turns, 10U) << "nothing was watched";
}

} // namespace
} // namespace vellumor::loopTest
