#include "usage/ClaudeBinaryFinder.h"

#include "store/DiskPath.h"
#include "support/FakeProcessRunner.h"
#include "support/TempFolder.h"
#include "usage/ClaudeBinary.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace vellumor::claudeBinaryFinderTest {
namespace {

using namespace std::chrono_literals;
using test::FakeProcessRunner;
using test::TempFolder;

using Path = std::optional<std::string>;

struct ClaudeBinaryFinderTest : testing::Test {
    TempFolder home;
    FakeProcessRunner processes;
    Worker worker;
    FileStore files;
    std::string noteFile = home.file("data/claude-path.json");
    PersistedClaudePath persisted{files, noteFile};
    Environment environment = {{"HOME", home.path()}, {"VELLUMOR_DIAG", "0"}};

    ClaudeBinaryFinderTest() { home.makeFolder("data"); }

    [[nodiscard]] std::string putExecutable(std::string_view name) const
    {
        const std::string path = home.put(name, "#!/bin/sh\n");
        ::chmod(path.c_str(), 0700);
        return path;
    }
    [[nodiscard]] ClaudeBinaryFinder finder()
    {
        return {
            processes, worker, persisted, {environment, home.path(), "/bin/zsh", "/data/revive"}};
    }
    Path find(Path preference = {})
    {
        auto searching = finder();
        return QCoro::waitFor(searching.find(std::move(preference)));
    }
    Path resolve(Path preference = {})
    {
        auto searching = finder();
        return QCoro::waitFor(searching.resolveClaudeBinary(std::move(preference)));
    }
    void shellAnswers(std::string output, int status = 0, bool isCut = false)
    {
        processes.answer({status, std::move(output), isCut});
    }
};

// What lies in the system's own folders stands before everything below the home folder.
Path ofThisMachine()
{
    for (const char* path : {"/opt/homebrew/bin/claude", "/usr/local/bin/claude"}) {
        if (DiskPath::isProgram(path))
            return path;
    }
    return std::nullopt;
}

TEST_F(ClaudeBinaryFinderTest, asksTheLoginShellForTenSecondsAtMost)
{
    environment["LANG"] = "C";
    find();
    ASSERT_EQ(processes.requests.size(), 1U);
    const ProcessRequest& request = processes.requests.front();
    EXPECT_EQ(request.program, "/bin/zsh");
    EXPECT_EQ(request.arguments, (std::vector<std::string>{"-ilc", "command -v claude"}));
    EXPECT_EQ(request.environment, (Environment{{"HOME", home.path()}, {"LANG", "C"}}));
    EXPECT_EQ(request.workingDirectory, "/data/revive");
    EXPECT_EQ(request.timeLimit, 10s);
    EXPECT_GE(request.outputLimit, 4096U);
    EXPECT_LE(request.outputLimit, 1024U * 1024U);
}

TEST_F(ClaudeBinaryFinderTest, theFirstCandidateThatCanBeRunIsFound)
{
    environment["VELLUMOR_CLAUDE_PATH"] = putExecutable("override/claude");
    const std::string preference = putExecutable("preference/claude");
    const std::string which = putExecutable("which/claude");
    persisted.note(putExecutable("persisted/claude"));
    const std::string below[] = {
        putExecutable(".local/bin/claude"),
        putExecutable(".claude/local/claude"),
        putExecutable(".nvm/versions/node/v18.1.0/bin/claude"),
        putExecutable(".nvm/versions/node/v9.2.0/bin/claude"),
        putExecutable(".vscode/extensions/anthropic.claude-code-1.0.10/"
                      "resources/native-binary/claude"),
        putExecutable(".vscode/extensions/anthropic.claude-code-1.0.9/"
                      "resources/native-binary/claude"),
    };
    const auto expectAndTakeAway = [&](const std::string& path, bool isBelow) {
        SCOPED_TRACE(path);
        shellAnswers(which + "\n");
        EXPECT_EQ(find(preference), isBelow ? ofThisMachine().value_or(path) : path);
        ::chmod(path.c_str(), 0600);
    };
    expectAndTakeAway(environment["VELLUMOR_CLAUDE_PATH"], false);
    expectAndTakeAway(preference, false);
    expectAndTakeAway(which, false);
    expectAndTakeAway(*persisted.read(), false);
    for (const std::string& path : below)
        expectAndTakeAway(path, true);
    shellAnswers(which + "\n");
    EXPECT_EQ(find(preference), ofThisMachine());
}

TEST_F(ClaudeBinaryFinderTest, aHomeThatIsDecomposedOnDiskIsSearchedUnderItsComposedName)
{
    const std::string program = putExecutable("jose\u0301/.nvm/versions/node/v22/bin/claude");
    ClaudeBinaryFinder searching(
        processes, worker, persisted,
        {environment, home.file("jos\u00E9"), "/bin/zsh", home.file("jos\u00E9")});
    const Path found = QCoro::waitFor(searching.find(std::nullopt));
    EXPECT_EQ(found, ofThisMachine() ? ofThisMachine() : program);
    EXPECT_EQ(processes.requests.back().workingDirectory, home.file("jose\u0301"));
}

TEST_F(ClaudeBinaryFinderTest, anOverrideThatCannotBeRunLetsTheSearchGoOn)
{
    environment["VELLUMOR_CLAUDE_PATH"] = home.put("plain", "#!/bin/sh\n");
    const std::string preference = putExecutable("preference/claude");
    EXPECT_EQ(find(preference), preference);
}

TEST_F(ClaudeBinaryFinderTest, theShellIsAskedEvenWhereTheFirstCandidateWillDo)
{
    environment["VELLUMOR_CLAUDE_PATH"] = putExecutable("override/claude");
    find();
    EXPECT_EQ(processes.requests.size(), 1U);
}

TEST_F(ClaudeBinaryFinderTest, theShellsAnswerCountsWithoutTheBlanksAroundIt)
{
    const std::string which = putExecutable("which/a b/claude");
    for (const std::string& answer : {which, which + "\n", "\r\n \t" + which + " \r\n\n"}) {
        shellAnswers(answer);
        EXPECT_EQ(find(), which) << answer;
    }
}

TEST_F(ClaudeBinaryFinderTest, anAnswerOfTheShellThatIsNoProgramLetsTheSearchGoOn)
{
    const std::string which = putExecutable("which/claude");
    const std::string latin1 = putExecutable("which/\xE9/claude");
    const std::string next = putExecutable("persisted/claude");
    persisted.note(next);
    const ProcessResult rows[] = {
        {1, which + "\n", false},
        {127, which, false},
        {15, which, false},
        {ProcessResult::notLaunched, "", false},
        {0, which, true}, // more was said than a path
        {0, "", false},
        {0, " \n", false},
        {0, "claude\n", false},
        {0, "alias claude='" + which + "'\n", false},
        {0, "claude: aliased to " + which + "\n", false},
        {0, "Welcome!\n" + which + "\n", false},
        {0, which + "\nGood bye!\n", false},
        {0, latin1 + "\n", false},
        {0, std::string("\0", 1), false},
    };
    for (const ProcessResult& row : rows) {
        processes.answer(row);
        EXPECT_EQ(find(), next) << row.status << ": " << row.output;
    }
}

TEST_F(ClaudeBinaryFinderTest, findingWritesNothing)
{
    const std::string which = putExecutable("which/claude");
    shellAnswers(which);
    EXPECT_EQ(find(), which);
    EXPECT_TRUE(test::namesIn(home.file("data")).empty());
}

TEST_F(ClaudeBinaryFinderTest, whatWasResolvedIsNotedForTheNextTime)
{
    const std::string which = putExecutable("which/claude");
    shellAnswers(which);
    EXPECT_EQ(resolve(), which);
    EXPECT_EQ(persisted.read(), which);
    EXPECT_EQ(resolve(), which) << "the shell finds it no more";
}

TEST_F(ClaudeBinaryFinderTest, thePreferenceIsNotNoted)
{
    const std::string preference = putExecutable("preference/claude");
    EXPECT_EQ(resolve(preference), preference);
    EXPECT_EQ(persisted.read(), std::nullopt);
}

TEST_F(ClaudeBinaryFinderTest, whatIsFoundInsteadOfThePreferenceIsNoted)
{
    const std::string which = putExecutable("which/claude");
    shellAnswers(which);
    EXPECT_EQ(resolve(home.file("gone")), which);
    EXPECT_EQ(persisted.read(), which);
}

TEST_F(ClaudeBinaryFinderTest, aSearchInVainKeepsWhatWasNoted)
{
    const Path noted = home.file("gone");
    persisted.note(*noted);
    EXPECT_EQ(resolve(), ofThisMachine());
    EXPECT_EQ(persisted.read(), ofThisMachine() ? ofThisMachine() : noted);
}

TEST_F(ClaudeBinaryFinderTest, aNoteThatCannotBeWrittenDoesNotHideThePath)
{
    home.put("data/claude-path.json/in-the-way", "");
    const std::string which = putExecutable("which/claude");
    shellAnswers(which);
    EXPECT_EQ(resolve(), which);
}

} // namespace
} // namespace vellumor::claudeBinaryFinderTest
