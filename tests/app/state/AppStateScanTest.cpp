#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"
#include "store/AccountFiles.h"
#include "support/FileState.h"

#include <filesystem>
#include <fstream>

namespace vellumor::appStateScanTest {
namespace {

using std::chrono::seconds;
using test::failure;
using test::Gate;
using test::Names;
using Kind = UsageFetchError::Kind;

// What the four stores hold about a directory.
struct Kept {
    bool snapshot = false;
    bool anchors = false;
    bool cache = false;
    bool history = false;
    bool operator==(const Kept&) const = default;
};
constexpr Kept everything{true, true, true, true};
constexpr Kept nothing{};

struct AppStateScanTest : test::AppStateTesting {
    std::string accountsFile = folders.vellumor() + "/accounts.json";
    std::string sharedFile = folders.quorle() + "/accounts.json";
    std::string cacheFolder = folders.quorle() + "/usage-cache";
    std::string historyFolder = folders.vellumor() + "/history";

    // One entry of each store.
    void fill(const std::string& dir)
    {
        Usage usage = test::reading(1, clock.now());
        usage.windows[1].resetsAt = clock.now() + std::chrono::hours(50);
        UsageSnapshotStore(files, folders.vellumor() + "/usage-snapshots.json").save(usage, dir);
        ResetAnchorStore(files, folders.vellumor() + "/reset-anchors.json").record(usage, dir);
        SharedCache(files, cacheFolder).write(usage, dir, std::nullopt);
        UsageHistoryStore(files, historyFolder).append(usage, dir, clock.now());
    }
    [[nodiscard]] Kept kept(const std::string& dir) const
    {
        const UsageSnapshotStore snapshots(files, folders.vellumor() + "/usage-snapshots.json");
        const ResetAnchorStore anchors(files, folders.vellumor() + "/reset-anchors.json");
        const SharedCache cache(files, cacheFolder);
        return {snapshots.load().contains(dir), anchors.load().contains(dir),
                cache.read(dir).has_value(),
                UsageHistoryStore::loadFrom(historyFolder, dir).size() == 1};
    }
    // A scan that is under way until the gate is opened.
    [[nodiscard]] Task<> scanBehind(Gate& gate)
    {
        scanGate = &gate;
        auto scan = state.rescan();
        settle();
        return scan;
    }
    [[nodiscard]] bool isRecorded(const std::string& dir) const
    {
        return store.records().contains(dir);
    }
};

// Where a scan waits, and for what.
const struct {
    Gate* test::AppWorld::*gate;
    const char* waitsFor;
} waits[] = {{&test::AppWorld::scanGate, "scan"},
             {&test::AppWorld::lookGate, "look"},
             {&test::AppWorld::identitiesGate, "identities"}};

TEST_F(AppStateScanTest, aScanThatFailsChangesNothing)
{
    add("ada");
    rescan();
    const auto before = state.accounts();
    fill("/gone");
    found = {{}, true};
    rescan();
    EXPECT_EQ(state.accounts(), before);
    EXPECT_EQ(kept("/gone"), everything);
    EXPECT_EQ(steps.back(), "scan");
}

TEST_F(AppStateScanTest, aSignedOutAccountWaitsForASignIn)
{
    add("ada", TokenStatus::signedOut);
    rescan();
    EXPECT_EQ(of("ada").lastError, failure(Kind::unauthorized));
    EXPECT_EQ(of("ada").revival, RevivalStatus::needsSignIn);
    EXPECT_EQ(revivable(), Names());
    found.facts[0].tokenStatus = TokenStatus::readable;
    *found.facts[0].tokenExpiresAt += seconds(1);
    rescan();
    EXPECT_EQ(of("ada").lastError, std::nullopt);
    EXPECT_EQ(pollable(), Names{"ada"});
}

TEST_F(AppStateScanTest, aConclusionGoesWithTheTokenThatItWasAbout)
{
    add("ada");
    rescan();
    applyTo("ada", failed(Kind::keychain));
    rescan();
    EXPECT_EQ(pollable(), Names());
    *found.facts[0].tokenExpiresAt += seconds(1);
    rescan();
    EXPECT_EQ(pollable(), Names{"ada"});
}

TEST_F(AppStateScanTest, theStepsComeInOrder)
{
    add("ada");
    rescan();
    fill("/gone");
    steps.clear();
    disk.forget();
    // What each file finds in the state of the others when it is written.
    std::map<std::string, std::pair<Names, Kept>> seen;
    const auto stray = [](const std::string& folder) {
        return std::filesystem::exists(AccountFiles::path(folder, "/gone"));
    };
    disk.onWrite([&](const std::string& name) {
        seen[name] = {steps, {false, false, stray(cacheFolder), stray(historyFolder)}};
    });
    rescan();
    disk.onWrite({});
    const Names all = {"scan", "look", "identities"};
    EXPECT_EQ(steps, all);
    EXPECT_EQ(disk.written(),
              (Names{"Vellumor/accounts.json", "Quorle/accounts.json",
                     "Vellumor/usage-snapshots.json", "Vellumor/reset-anchors.json"}));
    using Seen = std::pair<Names, Kept>;
    EXPECT_EQ(seen["Vellumor/accounts.json"], Seen(all, {false, false, true, true}));
    EXPECT_EQ(seen["Vellumor/usage-snapshots.json"], Seen(all, {false, false, false, true}));
    EXPECT_EQ(seen["Vellumor/reset-anchors.json"], Seen(all, {false, false, false, false}));
    EXPECT_EQ(kept("/gone"), nothing);
}

TEST_F(AppStateScanTest, newAccountsAreToldBeforeAnythingIsForgottenAndReceiptsGoLast)
{
    add("ada");
    rescan();
    state.updatePreferences([](Preferences& p) { p.notificationsEnabled = true; });
    fill("/gone");
    const std::string receipts = AccountFiles::path(folders.vellumor() + "/receipts", "/gone");
    std::ofstream(receipts) << "{}";
    add("ben");
    std::map<std::string, std::pair<bool, bool>> seen; // by each file: was it told, are they there
    disk.onWrite([&](const std::string& name) {
        seen[name] = {!delivered.empty(), std::filesystem::exists(receipts)};
    });
    rescan();
    disk.onWrite({});
    EXPECT_EQ(delivered, Names{"New account discovered · ben"});
    EXPECT_EQ(seen.at("Vellumor/accounts.json"), std::pair(false, true));
    EXPECT_EQ(seen.at("Vellumor/usage-snapshots.json"), std::pair(true, true));
    EXPECT_EQ(seen.at("Vellumor/reset-anchors.json"), std::pair(true, true));
    EXPECT_FALSE(std::filesystem::exists(receipts));
}

TEST_F(AppStateScanTest, whatIsPublishedIsWhatIsLeft)
{
    add("ada");
    add("ben");
    fill(dirOf("ada"));
    fill(dirOf("ben"));
    rescan();
    EXPECT_EQ(state.historyByDir().size(), 2U);
    EXPECT_EQ(state.resetAnchorsByDir().size(), 2U);
    leaveOnly({"ben"});
    rescan();
    EXPECT_EQ(state.historyByDir().size(), 1U);
    EXPECT_EQ(state.resetAnchorsByDir().size(), 1U);
    EXPECT_TRUE(state.resetAnchorsByDir().contains(dirOf("ben")));
}

TEST_F(AppStateScanTest, theFilesOfTheAccountsAreWrittenEvenWhenNothingHasChanged)
{
    add("ada");
    rescan();
    for (int i = 0; i < 2; ++i) {
        const auto own = test::stateOf(accountsFile);
        const auto shared = test::stateOf(sharedFile);
        rescan();
        EXPECT_NE(test::stateOf(accountsFile), own);
        EXPECT_NE(test::stateOf(sharedFile), shared);
        EXPECT_EQ(test::contentsOf(accountsFile), std::get<std::string>(own));
    }
}

TEST_F(AppStateScanTest, aNameThatTheSiblingHasGivenIsTaken)
{
    add("ada");
    rescan();
    SharedIdentities identities = sharedAccounts.load();
    identities.at(dirOf("ada")).name = "Theirs";
    sharedAccounts.save(identities);
    rescan();
    EXPECT_EQ(namesOf(state.accounts()), Names{"Theirs"});
}

TEST_F(AppStateScanTest, whatAHiddenAccountHadIsThereWhenItComesBack)
{
    addAll({"ada", "ben", "cal"});
    rescan();
    state.rename(account("ada"), "Work");
    state.reorder({0}, 3);
    state.setTracked(id("Work"), false);
    state.setPinned(id("Work"), false);
    for (const char* const name : {"ada", "ben", "cal"})
        fill(dirOf(name));
    const Account hidden = account("Work");
    state.remove(hidden);
    for (int i = 0; i < 2; ++i) {
        rescan();
        EXPECT_TRUE(state.isRemoved(hidden.configDir));
        EXPECT_EQ(namesOf(state.accounts()), (Names{"ben", "cal"}));
        EXPECT_EQ(kept(hidden.configDir), everything);
    }
    waitFor(state.restore(hidden.configDir));
    EXPECT_FALSE(state.isRemoved(hidden.configDir));
    EXPECT_EQ(account("Work"), hidden); // id, place, both switches
    EXPECT_EQ(kept(hidden.configDir), everything);
    EXPECT_EQ(state.historyByDir().at(hidden.configDir)->size(), 1U);
    EXPECT_EQ(state.resetAnchorsByDir().size(), 3U);
}

TEST_F(AppStateScanTest, aHiddenAccountWhoseDirectoryIsGoneIsForgotten)
{
    addAll({"ada", "ben"});
    rescan();
    fill(dirOf("ada"));
    const std::string before = id("ada");
    state.remove(account("ada"));
    leaveOnly({"ben"});
    rescan();
    EXPECT_FALSE(state.isRemoved(dirOf("ada")));
    EXPECT_FALSE(isRecorded(dirOf("ada")));
    EXPECT_EQ(kept(dirOf("ada")), nothing);
    EXPECT_EQ(test::contentsOf(accountsFile).find(before), std::string::npos);
}

TEST_F(AppStateScanTest, aDirectoryThatIsAwayForAWhileLosesItsFilesAndKeepsItsRecord)
{
    addAll({"ada", "ben"});
    rescan();
    fill(dirOf("ada"));
    state.rename(account("ada"), "Work");
    const Account before = account("Work");
    const auto facts = found.facts;
    leaveOnly({"ben"});
    rescan();
    EXPECT_EQ(namesOf(state.accounts()), Names{"ben"});
    EXPECT_EQ(kept(dirOf("ada")), nothing);
    EXPECT_TRUE(isRecorded(dirOf("ada")));
    found.facts = facts;
    rescan();
    EXPECT_EQ(account("Work"), before);
}

TEST_F(AppStateScanTest, aScanThatFindsNobodyThrowsNothingAwayAsLongAsSomebodyIsKnown)
{
    add("ada");
    rescan();
    fill(dirOf("ada"));
    fill("/gone");
    const auto facts = found.facts;
    leaveOnly({});
    rescan();
    EXPECT_EQ(state.accounts(), std::vector<Account>());
    EXPECT_EQ(kept(dirOf("ada")), everything);
    EXPECT_EQ(kept("/gone"), everything);
    found.facts = facts;
    rescan();
    EXPECT_EQ(kept(dirOf("ada")), everything);
    EXPECT_EQ(kept("/gone"), nothing);
}

TEST_F(AppStateScanTest, whereNobodyIsKnownNothingIsKept)
{
    fill("/gone");
    rescan();
    EXPECT_EQ(kept("/gone"), nothing);
}

TEST_F(AppStateScanTest, anAccountThatIsHiddenDuringAScanStaysHidden)
{
    addAll({"ada", "ben"});
    rescan();
    fill(dirOf("ada"));
    const std::string before = id("ada");
    for (const auto& [held, waitsFor] : waits) {
        SCOPED_TRACE(waitsFor);
        Gate gate;
        this->*held = &gate;
        auto scan = state.rescan();
        settle();
        EXPECT_EQ(steps.back(), waitsFor);
        state.remove(account("ada"));
        gate.open();
        waitFor(std::move(scan));
        EXPECT_EQ(namesOf(state.accounts()), Names{"ben"});
        EXPECT_TRUE(state.isRemoved(dirOf("ada")));
        EXPECT_EQ(kept(dirOf("ada")), everything);
        waitFor(state.restore(dirOf("ada")));
        EXPECT_EQ(id("ada"), before);
    }
}

// The scan that runs was told to look for the accounts that were shown when it began, and this one
// lies where nobody looks unasked.
TEST_F(AppStateScanTest, anAccountThatIsBroughtBackDuringAScanKeepsItsFiles)
{
    addAll({"ada", "ben"});
    rescan();
    fill(dirOf("ada"));
    const Account hidden = account("ada");
    state.remove(hidden);
    const auto facts = found.facts;
    leaveOnly({"ben"});
    Gate first;
    auto unaware = scanBehind(first);
    found.facts = facts;
    Gate second;
    scanGate = &second;
    auto restored = state.restore(hidden.configDir);
    settle();
    EXPECT_EQ(asked.back().knownDirs, (Names{dirOf("ada"), dirOf("ben")}));
    first.open();
    waitFor(std::move(unaware));
    EXPECT_EQ(namesOf(state.accounts()), Names{"ben"});
    EXPECT_EQ(kept(hidden.configDir), everything);
    second.open();
    waitFor(std::move(restored));
    EXPECT_EQ(account("ada"), hidden);
    EXPECT_EQ(kept(hidden.configDir), everything);
}

TEST_F(AppStateScanTest, ofTwoScansTheOneThatBeganLaterCounts)
{
    addAll({"ada", "ben"});
    rescan();
    const auto facts = found.facts;
    leaveOnly({"ben"});
    Gate first;
    auto earlier = scanBehind(first);
    found.facts = facts;
    Gate second;
    auto later = scanBehind(second);
    second.open();
    waitFor(std::move(later));
    first.open();
    waitFor(std::move(earlier));
    EXPECT_EQ(namesOf(state.accounts()), (Names{"ada", "ben"}));
}

TEST_F(AppStateScanTest, aNameThatIsGivenDuringAScanStays)
{
    add("ada");
    rescan();
    for (const auto& [held, waitsFor] : waits) {
        SCOPED_TRACE(waitsFor);
        Gate gate;
        this->*held = &gate;
        auto scan = state.rescan();
        settle();
        state.rename(state.accounts().at(0), waitsFor);
        gate.open();
        waitFor(std::move(scan));
        EXPECT_EQ(namesOf(state.accounts()), Names{waitsFor});
        rescan();
        EXPECT_EQ(namesOf(state.accounts()), Names{waitsFor});
    }
}

} // namespace
} // namespace vellumor::appStateScanTest
