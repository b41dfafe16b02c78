// The real program on a machine that goes to sleep, wakes up, and comes and goes on the network.

#include "integration/FileEvents.h"
#include "integration/Machine.h"
#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace vellumor::sleepAndNetworkTest {
namespace {

using test::Answer;
using test::ChildProcess;
using test::LoopbackServer;
using test::Machine;
using test::ProgramWorld;
using test::Reaction;
using test::SeenRequest;
using Network = Machine::Network;

Answer readingOf(int percent)
{
    return {200,
            {},
            R"({"limits":[{"kind":"session","group":"session","percent":)" +
                std::to_string(percent) + "}]}"};
}

// An endpoint that fails, so that nothing is cached: each round asks for each account.
struct SleepAndNetworkTest : testing::Test {
    static constexpr const char* presence = ".local/share/Quorle/presence/vellumor.json";
    ProgramWorld world;
    Machine machine{world.folder.makeFolder("machine")};
    Answer answer{500, {}, "{}"};
    std::optional<Reaction> ownAnswer; // what "a-token" gets instead
    LoopbackServer server{[this](const SeenRequest& request) {
        const bool isOwn = request.header("authorization") == "Bearer a-token";
        return isOwn && ownAnswer ? *ownAnswer : Reaction(answer);
    }};

    SleepAndNetworkTest() { prepare(world); }

    void prepare(ProgramWorld& some) const
    {
        some.environment["QT_QPA_PLATFORM"] = "offscreen";
        some.environment["VELLUMOR_API_BASE"] = "http://127.0.0.1:" + std::to_string(server.port());
        some.environment["DBUS_SYSTEM_BUS_ADDRESS"] = machine.bus().address();
    }
    // Starts it, and returns once it listens to the machine.
    [[nodiscard]] std::unique_ptr<ChildProcess> startOnMachine() const
    {
        auto program = world.start();
        EXPECT_TRUE(ProgramWorld::waitUntil([this] { return machine.isListenedTo(); }));
        EXPECT_TRUE(waitForPresence()); // the last thing of a start
        machine.waitUntilHeardBy(program->pid());
        world.endJoining();
        return program;
    }
    [[nodiscard]] bool waitForPresence() const
    {
        return ProgramWorld::waitUntil([this] { return world.hasFile(presence); });
    }
    void sleep(const ChildProcess& program) const
    {
        machine.goToSleep();
        machine.waitUntilHeardBy(program.pid());
    }
    void wake(const ChildProcess& program) const
    {
        machine.wakeUp();
        machine.waitUntilHeardBy(program.pid());
    }
    void network(const ChildProcess& program, Network state) const
    {
        machine.setNetwork(state);
        machine.waitUntilHeardBy(program.pid());
    }

    // No file of the folder for forty turns of the loop: every round is over.
    static void waitUntilNobodyReads(const std::string& folder)
    {
        const test::FileEvents events({folder});
        int turns = 0;
        EXPECT_TRUE(ProgramWorld::waitUntil([&] {
            if (turns < 40)
                turns = events.take().opens.empty() ? turns + 1 : 0;
            return turns == 40;
        }));
    }

    [[nodiscard]] std::size_t requests() const { return server.requests().size(); }
    [[nodiscard]] bool waitForRequests(std::size_t count) const
    {
        return ProgramWorld::waitUntil([&] { return requests() >= count; }) && requests() == count;
    }
};

TEST_F(SleepAndNetworkTest, aWakeGivesOneFullRoundAtOnce)
{
    world.signIn(".claude", "first-token");
    world.signIn(".claude-work", "second-token");
    const auto program = startOnMachine();
    ASSERT_TRUE(waitForRequests(2));
    for (std::size_t round = 2; round <= 3; ++round) {
        sleep(*program);
        wake(*program);
        ASSERT_TRUE(waitForRequests(2 * round));
        EXPECT_EQ(server.requestsWith("first-token"), round);
        EXPECT_EQ(server.requestsWith("second-token"), round);
    }
}

TEST_F(SleepAndNetworkTest, aWakeRenewsAReadingThatHasGrownOldInTheSleep)
{
    answer = readingOf(62);
    world.signIn(".claude", "a-token");
    const auto program = startOnMachine();
    for (std::size_t round = 1; round <= 3; ++round) {
        ASSERT_TRUE(waitForRequests(round));
        ASSERT_TRUE(ProgramWorld::waitUntil([&] {
            const std::string reading = world.sharedReading();
            return !reading.empty() && reading.find(ProgramWorld::longAgo) == std::string::npos;
        }));
        sleep(*program);
        world.makeSharedReadingOld();
        wake(*program);
    }
    EXPECT_TRUE(waitForRequests(4));
}

TEST_F(SleepAndNetworkTest, eachTickTellsTheSiblingThatTheProgramIsHere)
{
    world.signIn(".claude", "a-token");
    const auto program = startOnMachine();
    ASSERT_TRUE(waitForRequests(1));
    sleep(*program);
    std::filesystem::remove(world.home + "/" + presence);
    wake(*program);
    EXPECT_TRUE(waitForPresence());
}

TEST_F(SleepAndNetworkTest, everyReturnToTheNetworkGivesOneRound)
{
    const std::pair<Network, bool> rows[] = {
        // the state, and whether it brings a round
        {Network::disconnected, false}, {Network::global, true},
        {Network::site, false}, // online as before
        {Network::local, false},        {Network::site, true},
        {Network::disconnected, false}, {Network::local, false},
        {Network::global, true},
    };
    world.signIn(".claude", "a-token");
    const auto program = startOnMachine();
    std::size_t expected = 1;
    ASSERT_TRUE(waitForRequests(expected));
    for (const auto& [state, bringsRound] : rows) {
        SCOPED_TRACE(static_cast<int>(state));
        network(*program, state);
        expected += bringsRound ? 1U : 0U;
        ASSERT_TRUE(waitForRequests(expected));
    }
    wake(*program); // whatever was one too many has come by now
    EXPECT_TRUE(waitForRequests(expected + 1));
}

TEST_F(SleepAndNetworkTest, aWakeWhileOfflineWaitsForTheNetwork)
{
    world.signIn(".claude", "a-token");
    const auto program = startOnMachine();
    ASSERT_TRUE(waitForRequests(1));
    sleep(*program);
    network(*program, Network::disconnected);
    wake(*program);
    network(*program, Network::global);
    ASSERT_TRUE(waitForRequests(2));
    wake(*program);
    EXPECT_TRUE(waitForRequests(3));
}

TEST_F(SleepAndNetworkTest, aNetworkThatFlapsBringsNoRequestWhileTheReadingIsFresh)
{
    answer = readingOf(62);
    world.signIn(".claude", "a-token");
    const auto program = startOnMachine();
    ASSERT_TRUE(ProgramWorld::waitUntil([this] { return !world.sharedReading().empty(); }));
    for (int i = 0; i < 50; ++i) {
        network(*program, Network::disconnected);
        network(*program, Network::global);
    }
    waitUntilNobodyReads(world.home + "/.local/share/Quorle/usage-cache");
    EXPECT_EQ(requests(), 1U);
    world.makeSharedReadingOld();
    wake(*program);
    EXPECT_TRUE(waitForRequests(2));
}

TEST_F(SleepAndNetworkTest, aStartWithoutANetworkWaitsForIt)
{
    machine.setNetwork(Network::disconnected);
    world.signIn(".claude", "a-token");
    const auto program = startOnMachine();
    EXPECT_EQ(requests(), 0U);
    network(*program, Network::global);
    EXPECT_TRUE(waitForRequests(1));
}

// Whether the ticks really stop takes minutes to see. So the programs run sixty times faster, and
// another one, which no machine speaks to, shows how many ticks have gone by.
struct LongSpellTest : SleepAndNetworkTest {
    ProgramWorld other;

    LongSpellTest()
    {
        prepare(other);
        other.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.signIn(".claude", "a-token");
        other.signIn(".claude", "other-token");
        for (ProgramWorld* each : {&world, &other}) {
            each->environment["LD_PRELOAD"] = VELLUMOR_FAKETIME;
            each->environment["FAKETIME"] = "+0 x60";
            each->environment["ASAN_OPTIONS"] = "verify_asan_link_order=0"; // it is not the first
            each->folder.put("home/.local/share/Vellumor/preferences.json",
                             R"({"userInterval":60})");
        }
    }
    // Ticks of two programs lie at most a fifth apart, so two at least are due in three of another.
    [[nodiscard]] bool waitForThreeTicks() const
    {
        const std::size_t before = server.requestsWith("other-token");
        return ProgramWorld::waitUntil(
            [&] { return server.requestsWith("other-token") >= before + 3; });
    }
    [[nodiscard]] bool waitForOwnRequest(std::size_t before) const
    {
        return ProgramWorld::waitUntil([&] { return server.requestsWith("a-token") > before; });
    }
};

TEST_F(LongSpellTest, asleepOrOfflineItAsksForNothing)
{
    const auto watch = other.start();
    const auto program = startOnMachine();
    sleep(*program);
    std::size_t before = server.requestsWith("a-token");
    ASSERT_TRUE(waitForThreeTicks());
    EXPECT_LE(server.requestsWith("a-token"), before + 1) << "asleep; one may have been under way";

    wake(*program);
    ASSERT_TRUE(waitForOwnRequest(before));
    network(*program, Network::disconnected);
    wake(*program);
    before = server.requestsWith("a-token");
    ASSERT_TRUE(waitForThreeTicks());
    EXPECT_LE(server.requestsWith("a-token"), before + 1) << "offline";

    before = server.requestsWith("a-token");
    network(*program, Network::global);
    ASSERT_TRUE(waitForOwnRequest(before));
    ASSERT_TRUE(waitForThreeTicks());
    EXPECT_GE(server.requestsWith("a-token"), before + 2) << "the ticks go on";
}

TEST_F(LongSpellTest, aSleepInAFetchTakesItsAnswerAndAsksNothingBeforeTheWake)
{
    ownAnswer = test::Drip{readingOf(62), 1, std::chrono::milliseconds(15)};
    const auto watch = other.start();
    const auto program = startOnMachine();
    ASSERT_TRUE(waitForOwnRequest(0));
    sleep(*program);
    ASSERT_TRUE(world.sharedReading().empty()) << "the fetch is over already";
    ASSERT_TRUE(ProgramWorld::waitUntil([this] { return !world.sharedReading().empty(); }));
    ownAnswer = readingOf(70);
    ASSERT_TRUE(waitForThreeTicks());
    EXPECT_EQ(server.requestsWith("a-token"), 1U);
    EXPECT_NE(world.sharedReading().find("\"percent\": 62"), std::string::npos);

    wake(*program);
    EXPECT_TRUE(ProgramWorld::waitUntil(
        [this] { return world.sharedReading().find("\"percent\": 70") != std::string::npos; }));
    EXPECT_EQ(server.requestsWith("a-token"), 2U);
}

TEST_F(SleepAndNetworkTest, aNetworkManagerThatHangsHoldsNobodyUp)
{
    world.signIn(".claude", "a-token");
    machine.hangNetworkManager();
    const auto program = world.start();
    ASSERT_TRUE(waitForRequests(1)); // within ten seconds; asked directly, it would take 25
    world.endJoining();
}

} // namespace
} // namespace vellumor::sleepAndNetworkTest
