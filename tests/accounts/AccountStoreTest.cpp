#include "accounts/AccountStore.h"

#include "accounts/AccountMerge.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace vellumor::accountStoreTest {
namespace {

using Names = std::vector<std::string>;

struct AccountStoreTest : testing::Test {
    test::TempFolder folder;
    test::FakeClock clock;
    FileStore files;
    SharedAccountsStore shared{files, folder.file("Quorle/accounts.json")};
    AccountStore store{files,      shared,   clock, folder.file("Vellumor/accounts.json"),
                       "/home/me", runAtOnce};

    std::string add(const std::string& dir)
    {
        store.upsertManual(dir, std::nullopt);
        return store.records().at(dir).id;
    }
    [[nodiscard]] const StoredAccount& record(const std::string& dir) const
    {
        return store.records().at(dir);
    }
    [[nodiscard]] Names hidden() const
    {
        Names names;
        for (const auto& removed : store.removedAccounts(std::less<>()))
            names.push_back(removed.name);
        return names;
    }
};

TEST_F(AccountStoreTest, aNewDirectoryGetsASlugANameAndTheNextPlace)
{
    store.upsertManual("/srv/.claude-work", " Mine \n");
    const StoredAccount& account = record("/srv/.claude-work");
    EXPECT_EQ(account.id.size(), 6U);
    EXPECT_EQ(account, (StoredAccount{account.id, "Work", 0, true, true, "Mine", {}}));
    const std::string second = add("/srv/.claude");
    EXPECT_EQ(record("/srv/.claude"), (StoredAccount{second, "Default", 1, true, true, {}, {}}));
    EXPECT_NE(account.id, second);
}

TEST_F(AccountStoreTest, theFifthManualAccountIsNotPinnedByDefault)
{
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        const std::string dir = "/d" + std::to_string(i);
        add(dir);
        EXPECT_EQ(record(dir).order, i);
        EXPECT_EQ(record(dir).pinned, i < 4);
        EXPECT_TRUE(record(dir).tracked);
    }
}

TEST_F(AccountStoreTest, aTildeAndAnAbsolutePathAreOneRecord)
{
    store.upsertManual("~/.claude-work", "First");
    store.upsertManual("/home/me/.claude-work", "Second");
    store.upsertManual("/home/me/.claude-work//", "Third");
    ASSERT_EQ(store.records().size(), 1U);
    EXPECT_EQ(record("/home/me/.claude-work").serviceOverride, "Third");
    EXPECT_EQ(record("/home/me/.claude-work").order, 0);
}

TEST_F(AccountStoreTest, pathsThatDifferOnlyInCompositionAreOneRecord)
{
    store.upsertManual("/srv/.claude-e\u0301", {});
    store.upsertManual("/srv/.claude-\u00E9", {});
    ASSERT_EQ(store.records().size(), 1U);
    const std::string id = record("/srv/.claude-\u00E9").id;
    store.remove(id, {}, {});
    store.restore("/srv/.claude-e\u0301");
    EXPECT_FALSE(record("/srv/.claude-\u00E9").isRemoved());
}

TEST_F(AccountStoreTest, anEmptyPathOrOneThatIsNotUtf8AddsNothing)
{
    store.upsertManual("", "S");
    store.upsertManual("/srv/\xFF", "S");
    EXPECT_TRUE(store.records().empty());
}

TEST_F(AccountStoreTest, typingAHiddenDirectoryBringsItBackAsItWas)
{
    const std::string id = add("/a");
    add("/b");
    store.setPinned(id, false);
    store.setTracked(id, false);
    store.rename(id, "Mine");
    store.setServiceOverride(id, "Old");
    store.remove(id, "a@b", "O");
    store.upsertManual("/a", std::nullopt);
    EXPECT_EQ(record("/a"), (StoredAccount{id, "Mine", 0, false, false, {}, {}}));
}

TEST_F(AccountStoreTest, theSwitchesTheNameAndTheServiceAreSetById)
{
    const std::string id = add("/a");
    const StoredAccount other = record("/a");
    add("/b");
    const StoredAccount untouched = record("/b");
    store.setTracked(id, false);
    store.setPinned(id, false);
    store.rename(id, "\u00C9cole / \"1\"");
    store.setServiceOverride(id, "\t Mine\u00A0\n");
    EXPECT_EQ(record("/a"), (StoredAccount{id, "\u00C9cole / \"1\"", 0, false, false, "Mine", {}}));
    EXPECT_EQ(record("/b"), untouched);
    EXPECT_EQ(other.name, "A");
}

TEST_F(AccountStoreTest, aBlankServiceClearsTheOverrideAndABlankNameIsKept)
{
    const std::string id = add("/a");
    for (const auto& blank : {std::optional<std::string>("  "), std::optional<std::string>(""),
                              std::optional<std::string>()}) {
        SCOPED_TRACE(blank.value_or("absent"));
        store.setServiceOverride(id, "Mine");
        store.setServiceOverride(id, blank);
        EXPECT_EQ(record("/a").serviceOverride, std::nullopt);
    }
    store.rename(id, "  ");
    EXPECT_EQ(record("/a").name, "  ");
}

TEST_F(AccountStoreTest, removingKeepsTheRecordAndWhoWasSignedIn)
{
    const std::string id = add("/a");
    StoredAccount expected = record("/a");
    clock.jumpTo(test::instant("2026-03-01T09:30:00Z"));
    store.remove(id, " a@b ", "\nO\n");
    expected.removal = Removal{clock.now(), "a@b", "O"};
    EXPECT_EQ(record("/a"), expected);
    EXPECT_EQ(store.knownDirs(), Names());
    store.remove(id, " ", std::nullopt);
    EXPECT_EQ(record("/a").removal, (Removal{clock.now(), {}, {}}));
}

TEST_F(AccountStoreTest, whatWasRemovedWithoutMailAndOrganisationIsTheSamePersonForEver)
{
    store.remove(add("/a"), "  ", "");
    const DiscoveredFacts somebody = {"/a", "new@person", "Elsewhere", {}, {}, {}, {}, {}};
    EXPECT_TRUE(
        AccountMerge::merge({somebody}, {}, store.records(), AccountMerge::randomSlug).empty());
    EXPECT_TRUE(record("/a").isRemoved());
}

TEST_F(AccountStoreTest, restoringTakesTheDirectoryInAnySpelling)
{
    const std::string id = add("/home/me/.claude-work");
    const StoredAccount before = record("/home/me/.claude-work");
    store.remove(id, "a@b", {});
    store.restore("~/.claude-work/");
    EXPECT_EQ(record("/home/me/.claude-work"), before);
}

TEST_F(AccountStoreTest, reorderNumbersWhatIsListedAndPutsTheHiddenBehind)
{
    const Names ids = {add("/a"), add("/b"), add("/c"), add("/d"), add("/e")};
    store.remove(ids[0], {}, {}); // order 0
    store.remove(ids[3], {}, {}); // order 3
    store.reorder({ids[4], "unknown", ids[1]});
    EXPECT_EQ(record("/e").order, 0);
    EXPECT_EQ(record("/b").order, 2); // the place of the unknown id is not used again
    EXPECT_EQ(record("/a").order, 3);
    EXPECT_EQ(record("/d").order, 4);
    EXPECT_EQ(record("/c").order, 2); // neither listed nor hidden: as it was
}

TEST_F(AccountStoreTest, hiddenRecordsKeepTheirOrderAmongThemselves)
{
    const Names ids = {add("/a"), add("/b"), add("/c")};
    store.reorder({ids[2], ids[1], ids[0]});
    for (const std::string& id : ids)
        store.remove(id, {}, {});
    store.reorder({});
    EXPECT_EQ(record("/c").order, 0);
    EXPECT_EQ(record("/b").order, 1);
    EXPECT_EQ(record("/a").order, 2);
}

TEST_F(AccountStoreTest, reorderWithAnEmptyListRenumbersTheHiddenOnesAlone)
{
    const Names ids = {add("/a"), add("/b"), add("/c")};
    store.remove(ids[1], {}, {});
    store.remove(ids[2], {}, {});
    store.reorder({});
    EXPECT_EQ(record("/a").order, 0);
    EXPECT_EQ(record("/b").order, 0);
    EXPECT_EQ(record("/c").order, 1);
}

TEST_F(AccountStoreTest, aHiddenRecordThatIsListedIsNumberedByTheList)
{
    const Names ids = {add("/a"), add("/b")};
    store.remove(ids[0], {}, {});
    store.reorder({ids[1], ids[0]});
    EXPECT_EQ(record("/b").order, 0);
    EXPECT_EQ(record("/a").order, 1);
    store.reorder({ids[0], ids[1], ids[0]}); // named twice: the later place
    EXPECT_EQ(record("/a").order, 2);
}

TEST_F(AccountStoreTest, hiddenRecordsWhoseDirectoryIsGoneAreForgotten)
{
    const Names ids = {add("/gone"), add("/there"), add("/active")};
    store.remove(ids[0], {}, {});
    store.remove(ids[1], {}, {});
    Names asked;
    EXPECT_TRUE(store.forgetVanishedRemovals([&](const std::string& dir) {
        asked.push_back(dir);
        return dir == "/there";
    }));
    EXPECT_EQ(asked, (Names{"/gone", "/there"}));
    EXPECT_EQ(store.records().size(), 2U);
    EXPECT_FALSE(
        store.forgetVanishedRemovals([](const std::string& dir) { return dir == "/there"; }));
    EXPECT_EQ(store.knownDirs(), Names{"/active"}); // never forgotten, though it is gone as well
    store.upsertManual("/gone", {});
    EXPECT_NE(record("/gone").id, ids[0]);
}

TEST_F(AccountStoreTest, hiddenAccountsAreListedByNameAndEqualNamesKeepTheirPlace)
{
    const Names ids = {add("/1"), add("/2"), add("/3"), add("/4")};
    store.rename(ids[0], "b");
    store.rename(ids[1], "a");
    store.rename(ids[2], "a");
    store.remove(ids[0], {}, {});
    store.remove(ids[1], {}, {});
    clock.advance(std::chrono::seconds(1));
    store.remove(ids[2], {}, {});
    const auto removed = store.removedAccounts(std::less<>());
    ASSERT_EQ(removed.size(), 3U);
    EXPECT_EQ(removed[0], (RemovedAccount{"/2", "a", clock.now() - std::chrono::seconds(1)}));
    EXPECT_EQ(removed[1], (RemovedAccount{"/3", "a", clock.now()}));
    EXPECT_EQ(removed[2].configDir, "/1");
    EXPECT_EQ(hidden(), (Names{"a", "a", "b"}));
    EXPECT_EQ(store.removedAccounts(std::greater<>())[0].name, "b");
    EXPECT_EQ(store.knownDirs(), Names{"/4"});
}

TEST_F(AccountStoreTest, aHostileOrderDoesNotOverflow)
{
    add("/a");
    store.records().at("/a").order = std::numeric_limits<int>::max();
    add("/b");
    EXPECT_GT(record("/b").order, 0);
    EXPECT_FALSE(record("/b").pinned);
}

} // namespace
} // namespace vellumor::accountStoreTest
