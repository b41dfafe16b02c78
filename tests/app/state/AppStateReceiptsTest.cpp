#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateReceiptsTest {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using test::Names;

constexpr hours week(168);

struct AppStateReceiptsTest : test::AppStateTesting {
    UsageHistoryStore history{files, folders.vellumor() + "/history"};
    ResetAnchorStore anchors{files, folders.vellumor() + "/reset-anchors.json"};
    ReceiptStore receipts{files, folders.vellumor() + "/receipts"};
    Instant weekEnd = clock.now() + minutes(10);

    // Its week ends at weekEnd.
    void learnAnchor(const std::string& name)
    {
        Usage usage = test::reading(1, clock.now());
        usage.windows[1].resetsAt = weekEnd;
        anchors.record(usage, dirOf(name));
    }
    // A sample as it was written at its moment.
    void sample(const std::string& name, Instant at, double percent = 40)
    {
        history.append(test::reading(percent, at), dirOf(name), at);
    }
    // An account that was watched for two hours of the week that is about to end.
    void addWatched(const std::string& name)
    {
        add(name);
        learnAnchor(name);
        for (int hour = 3; hour >= 1; --hour)
            sample(name, clock.now() - hours(hour), 40 + hour);
    }
    void passWeekEnd() { clock.advance(minutes(20)); }
    void round() { waitFor(state.refreshNext()); }

    [[nodiscard]] WeeklyReceipts receiptsOf(const std::string& name) const
    {
        const auto known = state.receiptsByDir().find(dirOf(name));
        return known == state.receiptsByDir().end() ? WeeklyReceipts() : known->second;
    }
    [[nodiscard]] std::vector<Instant> weekEnds(const std::string& name) const
    {
        std::vector<Instant> ends;
        for (const WeeklyReceipt& receipt : receiptsOf(name))
            ends.push_back(receipt.weekEnd);
        return ends;
    }
    // How often a file of receipts was written.
    [[nodiscard]] std::ptrdiff_t writes() const
    {
        const Names written = disk.written();
        return std::count_if(written.begin(), written.end(),
                             [](const std::string& name) { return name.starts_with("receipts/"); });
    }
};

TEST_F(AppStateReceiptsTest, aWeekThatHasEndedIsArchivedOnce)
{
    addWatched("ada");
    rescan();
    round();
    EXPECT_EQ(receiptsOf("ada"), WeeklyReceipts()); // it lasts ten minutes more
    EXPECT_EQ(writes(), 0);

    passWeekEnd();
    const Instant ended = clock.now();
    round();
    ASSERT_EQ(receiptsOf("ada").size(), 1U);
    const WeeklyReceipt receipt = receiptsOf("ada")[0];
    EXPECT_EQ(receipt.weekStart, weekEnd - week);
    EXPECT_EQ(receipt.weekEnd, weekEnd);
    EXPECT_EQ(receipt.sampleCount, 3);
    EXPECT_NEAR(receipt.coveragePercent, 100.0 * 2 / 168, 1e-6);
    ASSERT_EQ(receipt.windows.size(), 3U);
    EXPECT_EQ(receipt.windows[0].kind, "session");
    EXPECT_EQ(receipt.windows[0].peakPercent, 43);
    EXPECT_GE(receipt.archivedAt, ended);
    EXPECT_LE(receipt.archivedAt, clock.now());
    EXPECT_EQ(writes(), 1);

    round();
    round();
    EXPECT_EQ(receiptsOf("ada"), WeeklyReceipts{receipt});
    EXPECT_EQ(writes(), 1);
    EXPECT_EQ(receipts.load(dirOf("ada")).size(), 1U);
}

TEST_F(AppStateReceiptsTest, whoWatchesIsToldOfIt)
{
    addWatched("ada");
    rescan();
    passWeekEnd();
    settle();
    std::size_t seen = 0;
    state.observe([&] { seen = receiptsOf("ada").size(); });
    round();
    settle();
    EXPECT_EQ(seen, 1U);
}

TEST_F(AppStateReceiptsTest, ofAnAccountThatIsNotTrackedNoWeekIsArchivedButThoseThatAreAreLoaded)
{
    addWatched("ada");
    addWatched("ben");
    WeeklyReceipt old;
    old.weekEnd = weekEnd - week;
    receipts.append(old, dirOf("ben"), clock.now());
    rescan();
    state.setTracked(id("ben"), false);
    passWeekEnd();
    round();
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>{weekEnd});
    EXPECT_EQ(weekEnds("ben"), std::vector<Instant>{weekEnd - week});
    state.setTracked(id("ben"), true);
    round();
    EXPECT_EQ(weekEnds("ben"), (std::vector<Instant>{weekEnd - week, weekEnd}));
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>{weekEnd});
}

TEST_F(AppStateReceiptsTest, severalWeeksAreArchivedFromTheOldestOn)
{
    add("ada");
    learnAnchor("ada");
    sample("ada", weekEnd - week - hours(1));
    sample("ada", weekEnd - hours(1));
    rescan();
    passWeekEnd();
    round();
    EXPECT_EQ(weekEnds("ada"), (std::vector<Instant>{weekEnd - week, weekEnd}));
}

TEST_F(AppStateReceiptsTest, withoutAnAnchorOrAHistoryNoWeekEnds)
{
    add("ada");
    learnAnchor("ada");
    add("ben");
    sample("ben", clock.now() - hours(1));
    addWatched("cleo");
    rescan();
    passWeekEnd();
    round();
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>());
    EXPECT_EQ(weekEnds("ben"), std::vector<Instant>());
    EXPECT_EQ(weekEnds("cleo"), std::vector<Instant>{weekEnd});
    EXPECT_EQ(writes(), 1);
}

TEST_F(AppStateReceiptsTest, whileNoWeekEndsNoFileIsReadUntilTheNextScan)
{
    addWatched("ada");
    rescan();
    WeeklyReceipt another; // of another program
    another.weekEnd = weekEnd - week;
    receipts.append(another, dirOf("ada"), clock.now());
    round();
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>());
    rescan();
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>{weekEnd - week});
}

TEST_F(AppStateReceiptsTest, aWeekThatAnotherProgramHasArchivedIsNotArchivedAgain)
{
    addWatched("ada");
    rescan();
    WeeklyReceipt another;
    another.weekEnd = weekEnd + std::chrono::seconds(59);
    receipts.append(another, dirOf("ada"), clock.now());
    passWeekEnd();
    round();
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>{another.weekEnd});
    EXPECT_EQ(writes(), 1);
}

// It moves by more than what makes two ends one.
TEST_F(AppStateReceiptsTest, aWeekWhoseEndMovesBackAfterwardsIsNotArchivedAgain)
{
    addWatched("ada");
    rescan();
    passWeekEnd();
    round();
    const Instant archived = std::exchange(weekEnd, weekEnd - std::chrono::seconds(90));
    learnAnchor("ada");
    rescan();
    round();
    EXPECT_EQ(weekEnds("ada"), std::vector<Instant>{archived});
}

TEST_F(AppStateReceiptsTest, thoseOfAnAccountThatHasGoneGoAndThoseOfAHiddenOneStay)
{
    for (const char* const name : {"ada", "ben", "cleo"}) {
        add(name);
        WeeklyReceipt receipt;
        receipt.weekEnd = weekEnd - week;
        receipts.append(receipt, dirOf(name), clock.now());
    }
    rescan();
    ASSERT_EQ(receiptsOf("ben").size(), 1U);
    state.remove(account("cleo"));
    leaveOnly({"ada", "cleo"});
    rescan();
    EXPECT_EQ(namesOf(state.accounts()), Names{"ada"});
    EXPECT_EQ(receiptsOf("ada").size(), 1U);
    EXPECT_EQ(receiptsOf("ben").size(), 0U);
    EXPECT_EQ(receipts.load(dirOf("ada")).size(), 1U);
    EXPECT_EQ(receipts.load(dirOf("ben")).size(), 0U);
    EXPECT_EQ(receipts.load(dirOf("cleo")).size(), 1U);
}

} // namespace
} // namespace vellumor::appStateReceiptsTest
