// The program that people call, alone and beside the real one: what it tells, and what others on
// the bus can and cannot do.

#include "integration/Machine.h"
#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <sstream>

namespace vellumor::statusTest {
namespace {

using namespace std::chrono_literals;
using test::Answer;
using test::ChildProcess;
using test::LoopbackServer;
using test::Machine;
using test::PrivateBus;
using test::ProgramWorld;
using test::SeenRequest;
using Arguments = std::vector<std::string>;
using Lines = std::vector<std::string>;

constexpr const char* name = "dev.quorle.vellumor";
constexpr const char* path = "/dev/quorle/vellumor";
constexpr const char* interface = "dev.quorle.Vellumor1";

struct Printed {
    int status = -1;
    std::string text; // standard error too
};

// Every file and folder with what changes when it is written to.
Lines statesBelow(const std::string& folder)
{
    Lines states;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        struct stat status {};
        ::lstat(entry.path().c_str(), &status);
        std::ostringstream line;
        line << entry.path().string() << ' ' << status.st_ino << ' ' << status.st_mode << ' '
             << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec << ' '
             << status.st_ctim.tv_sec << '.' << status.st_ctim.tv_nsec;
        states.push_back(line.str());
    }
    std::sort(states.begin(), states.end());
    return states;
}

// Whether all of them stand in `lines`, in this order, with others in between or not.
bool areInOrder(const Lines& wanted, const Lines& lines)
{
    auto next = wanted.begin();
    for (const std::string& line : lines) {
        if (next != wanted.end() && line == *next)
            ++next;
    }
    return next == wanted.end();
}

struct StatusTest : testing::Test {
    ProgramWorld world;
    // Would be started if anybody called a name that nobody has.
    PrivateBus bus{world.folder.makeFolder("bus"),
                   {.activatable = {{name, "/usr/bin/touch " + world.folder.file("started")},
                                    {"org.freedesktop.secrets",
                                     "/usr/bin/touch " + world.folder.file("started")}}}};
    int percent = 62;
    LoopbackServer server{[this](const SeenRequest&) {
        return Answer{200,
                      {},
                      R"({"limits":[{"kind":"session","group":"session","percent":)" +
                          std::to_string(percent) + "}]}"};
    }};

    StatusTest()
    {
        world.environment["QT_QPA_PLATFORM"] = "offscreen";
        world.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.environment["VELLUMOR_ONBOARDING"] = "skip";
        world.environment["VELLUMOR_API_BASE"] =
            "http://127.0.0.1:" + std::to_string(server.port());
    }

    [[nodiscard]] std::unique_ptr<ChildProcess> call(Arguments arguments,
                                                     const std::string& logName) const
    {
        arguments.insert(arguments.begin(), VELLUMOR_FRONT);
        return std::make_unique<ChildProcess>(
            ChildProcess::Command{arguments, world.environment, {}, world.folder.file(logName)});
    }
    [[nodiscard]] Printed print(const Arguments& arguments) const
    {
        std::filesystem::remove(world.folder.file("printed"));
        const auto process = call(arguments, "printed");
        const int status = ProgramWorld::waitForEnd(*process);
        return {status, world.log("printed")};
    }
    [[nodiscard]] std::string session() const
    {
        return print({"status", "--format", "{session}"}).text;
    }
    // Starts it, and waits until it tells a reading.
    [[nodiscard]] std::unique_ptr<ChildProcess> startWithReading() const
    {
        auto program = world.start();
        EXPECT_TRUE(ProgramWorld::waitUntil([&] { return server.requests().size() == 1; }));
        EXPECT_TRUE(ProgramWorld::waitUntil([&] { return session() == "62%\n"; }));
        return program;
    }
    [[nodiscard]] Lines linesOf(const std::string& logName) const
    {
        Lines lines;
        std::istringstream log(world.log(logName));
        for (std::string line; std::getline(log, line);)
            lines.push_back(line);
        return lines;
    }
    // True when the bus gives an answer and no error.
    [[nodiscard]] bool callMember(const std::string& member, const Arguments& arguments = {}) const
    {
        try {
            (void)bus.call(name, path, member, arguments);
            return true;
        } catch (const std::runtime_error&) {
            return false;
        }
    }
    [[nodiscard]] bool refresh() const { return callMember(std::string(interface) + ".Refresh"); }
    [[nodiscard]] bool waitForLines(const Lines& wanted, const std::string& logName) const
    {
        return ProgramWorld::waitUntil([&] { return areInOrder(wanted, linesOf(logName)); });
    }
};

TEST_F(StatusTest, theProgramThatItStartsBearsItsName)
{
    world.arguments = {VELLUMOR_FRONT};
    const auto program = world.start();
    ASSERT_TRUE(world.waitForLog("[main] running\n"));
    const std::string process = "/proc/" + std::to_string(program->pid());
    EXPECT_EQ(test::contentsOf(process + "/comm"), "vellumor\n");
    EXPECT_EQ(std::filesystem::read_symlink(process + "/exe"),
              std::filesystem::canonical(VELLUMOR_PROGRAM));
}

TEST_F(StatusTest, withoutArgumentsTheReportAndTheHandOverAreAsBefore)
{
    world.arguments = {VELLUMOR_FRONT};
    const auto first = world.start("first");
    ASSERT_TRUE(world.waitForLog("[main] running\n", "first"));
    EXPECT_EQ(world.run("second"), 0);
    EXPECT_NE(world.log("second").find("handing over"), std::string::npos);
    world.environment["VELLUMOR_DIAG"] = "1";
    EXPECT_EQ(world.run("report"), 0);
    EXPECT_NE(world.log("report").find("Vellumor 1.0.0 — diagnostics\n"), std::string::npos);
}

TEST_F(StatusTest, theExitStatusTellsWhatCameOfIt)
{
    const auto nobody = print({"status"});
    EXPECT_EQ(nobody.status, 3);
    EXPECT_TRUE(nobody.text.starts_with("No accounts are watched yet.\n")) << nobody.text;
    EXPECT_EQ(print({"--help"}).status, 0);
    EXPECT_EQ(print({"status", "--version"}).text, "Vellumor 1.0.0\n");
    for (const Arguments& wrong : {Arguments{"statsu"}, {"status", "--jsn"}, {"--platform"}}) {
        const auto mistake = print(wrong);
        EXPECT_EQ(mistake.status, 2);
        EXPECT_TRUE(mistake.text.starts_with("vellumor: ")) << mistake.text;
        EXPECT_NE(mistake.text.find("--help"), std::string::npos) << mistake.text;
    }
    world.signIn(".claude", "a-token");
    const auto program = startWithReading();
    EXPECT_EQ(print({"status", "--json"}).status, 0);
    EXPECT_EQ(print({"status", "--account", "nobody"}).status, 3);
    EXPECT_FALSE(std::filesystem::exists(world.folder.file("started")));
}

TEST_F(StatusTest, withoutTheProgramItReadsItsFilesAndDoesNothingElse)
{
    world.signIn(".claude", "a-token");
    startWithReading()->end();
    const auto before = statesBelow(world.home);
    const auto requests = server.requests().size();
    for (const char* form : {"--json", "--waybar", "--format={name} {session}", "--account=none"})
        EXPECT_NE(print({"status", form}).status, -1);
    const auto printed = print({"status"});
    EXPECT_EQ(printed.status, 0);
    EXPECT_NE(printed.text.find("62%"), std::string::npos) << printed.text;
    EXPECT_NE(printed.text.find("Vellumor does not answer"), std::string::npos) << printed.text;
    EXPECT_EQ(statesBelow(world.home), before);
    EXPECT_EQ(server.requests().size(), requests);
    EXPECT_FALSE(std::filesystem::exists(world.folder.file("started")));
    world.environment.erase("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(session(), "62%\n");
    EXPECT_EQ(print({"status", "--watch"}).status, 1); // there is nothing to follow
}

TEST_F(StatusTest, aBusThatSaysNothingDoesNotHoldItUp)
{
    bus.freeze();
    const auto printed = print({"status", "--json"});
    bus.thaw();
    EXPECT_EQ(printed.status, 3);
    EXPECT_NE(printed.text.find("\"files\""), std::string::npos);
}

TEST_F(StatusTest, watchingGoesOnThroughAnOfflineSpellAndARestart)
{
    const Machine machine(world.folder.makeFolder("machine"));
    world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = machine.bus().address();
    world.signIn(".claude", "a-token");
    const auto watching = call({"status", "--watch", "--format", "{session} {note}"}, "watch");
    ASSERT_TRUE(ProgramWorld::waitUntil([&] { return !linesOf("watch").empty(); }));
    Lines wanted = {"", "62% "};
    auto program = world.start("first");
    ASSERT_TRUE(waitForLines(wanted, "watch")) << world.log("watch");
    ASSERT_TRUE(ProgramWorld::waitUntil([&] { return machine.isListenedTo(); }));
    machine.setNetwork(Machine::Network::disconnected);
    machine.waitUntilHeardBy(program->pid());
    world.endJoining();
    ASSERT_TRUE(refresh());
    wanted.emplace_back("62% Offline — showing last update");
    ASSERT_TRUE(waitForLines(wanted, "watch")) << world.log("watch");
    machine.setNetwork(Machine::Network::global);
    wanted.emplace_back("62% ");
    ASSERT_TRUE(waitForLines(wanted, "watch")) << world.log("watch");
    ::kill(program->pid(), SIGKILL);
    EXPECT_EQ(program->wait(5s), 128 + SIGKILL);
    percent = 70;
    program = world.start("second");
    ASSERT_TRUE(world.waitForLog("[main] running\n", "second"));
    ASSERT_TRUE(ProgramWorld::waitUntil([&] { return machine.isListenedTo(); }));
    ASSERT_TRUE(refresh());
    world.endJoining();
    wanted.emplace_back("70% ");
    EXPECT_TRUE(waitForLines(wanted, "watch")) << world.log("watch");
    EXPECT_EQ(watching->wait(0ms), std::nullopt);
}

TEST_F(StatusTest, watchingEndsWithTheBus)
{
    const auto watching = call({"status", "--watch"}, "watch");
    ASSERT_TRUE(ProgramWorld::waitUntil([&] { return !linesOf("watch").empty(); }));
    bus.kill();
    EXPECT_EQ(ProgramWorld::waitForEnd(*watching), 1);
}

TEST_F(StatusTest, aFloodOfCallsIsOneRound)
{
    world.signIn(".claude", "a-token");
    const auto program = startWithReading();
    percent = 70;
    int admitted = 0;
    for (int i = 0; i < 60; ++i)
        admitted += refresh() ? 1 : 0;
    EXPECT_EQ(admitted, 1);
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(callMember(std::string(interface) + ".OpenPopover"));
    EXPECT_TRUE(ProgramWorld::waitUntil([&] { return session() == "70%\n"; }));
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(StatusTest, whatIsNotInTheInterfaceDoesNothing)
{
    world.signIn(".claude", "a-token");
    const auto program = startWithReading();
    const std::string huge = "string:" + std::string(100000, 'x');
    const std::string own = std::string(interface) + ".";
    EXPECT_FALSE(callMember(own + "Refresh", {huge}));
    EXPECT_FALSE(callMember(own + "Quit"));
    EXPECT_FALSE(callMember(own + "OpenPopover", {huge}));
    EXPECT_FALSE(callMember("org.freedesktop.DBus.Properties.Get",
                            {"string:" + std::string(interface), huge}));
    EXPECT_FALSE(
        callMember("org.freedesktop.DBus.Properties.Set",
                   {"string:" + std::string(interface), "string:LastUpdate", "variant:int64:5"}));
    EXPECT_EQ(session(), "62%\n");
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(program->wait(0ms), std::nullopt);
}

TEST_F(StatusTest, nobodyLearnsMoreThanThePopoverShows)
{
    world.signIn(".claude", "marker-token");
    world.folder.put("home/.claude/.claude.json",
                     R"({"oauthAccount":{"emailAddress":"ada@marker-mail.example.org",)"
                     R"("organizationName":"marker-organisation"}})");
    const auto program = startWithReading();
    std::string said = bus.call(name, path, "org.freedesktop.DBus.Properties.GetAll",
                                {"string:" + std::string(interface)});
    for (const char* form : {"--json", "--waybar", "--format={name}{id}{state}{note}{forecast}"})
        said += print({"status", form}).text;
    EXPECT_NE(said.find("ada"), std::string::npos);
    EXPECT_EQ(said.find("marker"), std::string::npos) << said;
    EXPECT_EQ(said.find(world.home), std::string::npos) << said;
}

TEST_F(StatusTest, itLoadsNoQt)
{
    const auto libraries = test::runToEnd(
        {{"ldd", VELLUMOR_FRONT}, world.environment, {}, world.folder.file("libraries")});
    EXPECT_NE(libraries.find("libgio"), std::string::npos);
    EXPECT_EQ(libraries.find("libQt"), std::string::npos) << libraries;
    EXPECT_EQ(libraries.find("libX"), std::string::npos) << libraries;
}

} // namespace
} // namespace vellumor::statusTest
