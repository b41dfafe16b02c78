#include "platform/linux/QtProcessRunner.h"

#include "async/LiveClock.h"
#include "support/ProcessTesting.h"

#include <QCoroCore>
#include <QLoggingCategory>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellumor::qtProcessRunnerTest {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using test::TempFolder;
using Texts = std::vector<std::string>;

// Whatever Qt complains of while this lives.
class Complaints {
public:
    Complaints()
        : m_before(qInstallMessageHandler(&note))
    {
        texts().clear();
    }
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;
    ~Complaints() { qInstallMessageHandler(m_before); }

    static Texts& texts()
    {
        static Texts all;
        return all;
    }

private:
    static void note(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        texts().push_back(text.toStdString());
    }

    QtMessageHandler m_before;
};

struct QtProcessRunnerTest : testing::Test {
    TempFolder folder;
    LiveClock clock;
    QtProcessRunner runner{clock};
    const Complaints complaints;

    void TearDown() override { EXPECT_EQ(Complaints::texts(), Texts{}); }

    [[nodiscard]] ProcessRequest shell(const std::string& script) const
    {
        return test::shellRequest(folder, script);
    }
    // For a program without a shell around it, which would add to the environment.
    [[nodiscard]] ProcessRequest program(const std::string& path, Texts arguments) const
    {
        ProcessRequest request = shell("");
        request.program = path;
        request.arguments = std::move(arguments);
        return request;
    }
    ProcessResult run(ProcessRequest request)
    {
        return QCoro::waitFor(runner.run(std::move(request)));
    }
    std::string outputOf(const std::string& script) { return run(shell(script)).output; }
};

TEST_F(QtProcessRunnerTest, givesTheExitStatus)
{
    for (const int status : {0, 1, 3, 127, 255})
        EXPECT_EQ(run(shell("exit " + std::to_string(status))).status, status);
}

TEST_F(QtProcessRunnerTest, aChildThatASignalEndsGivesTheSignalsNumber)
{
    for (const int signal : {SIGTERM, SIGKILL, SIGINT, SIGABRT})
        EXPECT_EQ(run(shell("kill -" + std::to_string(signal) + " $$")).status, signal);
}

TEST_F(QtProcessRunnerTest, whatCannotBeStartedIsToldAndSaysNothing)
{
    const std::string programs[] = {
        folder.file("missing"),
        folder.makeFolder("folder"),
        folder.put("plain", "#!/bin/sh\n"),
        "",
    };
    for (const std::string& path : programs) {
        const ProcessResult result = run(program(path, {}));
        EXPECT_EQ(result.status, ProcessResult::notLaunched) << path;
        EXPECT_EQ(result.output, "");
        EXPECT_FALSE(result.isOutputCut);
    }
    const std::string broken = folder.put("broken", "#!/no/such/interpreter\n");
    ::chmod(broken.c_str(), 0700);
    EXPECT_EQ(run(program(broken, {})).status, ProcessResult::notLaunched);
}

TEST_F(QtProcessRunnerTest, withoutItsWorkingDirectoryNothingIsStarted)
{
    for (const std::string& path : {folder.file("missing"), folder.put("file", "")}) {
        ProcessRequest request = shell("echo >started");
        request.workingDirectory = path;
        EXPECT_EQ(run(request).status, ProcessResult::notLaunched);
        EXPECT_EQ(test::contentsOf(folder.file("started")), "");
    }
}

TEST_F(QtProcessRunnerTest, keepsTheOutputUpToTheLimit)
{
    struct Row {
        std::string written;
        std::size_t limit;
        std::string kept;
        bool isCut;
    };
    const Row rows[] = {
        {"", 5, "", false},           {"1234", 5, "1234", false},
        {"12345", 5, "12345", false}, {"123456", 5, "12345", true},
        {"12", 1, "1", true},         {"a\0b\r\n\xFF"s, 100, "a\0b\r\n\xFF"s, false},
    };
    for (const auto& [written, limit, kept, isCut] : rows) {
        folder.put("text", written);
        ProcessRequest request = shell("cat text; exit 7");
        request.outputLimit = limit;
        const ProcessResult result = run(request);
        EXPECT_EQ(result.output, kept);
        EXPECT_EQ(result.isOutputCut, isCut) << written << " to " << limit;
        EXPECT_EQ(result.status, 7);
    }
}

TEST_F(QtProcessRunnerTest, keepsOutputThatComesInPiecesAndBeyondThePipesSize)
{
    ProcessRequest request = shell("for i in 1 2 3; do head -c 100000 /dev/zero; done; printf end");
    request.outputLimit = 300002;
    const ProcessResult result = run(request);
    ASSERT_EQ(result.output.size(), 300002U);
    EXPECT_EQ(result.output.substr(299999), "\0en"s);
    EXPECT_TRUE(result.isOutputCut);
}

TEST_F(QtProcessRunnerTest, withoutALimitTheOutputIsThrownAway)
{
    ProcessRequest request = shell("[ /proc/self/fd/1 -ef /dev/null ] || exit 1; echo text");
    request.outputLimit = 0;
    const ProcessResult result = run(request);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_FALSE(result.isOutputCut);
}

TEST_F(QtProcessRunnerTest, errorsAreThrownAway)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(outputOf("echo text; echo error >&2"), "text\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(QtProcessRunnerTest, standardInputIsAtItsEnd)
{
    EXPECT_EQ(outputOf("cat; echo end; read line || echo none"), "end\nnone\n");
}

TEST_F(QtProcessRunnerTest, aChildLeadsASessionAndAGroupWithoutATerminal)
{
    // Its id, group, session and terminal, and what opening the terminal comes to.
    std::istringstream output(outputOf("echo $$; cut -d' ' -f5,6,7 /proc/$$/stat; "
                                       "(: </dev/tty) 2>&1 || echo no terminal"));
    std::string pid;
    std::string group;
    std::string session;
    std::string terminal;
    output >> pid >> group >> session >> terminal;
    EXPECT_EQ(group, pid);
    EXPECT_EQ(session, pid);
    EXPECT_EQ(terminal, "0");
    EXPECT_NE(output.str().find("no terminal"), std::string::npos);
}

TEST_F(QtProcessRunnerTest, runsInItsWorkingDirectory)
{
    for (const char* name : {"a b", "it's\n\"$x\"", "-dash", "\u00E9", "e\u0301", "latin-\xE9"}) {
        ProcessRequest request = shell("pwd -P");
        request.workingDirectory = folder.makeFolder(name);
        EXPECT_EQ(run(request).output, request.workingDirectory + "\n");
    }
}

TEST_F(QtProcessRunnerTest, passesOnEveryArgumentByteForByte)
{
    const Texts arguments = {"%s\\n",     "plain",     "",        "a b",        "it's",    "\"x\"",
                             "new\nline", "$HOME",     "*",       "-v",         "--",      "\\",
                             "tab\t",     "caf\u00E9", "e\u0301", "latin-\xE9", "\xFF\xFE"};
    std::string expected;
    for (std::size_t i = 1; i < arguments.size(); ++i)
        expected += arguments[i] + "\n";
    EXPECT_EQ(run(program("/usr/bin/printf", arguments)).output, expected);
}

TEST_F(QtProcessRunnerTest, runsAProgramOfAnyName)
{
    for (const char* name : {"a b/x", "it's\n\"$x\"", "-dash", "e\u0301", "latin-\xE9"}) {
        const std::string path = folder.put(name, "#!/bin/sh\nprintf '%s' \"$0\"\n");
        ::chmod(path.c_str(), 0700);
        EXPECT_EQ(run(program(path, {})).output, path);
    }
}

TEST_F(QtProcessRunnerTest, aChildHasTheGivenEnvironmentAndNoMore)
{
    ::setenv("VELLUMOR_TEST_LEAK", "x", 1);
    const Environment rows[] = {
        {},
        {{"A", "1"}},
        {{"A", ""},
         {"B", "x=y"},
         {"C", "new\nline"},
         {"D", "caf\u00E9 e\u0301"},
         {"LATIN", "\xE9t\xE9"},
         {"N\xC3\x84ME", " blank "}},
    };
    for (const Environment& environment : rows) {
        ProcessRequest request = program("/usr/bin/env", {"-0"});
        request.environment = environment;
        std::string expected;
        for (const auto& [name, value] : environment)
            expected += name + "=" + value + "\0"s;
        const ProcessResult result = run(request);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output, expected);
    }
    ::unsetenv("VELLUMOR_TEST_LEAK");
}

TEST_F(QtProcessRunnerTest, aChildInheritsNoOpenFileOfTheProgram)
{
    // As a library may have left it: not marked to be closed.
    const int open = ::open("/dev/null", O_RDONLY);
    ASSERT_GT(open, 2);
    EXPECT_EQ(outputOf("ls /proc/$$/fd; :"), "0\n1\n2\n");
    EXPECT_EQ(::fcntl(open, F_GETFD), 0) << "the program's own file is as it was";
    ::close(open);
}

TEST_F(QtProcessRunnerTest, aChildThatFloodsItsOutputCostsNoMoreMemoryThanTheLimit)
{
    constexpr long allowed = 64L * 1024; // in KiB
    const auto peak = [] {               // in KiB
        const std::string status = test::contentsOf("/proc/self/status");
        return std::stol(status.substr(status.find("VmHWM:") + 6));
    };
    const long before = peak();
    ProcessRequest request = shell("head -c 500M /dev/zero");
    request.outputLimit = 1000;
    const ProcessResult result = run(request);
    EXPECT_EQ(result.output, std::string(1000, '\0'));
    EXPECT_TRUE(result.isOutputCut);
    EXPECT_EQ(result.status, 0);
    EXPECT_LT(peak() - before, allowed);
}

TEST_F(QtProcessRunnerTest, theLoopTurnsWhileTenChildrenHang)
{
    int turns = 0;
    QTimer ticking;
    QObject::connect(&ticking, &QTimer::timeout, [&turns] { ++turns; });
    ticking.start(5);
    QElapsedTimer elapsed;
    elapsed.start();
    std::vector<Task<ProcessResult>> tasks;
    for (int i = 0; i < 10; ++i) {
        ProcessRequest request = shell("exec sleep 60");
        request.timeLimit = 500ms;
        tasks.push_back(runner.run(request));
    }
    for (auto& task : tasks)
        EXPECT_EQ(QCoro::waitFor(task).status, SIGTERM);
    EXPECT_GE(turns, 20);
    EXPECT_GE(elapsed.elapsed(), 500);
    EXPECT_LT(elapsed.elapsed(), 10 * 500) << "they hang side by side";
}

} // namespace
} // namespace vellumor::qtProcessRunnerTest
