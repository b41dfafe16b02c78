#include "platform/linux/ChildLauncher.h"

#include "platform/linux/desktop/FakePrograms.h"
#include "support/FakeClock.h"
#include "support/LoopTicks.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <mutex>

namespace vellumor::childLauncherTest {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Command = ChildLauncher::Command;

// Real programs, and a clock that moves when a test wants it to.
struct ChildLauncherTest : testing::Test {
    test::TempFolder folder;
    test::FakePrograms programs{folder};
    test::FakeClock clock;
    Worker worker;
    std::unique_ptr<ChildLauncher> launcher;
    std::optional<bool> result;
    Task<> task;

    ChildLauncherTest() { use(programs.environment()); }
    ~ChildLauncherTest() override
    {
        for (const pid_t pid : programs.pids())
            ::kill(pid, SIGKILL);
    }

    void use(Environment environment)
    {
        launcher = std::make_unique<ChildLauncher>(clock, worker, std::move(environment));
    }
    Task<> note(std::vector<Command> commands)
    {
        result = co_await launcher->launchFirst(std::move(commands));
    }
    void begin(std::vector<Command> commands)
    {
        result.reset();
        task = note(std::move(commands));
    }
    // What is due at once does come; time does not pass.
    bool turnLoopUntil(const std::function<bool()>& done)
    {
        return test::turnLoopUntil([&] {
            clock.advance(0ms);
            return done();
        });
    }
    // Of programs that end by themselves.
    bool launch(std::vector<Command> commands)
    {
        begin(std::move(commands));
        EXPECT_TRUE(turnLoopUntil([&] { return result.has_value(); }));
        return result.value_or(false);
    }
    // Of one that hangs: its time is over once it runs.
    void launchHanging(const std::string& name)
    {
        const std::size_t before = programs.pids().size();
        begin({{name}});
        ASSERT_TRUE(turnLoopUntil(
            [&] { return programs.pids().size() > before && clock.pendingAlarms() > 0; }));
        EXPECT_EQ(result, std::nullopt);
        clock.advance(ChildLauncher::patience);
        EXPECT_EQ(result, true);
    }
};

TEST_F(ChildLauncherTest, startsTheFirstThatIsThereWithItsArguments)
{
    programs.put("second");
    programs.put("third");
    EXPECT_TRUE(launch({{"first", "x"}, {"second", "a b", "--c", "", "$HOME"}, {"third"}}));
    EXPECT_EQ(programs.note("second"), "a b\n--c\n\n$HOME\n");
    EXPECT_EQ(programs.note("third"), "");
}

TEST_F(ChildLauncherTest, whereNothingIsThereNothingIsLaunched)
{
    EXPECT_FALSE(launch({{"first"}, {"second"}}));
    EXPECT_FALSE(launch({}));
    use({});
    EXPECT_FALSE(launch({{"sh"}}));
}

TEST_F(ChildLauncherTest, whatCannotBeRunIsPassedOver)
{
    programs.put("good");
    folder.put("bin/no-program", "text");
    folder.makeFolder("bin/folder");
    fs::create_symlink("nowhere", folder.file("bin/dangling"));
    ::chmod(folder.put("bin/no-interpreter", "#!/nonexistent/sh\n").c_str(), 0755);
    ::chmod(folder
                .put("bin/garbage", std::string("\x7f"
                                                "ELF garbage"))
                .c_str(),
            0755);
    for (const char* name : {"no-program", "folder", "dangling", "no-interpreter", "garbage"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(launch({{name}}));
        EXPECT_TRUE(launch({{name}, {"good"}}));
    }
}

TEST_F(ChildLauncherTest, whatFailsAtOnceIsPassedOverToo)
{
    programs.put("failing", "exit 3");
    programs.put("killed", "kill -9 $$");
    programs.put("good");
    EXPECT_TRUE(launch({{"failing"}, {"killed"}, {"good"}}));
    EXPECT_NE(programs.note("failing"), "");
    EXPECT_NE(programs.note("killed"), "");
    EXPECT_NE(programs.note("good"), "");
    EXPECT_FALSE(launch({{"failing"}, {"killed"}}));
}

TEST_F(ChildLauncherTest, theFoldersOfPathAreLookedThroughInOrderAndRelativeOnesAreNot)
{
    programs.put("here");
    folder.makeFolder("empty");
    auto environment = programs.environment();
    environment["PATH"] = "bin:.::" + folder.file("none") + ":" + folder.file("empty");
    use(environment);
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    EXPECT_FALSE(launch({{"here"}}));
    fs::current_path(before);
    environment["PATH"] += ":" + folder.file("bin");
    use(environment);
    EXPECT_TRUE(launch({{"here"}}));
}

TEST_F(ChildLauncherTest, oneThatStillRunsWhenItsTimeIsOverIsLaunched)
{
    programs.put("terminal", programs.hang());
    launchHanging("terminal");
    EXPECT_EQ(launcher->running(), 1U);
    EXPECT_FALSE(test::isGone(programs.pids().front()));
}

TEST_F(ChildLauncherTest, theEndOfOneThatRanOnIsTakenNoticeOf)
{
    programs.put("terminal", programs.hang());
    launchHanging("terminal");
    launchHanging("terminal");
    const auto pids = programs.pids();
    ASSERT_EQ(pids.size(), 2U);
    for (const std::size_t left : {1U, 0U}) {
        ::kill(pids[left], SIGKILL);
        EXPECT_TRUE(turnLoopUntil([&] { return launcher->running() == left; }));
        EXPECT_FALSE(fs::exists("/proc/" + std::to_string(pids[left]))); // not even a zombie
    }
}

TEST_F(ChildLauncherTest, whatWasLaunchedOutlivesTheLauncher)
{
    programs.put("terminal", programs.hang());
    launchHanging("terminal");
    launcher.reset();
    EXPECT_FALSE(test::isGone(programs.pids().front()));
}

TEST_F(ChildLauncherTest, theChildGetsTheEnvironmentWithoutTheProgramsOwnVariables)
{
    auto environment = programs.environment();
    environment["DISPLAY"] = ":7";
    environment["BYTES"] = "\xff\xfe";
    environment["VELLUMOR_DIAG"] = "1";
    environment["VELLUMOR_ONBOARDING"] = "show";
    use(environment);
    programs.put("env", "/usr/bin/env > " + folder.file("environment"));
    EXPECT_TRUE(launch({{"env"}}));
    const std::string seen = "\n" + test::contentsOf(folder.file("environment"));
    EXPECT_NE(seen.find("\nDISPLAY=:7\n"), std::string::npos);
    EXPECT_NE(seen.find("\nBYTES=\xff\xfe\n"), std::string::npos);
    EXPECT_NE(seen.find("\nHOME=" + folder.file("home") + "\n"), std::string::npos);
    EXPECT_EQ(seen.find("VELLUMOR"), std::string::npos);
}

TEST_F(ChildLauncherTest, theChildStandsInTheHomeInASessionOfItsOwnWithNothingOfOurs)
{
    const int ours = ::fcntl(STDERR_FILENO, F_DUPFD, 100); // not closed by exec
    const std::string out = folder.file("seen");
    programs.put("look", "exec 9>" + out +
                             "; pwd >&9; "
                             "/usr/bin/cut -d' ' -f6 /proc/$$/stat >&9; echo $$ >&9; "
                             "for f in 0 1 2; do x=$(/usr/bin/readlink /proc/$$/fd/$f); "
                             "echo \"$x\" >&9; done; "
                             "/bin/ls /proc/$$/fd | /usr/bin/tr '\\n' ' ' >&9");
    EXPECT_TRUE(launch({{"look"}}));
    ::close(ours);
    std::istringstream seen(test::contentsOf(out));
    std::string line;
    const auto next = [&] {
        std::getline(seen, line);
        return line;
    };
    EXPECT_EQ(next(), folder.file("home"));
    const std::string session = next();
    EXPECT_EQ(next(), session);
    for (int file = 0; file < 3; ++file)
        EXPECT_EQ(next(), "/dev/null");
    const std::string files = next();
    EXPECT_EQ(files.find(std::to_string(ours)), std::string::npos) << files;
}

// No shell looks for itself here: one blocks signals while it waits for a child of its own.
TEST_F(ChildLauncherTest, theChildHasNoSignalBlockedAndNoneIgnored)
{
    fs::create_symlink("/bin/grep", folder.file("bin/grep"));
    const auto before = ::signal(SIGPIPE, SIG_IGN);
    for (const char* kind : {"SigBlk", "SigIgn"}) {
        // Of 1 to 31; the two behind them are the C library's own.
        const std::string none = std::string("^") + kind + ":\t[0-9a-f]{8}[08]0000000$";
        EXPECT_TRUE(launch({{"grep", "-qE", none, "/proc/self/status"}})) << kind;
    }
    ::signal(SIGPIPE, before);
}

TEST_F(ChildLauncherTest, withoutAHomeTheChildStandsInTheRoot)
{
    auto environment = programs.environment();
    environment["HOME"] = folder.file("none");
    use(environment);
    programs.put("look", "pwd > " + folder.file("seen"));
    EXPECT_TRUE(launch({{"look"}}));
    EXPECT_EQ(test::contentsOf(folder.file("seen")), "/\n");
}

TEST_F(ChildLauncherTest, aWorkerThatIsHeldUpHoldsUpNobodyElse)
{
    programs.put("good");
    std::mutex mutex;
    std::condition_variable changed;
    bool isFree = false;
    worker.post([&] {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return isFree; });
    });
    begin({{"good"}});
    const test::LoopTicks ticks;
    EXPECT_TRUE(turnLoopUntil([&] { return ticks.count() >= 20; }));
    EXPECT_EQ(result, std::nullopt);
    {
        const std::scoped_lock lock(mutex);
        isFree = true;
    }
    changed.notify_one();
    EXPECT_TRUE(turnLoopUntil([&] { return result.has_value(); }));
    EXPECT_EQ(result, true);
}

TEST_F(ChildLauncherTest, twoAtOnceDoNotWaitForOneAnother)
{
    programs.put("terminal", programs.hang());
    programs.put("good");
    begin({{"terminal"}});
    ASSERT_TRUE(turnLoopUntil([&] { return programs.pids().size() == 1; }));
    std::optional<bool> other;
    const auto launchOther = [&]() -> Task<> {
        std::vector<Command> commands = {{"good"}};
        other = co_await launcher->launchFirst(std::move(commands));
    };
    const Task<> second = launchOther();
    EXPECT_TRUE(turnLoopUntil([&] { return other.has_value(); }));
    EXPECT_EQ(result, std::nullopt);
    clock.advance(ChildLauncher::patience);
    EXPECT_EQ(result, true);
}

} // namespace
} // namespace vellumor::childLauncherTest
