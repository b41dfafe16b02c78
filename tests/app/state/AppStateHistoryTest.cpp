#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateHistoryTest {
namespace {

using std::chrono::seconds;
using test::Gate;
using test::Names;

struct AppStateHistoryTest : test::AppStateTesting {
    UsageHistoryStore history{files, folders.vellumor() + "/history"};

    // One sample more, of the present moment.
    void append(const std::string& name)
    {
        history.append(test::reading(1, clock.now()), dirOf(name), clock.now());
        clock.advance(seconds(1));
    }
    [[nodiscard]] std::size_t samplesOf(const std::string& name) const
    {
        const auto known = state.historyByDir().find(dirOf(name));
        return known == state.historyByDir().end() ? 0 : known->second->size();
    }
};

TEST_F(AppStateHistoryTest, aReadingOfTheRunBeforeIsShownAtTheStart)
{
    add("ada");
    add("ben");
    UsageSnapshotStore snapshots(files, folders.vellumor() + "/usage-snapshots.json");
    for (const auto& facts : found.facts)
        snapshots.save(test::reading(7, clock.now()), facts.configDir);
    rescan();
    applyTo("ben", read(UsageSource::endpoint));
    waitFor(state.seedFromSnapshots());
    EXPECT_EQ(of("ada").source, UsageSource::snapshot);
    EXPECT_EQ(of("ada").usage.value().windows[0].percent, 7);
    EXPECT_EQ(of("ben").source, UsageSource::endpoint);
}

TEST_F(AppStateHistoryTest, aHistoryThatHasNotChangedIsNotReadAgain)
{
    add("ada");
    rescan();
    append("ada");
    waitFor(state.refreshNext());
    const auto first = state.historyByDir().at(dirOf("ada"));
    EXPECT_EQ(first->size(), 1U);
    waitFor(state.refreshNext());
    EXPECT_EQ(state.historyByDir().at(dirOf("ada")), first);
    append("ada");
    waitFor(state.refreshNext());
    EXPECT_EQ(samplesOf("ada"), 2U);
}

TEST_F(AppStateHistoryTest, thatOfAnAccountThatIsNotTrackedIsThereToo)
{
    addAll({"ada", "ben"});
    rescan();
    append("ada");
    append("ben");
    state.setTracked(id("ben"), false);
    waitFor(state.refreshNext());
    EXPECT_EQ(samplesOf("ada"), 1U);
    EXPECT_EQ(samplesOf("ben"), 1U);
    append("ben");
    rescan();
    EXPECT_EQ(samplesOf("ben"), 2U);
}

TEST_F(AppStateHistoryTest, aRoundWithNothingToDoReadsNone)
{
    add("ada");
    append("ada");
    rescan();
    state.setTracked(id("ada"), false);
    const auto before = state.historyByDir();
    ASSERT_EQ(samplesOf("ada"), 1U);
    append("ada");
    waitFor(state.refresh(false));
    waitFor(state.refresh(true));
    waitFor(state.refreshNext());
    EXPECT_EQ(state.historyByDir(), before); // the very same objects
    EXPECT_EQ(state.lastUpdated(), clock.now());
}

TEST_F(AppStateHistoryTest, theAnchorsFollowARoundAndAScan)
{
    add("ada");
    rescan();
    EXPECT_EQ(state.resetAnchorsByDir(), ResetAnchors());
    ResetAnchorStore anchors(files, folders.vellumor() + "/reset-anchors.json");
    Usage usage = test::reading(1, clock.now());
    usage.windows[1].resetsAt = clock.now() + std::chrono::hours(50);
    anchors.record(usage, dirOf("ada"));
    waitFor(state.refreshNext());
    EXPECT_EQ(state.resetAnchorsByDir().at(dirOf("ada")).at("weekly_all").resetsAt,
              usage.windows[1].resetsAt);
    *usage.windows[1].resetsAt += std::chrono::hours(168);
    anchors.record(usage, dirOf("ada"));
    rescan();
    EXPECT_EQ(state.resetAnchorsByDir(), anchors.load());
    EXPECT_EQ(state.resetAnchorsByDir().at(dirOf("ada")).at("weekly_all").resetsAt,
              usage.windows[1].resetsAt);
}

// Two rounds end at once: one that began to read while the account was hidden, and leaves it out,
// and one that finds its file as it was.
TEST_F(AppStateHistoryTest, oneThatAnotherRoundHasDroppedComesBack)
{
    addAll({"ada", "ben"});
    append("ada");
    append("ben");
    rescan();
    ASSERT_EQ(samplesOf("ada"), 1U);
    Gate ada;
    Gate ben;
    others.gates = {&ada, &ben};
    auto first = state.refreshNext();
    auto second = state.refreshNext();
    settle();
    ASSERT_EQ(calls(), 2);

    const Account hidden = account("ada");
    state.remove(hidden);
    ben.open(); // the reading begins: of ben alone
    Gate scan;
    scanGate = &scan;
    auto restored = state.restore(hidden.configDir);
    state.setTracked(id("ben"), true); // what is known already brings ada back before the scan
    ASSERT_EQ(namesOf(state.accounts()), (Names{"ada", "ben"}));
    ada.open();
    waitFor(std::move(first));
    waitFor(std::move(second));
    EXPECT_EQ(samplesOf("ben"), 1U);
    EXPECT_EQ(samplesOf("ada"), 1U);
    scan.open();
    waitFor(std::move(restored));
}

} // namespace
} // namespace vellumor::appStateHistoryTest
