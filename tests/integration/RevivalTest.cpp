// The revival of a token with nothing faked: a `claude` of the test's own, found and run through
// real shells that read the start-up files of a home of their own.

#include "async/LiveClock.h"
#include "platform/linux/LoginShell.h"
#include "platform/linux/QtProcessRunner.h"
#include "support/FakeClock.h"
#include "support/ProcessTesting.h"
#include "usage/ClaudeBinaryFinder.h"
#include "usage/HeadlessUsage.h"
#include "usage/TokenReviver.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vellumor::revivalTest {
namespace {

using namespace std::chrono_literals;
using Attempt = TokenReviver::Attempt;
using test::contentsOf;
using test::FakeClock;
using test::TempFolder;
using Path = std::optional<std::string>;
using Texts = std::vector<std::string>;

Texts split(const std::string& bytes)
{
    Texts texts;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto end = bytes.find('\0', at);
        texts.push_back(bytes.substr(at, end - at));
        at = end + 1;
    }
    return texts;
}

// The finder, the runner and the reviver over processes that go by `clock`.
struct Revival {
    QtProcessRunner processes;
    Worker worker;
    FileStore files;
    PersistedClaudePath persisted;
    ClaudeBinaryFinder finder;
    HeadlessUsage headless;
    TokenReviver reviver;

    Revival(Clock& clock, const Environment& environment, const std::string& home)
        : processes(clock)
        , persisted(files, home + "/claude-path.json")
        , finder(processes, worker, persisted,
                 {environment, home, LoginShell::path(environment), home + "/revive"})
        , headless(processes, worker, files, {environment, home, LoginShell::path(environment)})
    {
        reviver.workDir = home + "/revive";
        reviver.pathOverride = [] { return std::nullopt; };
        reviver.resolveBinary = [this](Path preference) {
            return finder.resolveClaudeBinary(std::move(preference));
        };
        reviver.runUsage = [this](std::string binary, std::string configDir, std::string workDir) {
            return headless.spawnUsage(std::move(binary), std::move(configDir), std::move(workDir));
        };
    }
};

struct RevivalTest : testing::TestWithParam<const char*> {
    TempFolder folder;
    std::string home = folder.makeFolder("home");
    std::string tools = folder.makeFolder("home/my tools");
    std::string standIn = home + "/my tools/claude";
    Environment environment = {{"HOME", home},
                               {"SHELL", std::string("/bin/") + GetParam()},
                               {"PATH", "/usr/bin:/bin"},
                               {"LC_ALL", "C.UTF-8"},
                               {"CLAUDE_CONFIG_DIR", "/elsewhere"},
                               {"VELLUMOR_API_BASE", "http://127.0.0.1:1"},
                               {"VELLUMOR_DIAG", "0"}};
    LiveClock live;
    FakeClock fake; // for what takes long

    RevivalTest()
    {
        folder.makeFolder("home/revive");
        folder.put("home/.zshrc", ". \"$HOME/rc\"\n");
        folder.put("home/.bashrc", "case $- in *i*) ;; *) return ;; esac\n. \"$HOME/rc\"\n");
        folder.put("home/.profile", "if [ -n \"$BASH_VERSION\" ]; then . \"$HOME/.bashrc\"; "
                                    "else . \"$HOME/rc\"; fi\n");
        putStartUp("PATH=\"$HOME/my tools:$PATH\"; export PATH\n");
        putStandIn(":");
    }
    // What a test has left running.
    ~RevivalTest() override
    {
        for (const pid_t pid : test::pidsIn(home + "/pids"))
            ::kill(pid, SIGKILL);
    }

    // What every interactive login shell of this home does first.
    void putStartUp(const std::string& script) const
    {
        folder.put("home/rc", "echo noise of the shell >&2\n" + script);
    }
    // A `claude` that notes what it was given, speaks on both outputs, and does `script`.
    void putStandIn(const std::string& script) const
    {
        putExecutable("home/my tools/claude",
                      "printf '%s\\0' \"$@\" >\"$HOME/arguments\"\n"
                      "env -0 >\"$HOME/environment\"\n"
                      "pwd -P >\"$HOME/folder\"\n"
                      "echo marker-token-5f1c; echo marker-token-5f1c >&2\n" +
                          script + "\n");
    }
    std::string putExecutable(const std::string& name, const std::string& script) const
    {
        const std::string path = folder.put(name, "#!/bin/sh\n" + script);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    [[nodiscard]] static Account account(const std::string& configDir)
    {
        Account made;
        made.displayName = "Work";
        made.configDir = configDir;
        return made;
    }
    Attempt revive(const std::string& configDir) const
    {
        LiveClock clock;
        Revival revival(clock, environment, home);
        return QCoro::waitFor(revival.reviver.revive(account(configDir), clock.now(), false));
    }
    [[nodiscard]] Path find(Revival& revival) const
    {
        return QCoro::waitFor(revival.finder.find(std::nullopt));
    }
    // The variable as the stand-in has seen it.
    [[nodiscard]] Path seen(const std::string& name) const
    {
        for (const std::string& text : split(contentsOf(home + "/environment"))) {
            if (text.starts_with(name + "="))
                return text.substr(name.size() + 1);
        }
        return std::nullopt;
    }
    // As the clock of a test that takes long: what is due at once does come.
    bool turnLoopUntil(const std::function<bool()>& done)
    {
        return test::turnLoopUntil([&] {
            fake.advance(0ms);
            return done();
        });
    }
};

INSTANTIATE_TEST_SUITE_P(Shells, RevivalTest, testing::Values("zsh", "bash", "dash"),
                         [](const auto& shell) { return std::string(shell.param); });

TEST_P(RevivalTest, theShellIsTheOneOfTheUser)
{
    EXPECT_EQ(LoginShell::path(environment), std::string("/bin/") + GetParam());
}

TEST_P(RevivalTest, theProgramIsFoundThroughTheStartUpFilesAndNoted)
{
    Revival revival(live, environment, home);
    EXPECT_EQ(find(revival), standIn);
    EXPECT_EQ(QCoro::waitFor(revival.finder.resolveClaudeBinary(std::nullopt)), standIn);
    EXPECT_EQ(revival.persisted.read(), standIn);
}

TEST_P(RevivalTest, theProgramWritesItsCredentialWhereTheAccountKeepsIt)
{
    const std::string dir = folder.makeFolder("home/.claude-work");
    putStandIn("echo new >\"$CLAUDE_CONFIG_DIR/.credentials.json\"");
    folder.put("home/.claude-work/.credentials.json", "old\n");
    EXPECT_EQ(revive(dir), Attempt::completed);
    EXPECT_EQ(contentsOf(dir + "/.credentials.json"), "new\n");
}

TEST_P(RevivalTest, aProgramThatDoesNothingIsCompletedToo)
{
    const std::string dir = folder.makeFolder("home/.claude-work");
    folder.put("home/.claude-work/.credentials.json", "old\n");
    EXPECT_EQ(revive(dir), Attempt::completed);
    EXPECT_EQ(contentsOf(dir + "/.credentials.json"), "old\n");
}

TEST_P(RevivalTest, aProgramThatFailsIsToldInTheLogWithoutAWordOfWhatItSaid)
{
    putStandIn("exit 3");
    testing::internal::CaptureStderr();
    EXPECT_EQ(revive(home + "/.claude"), Attempt::failed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[revive] Work: running headless /usage (" + standIn +
                  ") to refresh expired token\n[revive] Work: /usage failed (exit 3)\n");
}

TEST_P(RevivalTest, aProgramThatASignalEndsHasFailed)
{
    putStandIn("kill -KILL $$");
    EXPECT_EQ(revive(home + "/.claude"), Attempt::failed);
}

TEST_P(RevivalTest, aProgramThatHasGoneSinceItWasFoundHasFailed)
{
    Revival revival(live, environment, home);
    const auto reviveNow = [&] {
        return QCoro::waitFor(revival.reviver.revive(account(home + "/.claude"), live.now(), true));
    };
    EXPECT_EQ(reviveNow(), Attempt::completed);
    std::filesystem::remove(standIn);
    EXPECT_EQ(reviveNow(), Attempt::failed);
}

TEST_P(RevivalTest, aWorkFolderThatHasGoneIsMadeAnew)
{
    std::filesystem::remove(home + "/revive");
    Revival revival(live, environment, home);
    EXPECT_EQ(
        QCoro::waitFor(revival.headless.spawnUsage(standIn, home + "/.claude", home + "/revive")),
        0);
    EXPECT_TRUE(std::filesystem::is_directory(home + "/revive"));
    EXPECT_EQ(test::modeOf(home + "/revive"), 0700U);
}

TEST_P(RevivalTest, withoutAWorkFolderNothingRuns)
{
    std::filesystem::remove(home + "/revive");
    std::ofstream(home + "/revive") << "in its place";
    Revival revival(live, environment, home);
    EXPECT_EQ(
        QCoro::waitFor(revival.headless.spawnUsage(standIn, home + "/.claude", home + "/revive")),
        ProcessResult::notLaunched);
    EXPECT_EQ(contentsOf(home + "/arguments"), "");
}

// Whatever is in the program's path, it reaches the shell as that one path.
TEST_P(RevivalTest, aProgramOfAnyNameIsRunAsThatOnePath)
{
    Revival revival(live, environment, home);
    for (const std::string name : {"with blank", "it's", "a\nline", "-leading", "$HOME", "`id`",
                                   "\"q\"", "caf\u00E9", "semi;colon"}) {
        SCOPED_TRACE(name);
        const std::string programs = home + "/programs/" + name;
        std::filesystem::create_directories(programs);
        const std::string program = programs + "/claude " + name;
        std::filesystem::copy_file(standIn, program);
        EXPECT_EQ(QCoro::waitFor(
                      revival.headless.spawnUsage(program, home + "/.claude", home + "/revive")),
                  0);
        EXPECT_NE(contentsOf(home + "/arguments"), "");
        std::filesystem::remove(home + "/arguments");
    }
}

TEST_P(RevivalTest, theProgramIsGivenTheCommandAndNothingThatIsMeantForVellumor)
{
    EXPECT_EQ(revive(home + "/.claude"), Attempt::completed);
    EXPECT_EQ(split(contentsOf(home + "/arguments")), (Texts{"-p", "/usage"}));
    EXPECT_EQ(contentsOf(home + "/folder"), home + "/revive\n");
    EXPECT_EQ(contentsOf(home + "/environment").find("VELLUMOR_"), std::string::npos);
    EXPECT_EQ(seen("HOME"), home);
    EXPECT_EQ(seen("LC_ALL"), "C.UTF-8");
    EXPECT_TRUE(seen("PATH").value_or("").starts_with(tools + ":"));
}

TEST_P(RevivalTest, forTheDefaultDirectoryNoVariableNamesIt)
{
    EXPECT_EQ(revive(home + "/.claude"), Attempt::completed);
    EXPECT_EQ(seen("CLAUDE_CONFIG_DIR"), std::nullopt);
}

TEST_P(RevivalTest, anyOtherDirectoryIsNamedAsItStandsOnDisk)
{
    const std::pair<const char*, const char*> rows[] = {
        // in the account and on disk
        {".claude-work", ".claude-work"},
        {"my work", "my work"},
        {"it's \"$x\" `y` \\ !z", "it's \"$x\" `y` \\ !z"},
        {"two\nlines\n", "two\nlines\n"},
        {"caf\u00E9 's", "cafe\u0301 's"},
        {"caf\u00E9-composed", "caf\u00E9-composed"},
    };
    for (const auto& [given, onDisk] : rows) {
        const std::string dir = folder.makeFolder(std::string("home/") + onDisk);
        putStandIn("echo new >\"$CLAUDE_CONFIG_DIR/.credentials.json\"");
        EXPECT_EQ(revive(home + "/" + given), Attempt::completed);
        EXPECT_EQ(seen("CLAUDE_CONFIG_DIR"), dir);
        EXPECT_EQ(contentsOf(dir + "/.credentials.json"), "new\n");
    }
}

TEST_P(RevivalTest, whatIsNoPathOfAProgramIsPassedOver)
{
    const char* const scripts[] = {
        "alias claude='my tools/claude --fast'",
        "claude() { return 0; }",
        "claude() { return 0; }\nPATH=\"$HOME/my tools:$PATH\"",
        "echo Welcome\nPATH=\"$HOME/my tools:$PATH\"",
        "exit 0",
        "exit 1",
        "exec </dev/null >/dev/null\nPATH=\"$HOME/my tools:$PATH\"",
        ")(", // an error in the file
    };
    const std::string persisted = putExecutable("home/persisted/claude", "");
    for (const char* script : scripts) {
        putStartUp(script);
        Revival revival(live, environment, home);
        revival.persisted.note(persisted);
        EXPECT_EQ(find(revival), persisted) << script;
    }
}

TEST_P(RevivalTest, aDaemonOfTheStartUpFilesThatHoldsTheOutputIsNotWaitedFor)
{
    putStartUp("setsid sleep 60 &\necho $! >>\"$HOME/pids\"\n"
               "PATH=\"$HOME/my tools:$PATH\"; export PATH\n");
    EXPECT_EQ(revive(home + "/.claude"), Attempt::completed);
    EXPECT_EQ(test::pidsIn(home + "/pids").size(), 2U) << "one of the search, one of the run";
    EXPECT_EQ(split(contentsOf(home + "/arguments")), (Texts{"-p", "/usage"}));
}

TEST_P(RevivalTest, aDaemonOfTheProgramIsNotWaitedForAndLivesOn)
{
    putStandIn("setsid sleep 60 &\necho $! >>\"$HOME/pids\"");
    EXPECT_EQ(revive(home + "/.claude"), Attempt::completed);
    const auto pids = test::pidsIn(home + "/pids");
    ASSERT_EQ(pids.size(), 1U);
    EXPECT_FALSE(test::isGone(pids.front()));
}

TEST_P(RevivalTest, aProgramThatHangsIsEndedAfterTwoMinutesWithAllItHasStarted)
{
    putStandIn("sleep 600 &\necho $! >>\"$HOME/pids\"\necho $$ >>\"$HOME/pids\"\nwait");
    Revival revival(fake, environment, home);
    std::optional<int> status;
    const auto run = [&]() -> Task<> {
        status = co_await revival.headless.spawnUsage(standIn, home + "/.claude", home + "/revive");
    };
    const Task<> task = run();
    const auto pids = [&] { return test::pidsIn(home + "/pids"); };
    ASSERT_TRUE(turnLoopUntil([&] { return pids().size() == 2; }));
    fake.advance(120s - 1ms);
    EXPECT_FALSE(test::isGone(pids().back()));
    fake.advance(1ms);
    EXPECT_TRUE(turnLoopUntil([&] { return test::areGone(pids()); }));
    fake.advance(2s);
    ASSERT_TRUE(turnLoopUntil([&] { return status.has_value(); }));
    EXPECT_NE(status, 0);
}

TEST_P(RevivalTest, aStartUpFileThatHangsCostsTenSecondsAndTheShellsAnswer)
{
    // An interactive shell takes no notice of a request to end.
    putStartUp("echo $$ >>\"$HOME/pids\"\nwhile :; do sleep 0.02; done");
    const std::string persisted = putExecutable("home/persisted/claude", "");
    Revival revival(fake, environment, home);
    revival.persisted.note(persisted);
    Path found;
    const auto search = [&]() -> Task<> { found = co_await revival.finder.find(std::nullopt); };
    const Task<> task = search();
    const auto pids = [&] { return test::pidsIn(home + "/pids"); };
    ASSERT_TRUE(turnLoopUntil([&] { return pids().size() == 1; }));
    fake.advance(10s - 1ms);
    EXPECT_FALSE(test::isGone(pids().front()));
    fake.advance(1ms);
    fake.advance(2s);
    ASSERT_TRUE(turnLoopUntil([&] { return task.isReady(); }));
    EXPECT_EQ(found, persisted);
    EXPECT_TRUE(test::areGone(pids()));
}

TEST_P(RevivalTest, theLoopTurnsAllTheWhile)
{
    putStartUp("sleep 0.1\nPATH=\"$HOME/my tools:$PATH\"; export PATH\n");
    putStandIn("sleep 0.1");
    int turns = 0;
    QTimer ticking;
    QObject::connect(&ticking, &QTimer::timeout, [&turns] { ++turns; });
    ticking.start(5);
    EXPECT_EQ(revive(home + "/.claude"), Attempt::completed);
    EXPECT_GE(turns, 20) << "of some 60 in 300 ms";
}

} // namespace
} // namespace vellumor::revivalTest
