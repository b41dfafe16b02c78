#include "crash/CrashFiles.h"

#include "accounts/SharedAccountsStore.h"
#include "accounts/StoredAccount.h"
#include "base/FileHandle.h"
#include "base/Json.h"
#include "store/OnboardingStore.h"
#include "store/Preferences.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

namespace vellumor::crashTest {

using test::CrashFile;

namespace {

int killsAsked()
{
    const char* text = std::getenv("VELLUMOR_KILLS");
    return text != nullptr ? std::atoi(text) : 100;
}

struct RunningWriter {
    pid_t process = -1;
    FileHandle reports;
};

// `first` tells with which file it begins.
RunningWriter start(const std::string& base, int first)
{
    const std::string argument = std::to_string(first);
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    FileHandle reading(ends[0]);
    const FileHandle writing(ends[1]);
    const pid_t process = ::fork();
    if (process == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execl(VELLUMOR_CRASH_WRITER, VELLUMOR_CRASH_WRITER, base.c_str(), argument.c_str(),
                nullptr);
        ::_exit(127);
    }
    return {process, std::move(reading)};
}

// Until the first write has returned; a slow machine takes its time over starting a program.
void waitForReport(const RunningWriter& writer)
{
    pollfd waiting{writer.reports.get(), POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, 30000), 1) << "the writer does not get to write";
}

// Kills it, and gives the last number that it reported of each file.
std::map<CrashFile, int> killNow(const RunningWriter& writer)
{
    EXPECT_EQ(::kill(writer.process, SIGKILL), 0);
    int status = 0;
    EXPECT_EQ(::waitpid(writer.process, &status, 0), writer.process);
    EXPECT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself: " << status;
    std::map<CrashFile, int> last;
    test::CrashReport report{};
    while (::read(writer.reports.get(), &report, sizeof report) == sizeof report)
        last[report.file] = report.number;
    return last;
}

// The number that stands in a file, 0 when there is no such file, -1 when the file is damaged.
int numberIn(CrashFile file, const std::string& path)
{
    const std::string bytes = test::contentsOf(path);
    if (!std::filesystem::exists(path))
        return 0;
    const auto json = parseJsonObject(bytes);
    if (!json || !json->contains("schemaVersion"))
        return -1;
    const auto inName = [](const std::string& name) {
        return name.starts_with("n") ? std::stoi(name.substr(1)) : 0;
    };
    switch (file) {
    case CrashFile::preferences: {
        const auto preferences = Preferences::decode(bytes);
        if (!preferences || json->size() != 22)
            return -1;
        const int number = std::stoi(preferences->claudeBinaryPath.substr(1));
        return static_cast<int>(preferences->customThresholds.size()) == number % 100 ? number : -1;
    }
    case CrashFile::onboarding:
        return OnboardingState::decode(bytes).value_or(OnboardingState{1, -1}).completedVersion;
    case CrashFile::accounts: {
        const StoredAccounts records = decodeStoredAccounts(bytes);
        return records.size() == 1 ? inName(records.begin()->second.name) : -1;
    }
    case CrashFile::sharedAccounts: {
        const auto decoded = SharedAccountsStore::decode(bytes);
        const auto ours = decoded.identities.find(test::crashAccountDir);
        if (decoded.malformed != 0)
            return -1;
        return ours == decoded.identities.end() ? 0 : inName(ours->second.name);
    }
    case CrashFile::counters:
        return json->value("number", 0);
    }
    return -1;
}

// Keys of others, which no kill may lose.
const std::string foreignAccounts =
    R"({"schemaVersion":1,"theirs":18446744073709551615,"accounts":{"/home/user/.claude-other":)"
    R"({"id":"zzz999","name":"Other","order":7,"colour":"red"}}})";
const std::string foreignCounters = R"({"schemaVersion":1,"theirs":[0.1,18446744073709551615]})";

void expectForeignKeys(const std::string& base)
{
    const auto accounts =
        Json::parse(test::contentsOf(test::crashPath(base, CrashFile::sharedAccounts)));
    const Json foreign = Json::parse(foreignAccounts);
    const std::string other = "/home/user/.claude-other";
    EXPECT_EQ(accounts["theirs"], foreign["theirs"]);
    EXPECT_EQ(accounts["accounts"][other], foreign["accounts"][other]);
    const auto counters = Json::parse(test::contentsOf(test::crashPath(base, CrashFile::counters)));
    EXPECT_EQ(counters["theirs"], Json::parse(foreignCounters)["theirs"]);
}

bool isJsonOrHiddenTemporary(const std::string& path)
{
    const std::string name = std::filesystem::path(path).filename().string();
    return name.ends_with(name.starts_with(".") ? ".tmp" : ".json");
}

} // namespace

TEST(Crash, aWriterThatIsKilledAtAnyMomentLeavesEveryFileWholeAndLosesNothingThatStood)
{
    const test::TempFolder base;
    base.put("Quorle/accounts.json", foreignAccounts);
    base.put("Quorle/counters.json", foreignCounters);
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> lives(0, 20000); // microseconds
    std::map<CrashFile, int> stood;
    const int kills = killsAsked();
    for (int kill = 1; kill <= kills; ++kill) {
        const RunningWriter writer = start(base.path(), kill / 4);
        // Every fourth is killed while it starts, perhaps, the others while they write.
        if (kill % 4 != 0)
            waitForReport(writer);
        std::this_thread::sleep_for(std::chrono::microseconds(lives(random)));
        const auto reported = killNow(writer);
        for (const CrashFile file : test::allCrashFiles) {
            SCOPED_TRACE(testing::Message()
                         << "kill " << kill << ", " << test::crashPath("", file));
            const int found = numberIn(file, test::crashPath(base.path(), file));
            const auto last = reported.find(file);
            const int least = std::max(stood[file], last == reported.end() ? 0 : last->second);
            // A write that was under way may have gone through; anything else is as reported. The
            // shared file follows the other list of accounts, and may have been left behind by an
            // earlier kill.
            const int most =
                file == CrashFile::sharedAccounts ? stood[CrashFile::accounts] : least + 1;
            ASSERT_GE(found, least);
            ASSERT_LE(found, most);
            stood[file] = found;
        }
        expectForeignKeys(base.path());
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    for (const CrashFile file : test::allCrashFiles)
        EXPECT_GT(stood[file], kills / 10) << test::crashPath("", file); // it did get to write
    for (const std::string& path : test::filesBelow(base.path()))
        EXPECT_TRUE(isJsonOrHiddenTemporary(path)) << path;
}

} // namespace vellumor::crashTest
