#include "accounts/AccountMerge.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

namespace vellumor::accountMergeTest {
namespace {

using Text = std::optional<std::string>;

DiscoveredFacts found(const std::string& dir, Text email = {}, Text org = {})
{
    DiscoveredFacts facts;
    facts.configDir = dir;
    facts.email = std::move(email);
    facts.org = std::move(org);
    return facts;
}

StoredAccount record(const std::string& id, int order)
{
    return {id, "name of " + id, order, true, false, {}, {}};
}

StoredAccount hidden(const std::string& id, int order, Text email, Text org)
{
    StoredAccount account = record(id, order);
    account.removal =
        Removal{test::instant("2026-03-01T09:30:00Z"), std::move(email), std::move(org)};
    return account;
}

// Slugs that can be told apart: "new0", "new1", ...
std::function<std::string()> slugs()
{
    return [count = 0]() mutable { return "new" + std::to_string(count++); };
}

std::vector<Account> merge(const std::vector<DiscoveredFacts>& discovered,
                           const SharedIdentities& shared, StoredAccounts& records)
{
    return AccountMerge::merge(discovered, shared, records, slugs());
}

std::vector<std::string> ids(const std::vector<Account>& accounts)
{
    std::vector<std::string> result;
    for (const Account& account : accounts)
        result.push_back(account.id);
    return result;
}

using Ids = std::vector<std::string>;

TEST(AccountMerge, theFirstRunNumbersInTheOrderOfDiscoveryAndPinsTheFirstFour)
{
    StoredAccounts records;
    const auto accounts =
        merge({found("/e"), found("/d"), found("/c"), found("/b"), found("/a")}, {}, records);
    ASSERT_EQ(ids(accounts), (Ids{"new0", "new1", "new2", "new3", "new4"}));
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE(i);
        const Account& account = accounts[static_cast<std::size_t>(i)];
        EXPECT_EQ(account.order, i);
        EXPECT_EQ(account.pinned, i < 4);
        EXPECT_TRUE(account.tracked);
        EXPECT_EQ(records.at(account.configDir),
                  (StoredAccount{account.id, account.displayName, i, true, i < 4, {}, {}}));
    }
    EXPECT_EQ(accounts.front().configDir, "/e");
}

TEST(AccountMerge, aFirstRunAdoptsWhatTheSharedFileSays)
{
    StoredAccounts records;
    const SharedIdentities shared = {{"/a", {"sib111", "Theirs", 3, "Mine"}},
                                     {"/b", {"sib222", "Far", 4, {}}}};
    const auto accounts = merge({found("/a", "ada@b"), found("/b")}, shared, records);
    ASSERT_EQ(ids(accounts), (Ids{"sib111", "sib222"}));
    EXPECT_EQ(accounts[0].displayName, "Theirs");
    EXPECT_EQ(accounts[0].keychainServiceOverride, "Mine");
    EXPECT_TRUE(accounts[0].tracked);
    EXPECT_TRUE(accounts[0].pinned);
    EXPECT_TRUE(accounts[1].tracked);
    EXPECT_FALSE(accounts[1].pinned);
    EXPECT_EQ(records.at("/a"), (StoredAccount{"sib111", "Theirs", 3, true, true, "Mine", {}}));
}

TEST(AccountMerge, aNewDirectoryComesBehindTheHighestOrderOfBothSources)
{
    SharedIdentities shared;
    for (int i = 0; i <= 5; ++i)
        shared["/s" + std::to_string(i)] = {"s" + std::to_string(i), "S", i, {}};
    StoredAccounts records = {{"/l", record("local", 2)}};
    auto accounts = merge({found("/new"), found("/newer")}, shared, records);
    EXPECT_EQ(accounts.at(0).order, 6);
    EXPECT_EQ(accounts.at(1).order, 7);
    EXPECT_FALSE(accounts.at(0).pinned);
    // Hidden records count as well.
    StoredAccounts other = {{"/h", hidden("h", 9, {}, {})}};
    EXPECT_EQ(merge({found("/new")}, shared, other).at(0).order, 10);
}

TEST(AccountMerge, aHiddenAccountComesBackOnlyForAnotherPerson)
{
    const struct {
        const char* rule;
        Text removedEmail, removedOrg, email, org;
        bool revived;
    } rows[] = {
        {"equal mail decides, whatever the organisation says", "a@b", "O", "a@b", "P", false},
        {"different mail decides, whatever the organisation says", "a@b", "O", "c@d", "O", true},
        {"mail is compared exactly", "a@b", {}, "A@b", {}, true},
        {"an empty mail is a mail", "a@b", {}, "", {}, true},
        {"no mail then, equal organisations", {}, "O", "a@b", "O", false},
        {"no mail then, different organisations", {}, "O", "a@b", "P", true},
        {"no mail now, equal organisations", "a@b", "O", {}, "O", false},
        {"no mail now, different organisations", "a@b", "O", {}, "P", true},
        {"mail then and nothing now", "a@b", {}, {}, {}, false},
        {"nothing then", {}, {}, "a@b", "O", false},
        {"organisation then, mail now", {}, "O", "a@b", {}, false},
        {"nothing at all", {}, {}, {}, {}, false},
    };
    for (const auto& [rule, removedEmail, removedOrg, email, org, revived] : rows) {
        SCOPED_TRACE(rule);
        StoredAccounts records = {{"/a", hidden("a", 7, removedEmail, removedOrg)}};
        const StoredAccounts before = records;
        const auto accounts = merge({found("/a", email, org)}, {}, records);
        EXPECT_EQ(accounts.size(), revived ? 1U : 0U);
        if (revived)
            EXPECT_EQ(records.at("/a"), record("a", 7)); // its id and name, and no removal
        else
            EXPECT_EQ(records, before);
    }
}

TEST(AccountMerge, aHiddenAccountStaysHiddenThoughTheSharedFileKnowsIt)
{
    StoredAccounts records = {{"/a", hidden("a", 0, "a@b", {})}};
    const StoredAccounts before = records;
    EXPECT_TRUE(merge({found("/a", "a@b")}, {{"/a", {"s", "S", 1, {}}}}, records).empty());
    EXPECT_EQ(records, before);
}

TEST(AccountMerge, theSharedFileOverridesNamePlaceAndServiceButNotTheOwnSwitches)
{
    StoredAccount own = record("own", 9);
    own.tracked = false;
    own.pinned = true;
    own.serviceOverride = "Old";
    StoredAccounts records = {{"/a", own}};
    const auto accounts = merge({found("/a")}, {{"/a", {"theirs", "Renamed", 1, {}}}}, records);
    ASSERT_EQ(accounts.size(), 1U);
    EXPECT_EQ(records.at("/a"), (StoredAccount{"theirs", "Renamed", 1, false, true, {}, {}}));
    EXPECT_EQ(accounts[0].displayName, "Renamed");
    EXPECT_EQ(accounts[0].keychainServiceOverride, std::nullopt);
}

TEST(AccountMerge, withoutASharedRecordTheOwnOneStands)
{
    StoredAccount own = record("own", 9);
    own.serviceOverride = "Mine";
    own.pinned = true; // though its order is above three
    StoredAccounts records = {{"/a", own}};
    const auto accounts = merge({found("/a", "ada@b")}, {}, records);
    EXPECT_EQ(records.at("/a"), own);
    ASSERT_EQ(accounts.size(), 1U);
    EXPECT_EQ(accounts[0].displayName, "name of own");
    EXPECT_TRUE(accounts[0].pinned);
}

TEST(AccountMerge, twoAccountsOfOneOrderKeepTheirPlace)
{
    StoredAccounts records = {
        {"/z", record("z", 2)}, {"/a", record("a", 2)}, {"/m", record("m", 1)}};
    EXPECT_EQ(ids(merge({found("/z"), found("/a"), found("/m")}, {}, records)),
              (Ids{"m", "z", "a"}));
    EXPECT_EQ(ids(merge({found("/a"), found("/m"), found("/z")}, {}, records)),
              (Ids{"m", "a", "z"}));
}

TEST(AccountMerge, recordsThatAreNotMentionedStayAndGapsStay)
{
    StoredAccounts records = {{"/gone", record("gone", 0)}, {"/a", record("a", 5)}};
    const StoredAccounts before = records;
    EXPECT_EQ(ids(merge({found("/a")}, {{"/elsewhere", {"e", "E", 3, {}}}}, records)), (Ids{"a"}));
    EXPECT_EQ(records, before);
    EXPECT_TRUE(merge({}, {}, records).empty());
    EXPECT_EQ(records, before);
}

TEST(AccountMerge, anAccountCarriesAllThatTheScanFound)
{
    const Instant ends = test::instant("2026-04-01T00:00:00Z");
    const DiscoveredFacts facts = {"/a", "ada@b", "O", "Ada", "Max", "S", TokenStatus::expired,
                                   ends};
    StoredAccounts records;
    const auto accounts = merge({facts}, {}, records);
    EXPECT_EQ(accounts, (std::vector<Account>{{"new0",
                                               "ada",
                                               "/a",
                                               true,
                                               true,
                                               0,
                                               {},
                                               "ada@b",
                                               "O",
                                               "Max",
                                               "S",
                                               TokenStatus::expired,
                                               ends}}));
}

TEST(AccountMerge, aHostileOrderDoesNotOverflow)
{
    constexpr int most = std::numeric_limits<int>::max();
    StoredAccounts records = {{"/a", record("a", most)}};
    const auto accounts =
        merge({found("/a"), found("/b"), found("/c")}, {{"/x", {"x", "X", most, {}}}}, records);
    EXPECT_EQ(ids(accounts), (Ids{"new0", "new1", "a"}));
    EXPECT_GT(accounts[0].order, 0);
    EXPECT_EQ(accounts[1].order, accounts[0].order + 1);
    EXPECT_EQ(accounts[2].order, most);
}

TEST(AccountMerge, theNameOfANewAccountComesFromMailThenOrganisationThenDirectory)
{
    const struct {
        Text email, org;
        const char* name;
    } rows[] = {
        {"ada@example.org", "O", "ada"},
        {"@@ada@x", "O", "ada"},
        {"ada", "O", "ada"},
        {"@", "O", "O"},
        {"", "O", "O"},
        {{}, "O", "O"},
        {" @x", "O", " "},
        {{}, "", "Work"},
        {"@@", {}, "Work"},
        {{}, {}, "Work"},
    };
    for (const auto& [email, org, name] : rows) {
        SCOPED_TRACE(email.value_or("-") + " " + org.value_or("-"));
        DiscoveredFacts facts = found("/home/me/.claude-work", email, org);
        facts.displayName = "Ada Lovelace"; // never the name of an account
        EXPECT_EQ(AccountMerge::defaultName(facts), name);
    }
    EXPECT_EQ(AccountMerge::defaultName(found("/home/me/.claude")), "Default");
    EXPECT_EQ(AccountMerge::defaultName(found("/home/me/.claude-")), ".claude-");
}

TEST(AccountMerge, theSiblingSeesHiddenRecordsToo)
{
    StoredAccount own = hidden("a", 3, "a@b", "O");
    own.serviceOverride = "Mine";
    EXPECT_EQ(AccountMerge::sharedIdentities({{"/a", own}, {"/b", record("b", 1)}}),
              (SharedIdentities{{"/a", {"a", "name of a", 3, "Mine"}},
                                {"/b", {"b", "name of b", 1, {}}}}));
    EXPECT_TRUE(AccountMerge::sharedIdentities({}).empty());
}

TEST(AccountMerge, slugsAreSixLettersAndDigitsDrawnUniformly)
{
    constexpr int draws = 10'000;
    const std::string_view alphabet = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::map<char, int> counts;
    std::set<std::string> different;
    for (int i = 0; i < draws; ++i) {
        const std::string slug = AccountMerge::randomSlug();
        ASSERT_EQ(slug.size(), 6U);
        for (const char c : slug) {
            ASSERT_NE(alphabet.find(c), std::string_view::npos) << slug;
            ++counts[c];
        }
        different.insert(slug);
    }
    // Of 36^6 slugs, 10,000 draws repeat one with a chance of 1 in 44; four repeats would be a
    // wonder.
    EXPECT_GE(different.size(), draws - 3U);
    ASSERT_EQ(counts.size(), alphabet.size());
    for (const auto& [character, count] : counts) {
        SCOPED_TRACE(character);
        EXPECT_NEAR(count, draws * 6 / 36, 280); // seven standard deviations
    }
}

} // namespace
} // namespace vellumor::accountMergeTest
