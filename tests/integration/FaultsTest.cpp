// The real program where its files, or what it starts, are not as they should be.

#include "integration/BusWorld.h"
#include "store/AccountFiles.h"
#include "support/ProcessTesting.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

namespace vellumor::faultsTest {
namespace {

using namespace std::chrono_literals;
using test::ProgramWorld;

struct FaultsTest : testing::Test, test::BusWorld {};

TEST_F(FaultsTest, whereNoFileCanBeMadeItFetchesAndShowsAndWritesNothing)
{
    hasten(60);
    world.signIn(".claude", "a-token");
    world.environment["XDG_DATA_HOME"] = world.folder.put("home/file", "as it was") + "/data";
    const auto before = world.filesInHome();
    const auto program = world.start();
    ASSERT_TRUE(waitUntilShown("62%"));
    percent = 70;
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(waitUntilShown("70%"));
    EXPECT_GE(requests(), 2U);
    EXPECT_EQ(world.filesInHome(), before);
    EXPECT_EQ(test::contentsOf(world.home + "/file"), "as it was");
    EXPECT_EQ(program->wait(0ms), std::nullopt);
}

// What may stand in the place of a file.
const std::pair<const char*, std::function<void(const std::string&)>> rubbish[] = {
    {"random bytes",
     [](const std::string& path) {
         std::mt19937 random; // always the same
         std::string bytes(4096, '\0');
         for (char& byte : bytes)
             byte = static_cast<char>(random());
         std::ofstream(path, std::ios::binary) << bytes;
     }},
    {"a pipe", [](const std::string& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
    {"a folder", [](const std::string& path) { std::filesystem::create_directory(path); }},
    {"a huge file",
     [](const std::string& path) {
         std::ofstream(path) << "{";
         std::filesystem::resize_file(path, 1ULL << 40U); // it takes no room
     }},
};

struct RubbishTest : FaultsTest {
    // Every file that a start reads: what a start has made, and what it only looks for.
    [[nodiscard]] std::vector<std::string> filesReadAtStart() const
    {
        auto files = world.filesInHome();
        std::erase(files, ".claude/.credentials.json"); // the one account that is well
        for (const char* const own : {"preferences", "updates", "telemetry", "onboarding",
                                      "claude-path", "crash-state", "accounts"})
            files.push_back(std::string(".local/share/Vellumor/") + own + ".json");
        for (const char* const dir : {".claude", ".claude-work"}) {
            files.push_back(
                AccountFiles::path(".local/share/Vellumor/receipts", world.home + "/" + dir));
            files.push_back(std::string(dir) + "/.claude.json");
            files.push_back(std::string(dir) + "/vscode-claude-status-cache.json");
        }
        for (const char* const other :
             {".claude.json", ".claude-work/.credentials.json",
              ".local/share/Quorle/presence/ostrelline.json", ".local/share/Quorle/accounts.json"})
            files.emplace_back(other);
        return files;
    }
};

TEST_F(RubbishTest, whateverStandsInThePlaceOfEachFileTheAccountThatIsWellIsFetched)
{
    world.signIn(".claude", "well-token");
    world.signIn(".claude-work", "other-token");
    {
        const auto program = world.start("first");
        ASSERT_TRUE(ProgramWorld::waitUntil([this] {
            return requests() == 2 && world.hasFile(".local/share/Vellumor/usage-snapshots.json") &&
                   world.hasFile(".local/share/Quorle/presence/vellumor.json");
        }));
    }
    const auto files = filesReadAtStart();
    std::size_t asked = server.requestsWith("well-token");
    for (const auto& [what, put] : rubbish) {
        SCOPED_TRACE(what);
        for (const std::string& file : files) {
            const std::string path = world.home + "/" + file;
            std::filesystem::remove_all(path);
            std::filesystem::create_directories(std::filesystem::path(path).parent_path());
            put(path);
        }
        ++percent;
        const auto program = world.start(what);
        ASSERT_TRUE(waitUntilShown(std::to_string(percent) + "%")) << world.log(what);
        EXPECT_EQ(server.requestsWith("well-token"), ++asked);
        EXPECT_EQ(server.requestsWith("other-token"), 1U);
        EXPECT_EQ(program->wait(0ms), std::nullopt);
    }
}

struct HangingClaudeTest : FaultsTest {
    std::string pids = world.home + "/pids";

    HangingClaudeTest()
    {
        const std::string claude =
            world.folder.put("home/bin/claude", "#!/bin/sh\n"
                                                "sleep 600 &\necho $! >>\"$HOME/pids\"\n"
                                                "echo $$ >>\"$HOME/pids\"\nwait\n");
        std::filesystem::permissions(claude, std::filesystem::perms::owner_all);
        world.environment["VELLUMOR_CLAUDE_PATH"] = claude;
        world.folder.put("home/.claude-work/.credentials.json",
                         R"({"claudeAiOauth":{"accessToken":"old-token","expiresAt":1000}})");
        world.signIn(".claude", "well-token");
    }
    ~HangingClaudeTest() override
    {
        for (const pid_t pid : test::pidsIn(pids))
            ::kill(pid, SIGKILL);
    }
    [[nodiscard]] bool waitUntilItHangs() const
    {
        return ProgramWorld::waitUntil([this] { return test::pidsIn(pids).size() == 2; });
    }
};

TEST_F(HangingClaudeTest, theOtherAccountCanBeFetchedMeanwhileAndAfterTwoMinutesAllOfItIsGone)
{
    hasten(60);
    const auto program = world.start();
    ASSERT_TRUE(waitUntilItHangs());
    ASSERT_TRUE(waitUntilShown("62%"));
    percent = 70;
    ASSERT_TRUE(refresh());
    ASSERT_TRUE(waitUntilShown("70%"));
    EXPECT_FALSE(test::isGone(test::pidsIn(pids).front()));
    EXPECT_TRUE(ProgramWorld::waitUntil([this] { return test::areGone(test::pidsIn(pids)); }));
    EXPECT_EQ(server.requestsWith("old-token"), 0U);
    EXPECT_EQ(program->wait(0ms), std::nullopt);
}

} // namespace
} // namespace vellumor::faultsTest
