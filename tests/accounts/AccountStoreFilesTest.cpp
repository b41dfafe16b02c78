#include "accounts/AccountStore.h"

#include "accounts/AccountMerge.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <functional>
#include <tuple>
#include <vector>

namespace vellumor::accountStoreFilesTest {
namespace {

using Names = std::vector<std::string>;

// Changes with every write: a write replaces the file by a new one.
using FileState = std::tuple<ino_t, time_t, long, std::string>;

FileState stateOf(const std::string& path)
{
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec, test::contentsOf(path)};
}

struct AccountStoreFilesTest : testing::Test {
    test::TempFolder folder;
    test::FakeClock clock;
    FileStore files;
    std::string own = folder.file("Vellumor/accounts.json");
    std::string sharedPath = folder.file("Quorle/accounts.json");
    SharedAccountsStore shared{files, sharedPath};

    [[nodiscard]] AccountStore load() const
    {
        return {files, shared, clock, own, "/home/me", runAtOnce};
    }
    static std::string add(AccountStore& store, const std::string& dir)
    {
        store.upsertManual(dir, std::nullopt);
        return store.records().at(dir).id;
    }
    void putRecord(const std::string& order, const std::string& version = "1") const
    {
        folder.put("Vellumor/accounts.json",
                   R"({"schemaVersion":)" + version +
                       R"(,"accounts":{"/a":{"id":"abc123","name":"A","order":)" + order +
                       R"(,"tracked":true,"pinned":true}}})");
    }
};

TEST_F(AccountStoreFilesTest, loadingMakesTheFolderAndWritesNothing)
{
    EXPECT_TRUE(load().records().empty());
    EXPECT_EQ(test::modeOf(folder.file("Vellumor")), 0700U);
    EXPECT_EQ(test::filesBelow(folder.path()), Names());
}

TEST_F(AccountStoreFilesTest, everyChangeIsInBothFilesAtOnce)
{
    AccountStore store = load();
    const std::string first = add(store, "/a");
    const std::string second = add(store, "/b");
    const std::function<void()> changes[] = {
        [&] { store.setTracked(first, false); },
        [&] { store.setPinned(first, false); },
        [&] { store.rename(first, "Renamed"); },
        [&] { store.setServiceOverride(first, "Mine"); },
        [&] { store.setServiceOverride(first, ""); },
        [&] { store.upsertManual("/c", "Other"); },
        [&] { store.upsertManual("/a", "Third"); },
        [&] { store.remove(first, "a@b", {}); },
        [&] { store.restore("/a"); },
        [&] {
            store.reorder({second, first});
        },
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(&change - changes);
        const FileState before = stateOf(own);
        const FileState sharedBefore = stateOf(sharedPath);
        change();
        EXPECT_NE(stateOf(own), before);
        EXPECT_NE(stateOf(sharedPath), sharedBefore);
        EXPECT_EQ(load().records(), store.records());
        EXPECT_EQ(shared.load(), AccountMerge::sharedIdentities(store.records()));
    }
    EXPECT_EQ(test::modeOf(own), 0600U);
    EXPECT_EQ(test::modeOf(sharedPath), 0600U);
    EXPECT_EQ(test::namesIn(folder.file("Vellumor")), Names{"accounts.json"});
}

TEST_F(AccountStoreFilesTest, writingIsLeftToOthersAndEachOfThemWritesTheValuesOfItsChange)
{
    std::vector<std::function<void()>> jobs;
    AccountStore store(files, shared, clock, own, "/home/me",
                       [&](std::function<void()> job) { jobs.push_back(std::move(job)); });
    const std::string id = add(store, "/a");
    const StoredAccounts added = store.records();
    store.rename(id, "Renamed");
    EXPECT_EQ(test::filesBelow(folder.path()), Names());
    ASSERT_EQ(jobs.size(), 2U);
    jobs[0]();
    EXPECT_EQ(load().records(), added);
    EXPECT_EQ(shared.load(), AccountMerge::sharedIdentities(added));
    jobs[1]();
    EXPECT_EQ(load().records(), store.records());
    EXPECT_EQ(shared.load(), AccountMerge::sharedIdentities(store.records()));
    EXPECT_EQ(shared.load().at("/a").name, "Renamed");
}

TEST_F(AccountStoreFilesTest, whatChangesNothingWritesNothing)
{
    AccountStore store = load();
    const std::string id = add(store, "/a");
    const FileState before = stateOf(own);
    const FileState sharedBefore = stateOf(sharedPath);
    store.setTracked("nobody", false);
    store.setPinned("nobody", false);
    store.rename("nobody", "x");
    store.setServiceOverride("nobody", "x");
    store.remove("nobody", "a@b", "O");
    store.remove("/a", {}, {}); // a directory is no id
    store.restore("/a");        // not hidden
    store.restore("/unknown");
    store.upsertManual("", "x");
    EXPECT_FALSE(store.forgetVanishedRemovals([](const std::string&) { return false; }));
    EXPECT_EQ(stateOf(own), before);
    EXPECT_EQ(stateOf(sharedPath), sharedBefore);
    EXPECT_EQ(store.records().at("/a").id, id);
}

TEST_F(AccountStoreFilesTest, removingAnAccountLeavesItInBothFiles)
{
    AccountStore store = load();
    const std::string id = add(store, "/a");
    store.remove(id, " ", {});
    EXPECT_NE(test::contentsOf(own).find(R"("removal":{"at":"2026-03-29T00:59:59Z"})"),
              std::string::npos)
        << test::contentsOf(own);
    EXPECT_EQ(shared.load(), (SharedIdentities{{"/a", {id, "A", 0, {}}}}));
}

TEST_F(AccountStoreFilesTest, aForgottenAccountLeavesItsOwnFileOnly)
{
    AccountStore store = load();
    store.remove(add(store, "/a"), {}, {});
    EXPECT_TRUE(store.forgetVanishedRemovals([](const std::string&) { return false; }));
    EXPECT_TRUE(load().records().empty());
    EXPECT_EQ(shared.load().size(), 1U);
}

TEST_F(AccountStoreFilesTest, aNewerVersionLoadsAndIsWrittenBackAsVersionOne)
{
    putRecord("0", "7");
    AccountStore store = load();
    ASSERT_EQ(store.records().size(), 1U);
    store.rename("abc123", "B");
    EXPECT_NE(test::contentsOf(own).find(R"("schemaVersion":1)"), std::string::npos);
    EXPECT_EQ(load().records().at("/a").name, "B");
}

TEST_F(AccountStoreFilesTest, aBrokenFileCountsAsEmptyAndHealsAtTheNextChange)
{
    putRecord("\"3\"");
    const std::string bytes = test::contentsOf(own);
    AccountStore store = load();
    EXPECT_TRUE(store.records().empty());
    EXPECT_EQ(test::contentsOf(own), bytes);
    add(store, "/b");
    EXPECT_EQ(load().records(), store.records());
}

TEST_F(AccountStoreFilesTest, aBrokenFileGetsItsIdentitiesBackFromTheSharedOne)
{
    AccountStore before = load();
    const std::string id = add(before, "/a");
    before.rename(id, "Mine");
    folder.put("Vellumor/accounts.json", "{");
    AccountStore after = load();
    DiscoveredFacts facts;
    facts.configDir = "/a";
    const auto accounts =
        AccountMerge::merge({facts}, shared.load(), after.records(), AccountMerge::randomSlug);
    ASSERT_EQ(accounts.size(), 1U);
    EXPECT_EQ(accounts[0].id, id);
    EXPECT_EQ(accounts[0].displayName, "Mine");
    after.persist();
    EXPECT_EQ(load().records(), after.records());
}

TEST_F(AccountStoreFilesTest, hostileOrdersLoadOrEmptyTheFile)
{
    putRecord("2147483647");
    AccountStore store = load();
    EXPECT_EQ(store.records().at("/a").order, 2147483647);
    add(store, "/b");
    EXPECT_GT(store.records().at("/b").order, 0);
    EXPECT_EQ(load().records(), store.records());
    for (const char* order : {"1e308", "2147483648", "\"3\"", "1.5"}) {
        SCOPED_TRACE(order);
        putRecord(order);
        EXPECT_TRUE(load().records().empty());
    }
}

TEST_F(AccountStoreFilesTest, hostileNamesSurvive)
{
    AccountStore store = load();
    const std::string id = add(store, "/a");
    using namespace std::string_literals;
    for (const std::string& name : {"\"},\"\\"s, "\n\r\t"s, "\0x"s, ""s, "\u202E\uFEFF\U0001F600"s,
                                    "__proto__"s, std::string(100'000, 'x')}) {
        store.rename(id, name);
        EXPECT_EQ(load().records().at("/a").name, name);
        EXPECT_EQ(shared.load().at("/a").name, name);
    }
}

TEST_F(AccountStoreFilesTest, aNameThatIsNotUtf8StaysInMemoryAndLeavesTheFilesAsTheyWere)
{
    AccountStore store = load();
    const std::string id = add(store, "/a");
    const FileState before = stateOf(own);
    const FileState sharedBefore = stateOf(sharedPath);
    store.rename(id, "\xFF");
    EXPECT_EQ(store.records().at("/a").name, "\xFF");
    EXPECT_EQ(stateOf(own), before);
    EXPECT_EQ(stateOf(sharedPath), sharedBefore);
}

TEST_F(AccountStoreFilesTest, aFailedWriteIsSilentAndTheRecordsStayRight)
{
    struct FullDisk : FileCalls {
        int create(const char*, mode_t) const override
        {
            errno = ENOSPC;
            return -1;
        }
    } fullDisk;
    const FileStore failing(fullDisk);
    const SharedAccountsStore failingShared(failing, sharedPath);
    AccountStore store(failing, failingShared, clock, own, "/home/me", runAtOnce);
    const std::string id = add(store, "/a");
    store.rename(id, "Mine");
    store.remove(id, "a@b", {});
    EXPECT_EQ(store.records().at("/a").name, "Mine");
    EXPECT_TRUE(store.records().at("/a").isRemoved());
    EXPECT_EQ(test::filesBelow(folder.path()), Names());
}

TEST_F(AccountStoreFilesTest, whenOnlyTheOwnFileFailsTheSharedOneStillFollows)
{
    struct NoRenameHere : FileCalls {
        int rename(const char*, const char*) const override
        {
            errno = EIO;
            return -1;
        }
    } noRename;
    const FileStore failing(noRename);
    AccountStore store(failing, shared, clock, own, "/home/me", runAtOnce);
    const std::string id = add(store, "/a");
    EXPECT_EQ(test::namesIn(folder.file("Vellumor")), Names());
    EXPECT_EQ(shared.load().at("/a").id, id);
}

} // namespace
} // namespace vellumor::accountStoreFilesTest
