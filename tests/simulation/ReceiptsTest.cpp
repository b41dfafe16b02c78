// What is archived of weeks in which the program was off as often as on, beside what truly happened
// in them.

#include "simulation/OnAndOff.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vellumor::simulation {
namespace {

using namespace std::chrono_literals;
using Moments = std::vector<Instant>;

constexpr std::chrono::hours session = 5h;

// More than the twelve that are kept.
constexpr int weeks = 16;

double seconds(Instant::duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

// One week, told by the world alone.
struct TrueWeek {
    Instant start{};
    Instant end{};
    std::optional<Instant> archivable; // from the first reading on that follows its end
    Instant knownFrom{};               // what was before is forgotten by then
    Moments within;                    // of what is known, the readings of the week
    Moments known;                     // and all

    TrueWeek(const OnAndOff& world, int number)
        : start(world.start() + (number - 1) * week)
        , end(start + week)
    {
        const Moments& readings = world.readings();
        const auto next = std::ranges::lower_bound(readings, end);
        if (next == readings.end())
            return;
        // The history holds seven days when that reading has been added.
        knownFrom = std::max(start, *next - week);
        std::copy_if(readings.begin(), next + 1, std::back_inserter(known),
                     [&](Instant at) { return at >= knownFrom; });
        std::ranges::copy_if(known, std::back_inserter(within),
                             [&](Instant at) { return at <= end; });
        if (!within.empty())
            archivable = *next;
    }

    [[nodiscard]] double peak(const OnAndOff& world, std::chrono::hours length) const
    {
        double highest = 0;
        for (const Instant at : within)
            highest = std::max(highest, world.percentAt(at, length));
        return highest;
    }
    // Falls from one reading to the next. Where the program was off, several resets are one.
    [[nodiscard]] int falls(const OnAndOff& world, std::chrono::hours length) const
    {
        int count = 0;
        for (std::size_t i = 1; i < within.size(); ++i) {
            count +=
                world.percentAt(within[i], length) < world.percentAt(within[i - 1], length) - 1.0;
        }
        return count;
    }
};

// For how long the program was on in the known part of the week, and how often it was started.
struct Watched {
    double time = 0; // seconds
    int spells = 0;

    Watched(const OnAndOff& world, const TrueWeek& of)
    {
        for (const OnAndOff::Spell& spell : world.spells()) {
            const Instant from = std::max(spell.from, of.knownFrom);
            const Instant to = std::min(spell.to, of.end);
            if (from >= to)
                continue;
            time += seconds(to - from);
            ++spells;
        }
    }
};

const WeeklyReceipt::WindowFacts* factsOf(const WeeklyReceipt& receipt, const std::string& kind)
{
    const auto found = std::ranges::find(receipt.windows, kind, &WeeklyReceipt::WindowFacts::kind);
    return found == receipt.windows.end() ? nullptr : &*found;
}

void expectWindow(const WeeklyReceipt& receipt, const char* kind, const OnAndOff& world,
                  const TrueWeek& truth, std::chrono::hours length)
{
    const auto* facts = factsOf(receipt, kind);
    ASSERT_NE(facts, nullptr) << kind;
    EXPECT_EQ(facts->peakPercent, truth.peak(world, length)) << kind;
    EXPECT_EQ(world.percentAt(facts->peakAt - 500ms, length), facts->peakPercent) << kind;
    EXPECT_EQ(facts->observedResets, truth.falls(world, length)) << kind;
    // "At least": never more than there were.
    EXPECT_LE(facts->observedResets, week / length) << kind;
}

// A spell is known from its first reading to its last one: the start takes some seconds, and the
// end may be a slot, with its jitter of a tenth, behind the last. One more slot may be missing
// where what is known begins. Nothing is added: the program is off for longer than what passes for
// a gap.
void expectCoverage(const WeeklyReceipt& receipt, const OnAndOff& world, const TrueWeek& truth)
{
    const double slot = 1.1 * seconds(OnAndOff::interval);
    static_assert(OnAndOff::shortestOff > 2.2 * OnAndOff::interval);
    const Watched watched(world, truth);
    const double covered = receipt.coveragePercent / 100 * seconds(week);
    EXPECT_LE(covered, watched.time + 1);
    EXPECT_GE(covered, watched.time - watched.spells * (slot + 30) - slot);
}

// Whether most of what is known are readings one slot apart. Of few readings the pauses themselves
// are what is typical.
bool isTypical(const TrueWeek& truth)
{
    const double slot = 1.1 * seconds(OnAndOff::interval) + 30;
    std::size_t regular = 0;
    for (std::size_t i = 1; i < truth.known.size(); ++i)
        regular += seconds(truth.known[i] - truth.known[i - 1]) <= slot ? 1U : 0U;
    return (truth.known.size() - 1) / 2 < regular;
}

class ReceiptsTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(ReceiptsTest, eachWeekThatWasWatchedIsArchivedOnceAndSaysWhatWasSeen)
{
    OnAndOff world(GetParam());
    world.run(weeks);
    const WeeklyReceipts& published = world.published();
    std::size_t next = 0;
    int judged = 0;
    int dark = 0;
    for (int number = 1; number < weeks; ++number) {
        SCOPED_TRACE(number);
        const TrueWeek truth(world, number);
        if (!truth.archivable) {
            ++dark;
            continue;
        }
        ASSERT_LT(next, published.size());
        const WeeklyReceipt& receipt = published[next++];
        ASSERT_EQ(receipt.weekStart, truth.start);
        ASSERT_EQ(receipt.weekEnd, truth.end);
        EXPECT_GE(receipt.archivedAt, *truth.archivable);
        EXPECT_LE(receipt.archivedAt, *truth.archivable + 10s);
        EXPECT_EQ(receipt.sampleCount, static_cast<int>(truth.within.size()));
        expectWindow(receipt, "session", world, truth, session);
        expectWindow(receipt, "weekly_all", world, truth, week);
        if (isTypical(truth)) {
            expectCoverage(receipt, world, truth);
            ++judged;
        }
    }
    EXPECT_EQ(next, published.size()); // and nothing else is
    EXPECT_GE(judged, 5);
    EXPECT_GE(dark, 1); // so that there was something to see
}

INSTANTIATE_TEST_SUITE_P(whoever, ReceiptsTest, testing::Range(1U, 6U));

TEST(Receipts, thoseOfTwelveWeeksAreKept)
{
    OnAndOff world(1);
    world.run(weeks);
    WeeklyReceipts expected = world.published();
    ASSERT_FALSE(expected.empty());
    const Instant last = expected.back().archivedAt;
    std::erase_if(expected,
                  [&](const WeeklyReceipt& each) { return each.weekEnd < last - 12 * week; });
    EXPECT_EQ(world.kept(), expected);
    EXPECT_LT(expected.size(), world.published().size());
    EXPECT_LE(expected.size(), 12U);
}

} // namespace
} // namespace vellumor::simulation
