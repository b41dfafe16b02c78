// The program on a machine of its own, for days of simulated time: what it promises about its
// requests and its readings, whatever happens around it.

#include "simulation/Simulation.h"
#include "simulation/FixedPoll.h"

#include <gtest/gtest.h>

#include <ostream>

namespace vellumor::simulation {
namespace {

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

// Checked code is slower by its nature.
#ifdef __SANITIZE_ADDRESS__
constexpr double share = 0.3;
#else
constexpr double share = 1.0;
#endif

struct Case {
    const char* name;
    Scenario scenario;
};

void PrintTo(const Case& printed, std::ostream* out)
{
    *out << printed.name;
}

class SimulationTest : public testing::TestWithParam<Case> {};

TEST_P(SimulationTest, everyPromiseIsKept)
{
    Scenario scenario = GetParam().scenario;
    scenario.days *= share;
    const Outcome outcome = Simulation(scenario).run();
    EXPECT_EQ(joined(outcome.broken), "");
    EXPECT_GT(outcome.figures.calls, 20);
    EXPECT_GT(outcome.figures.ticks, 50);
}

constexpr Company alone = Company::alone;
constexpr Company sibling = Company::sibling;

INSTANTIATE_TEST_SUITE_P(
    whoever, SimulationTest,
    testing::Values(Case{"one", {1, alone, false, false, 0.3}},
                    Case{"four", {4, alone, false, false, 0.3}},
                    Case{"ten", {10, alone, false, false, 0.3}},
                    Case{"fourAndASibling", {4, sibling, false, false, 0.3}},
                    Case{"oneInTrouble", {1, alone, true, false, 1.5}},
                    Case{"fourInTrouble", {4, alone, true, false, 1.0}},
                    Case{"tenInTrouble", {10, alone, true, false, 1.0}},
                    Case{"fourAndASiblingInTrouble", {4, sibling, true, false, 1.0, 2}},
                    Case{"fourAndAVandal", {4, Company::vandal, true, false, 1.0}},
                    Case{"fourWithAClockThatJumps", {4, alone, true, true, 1.5}}),
    [](const auto& instance) { return instance.param.name; });

TEST(Simulation, theSameSeedGivesTheSameCallsAndAnotherGivesOthers)
{
    const auto traceOf = [](std::uint32_t seed) {
        return Simulation({3, sibling, true, false, 0.2, seed, true}).run().trace;
    };
    const std::string first = traceOf(5);
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(traceOf(5), first);
    EXPECT_NE(traceOf(6), first);
}

// What a plain poll costs is measured by the same endpoint.
TEST(FixedPoll, asksAllAtOnceAndMeetsRefusals)
{
    const Figures ten = fixedPoll({10, 1, 600, 0.5});
    EXPECT_EQ(ten.largestBurst, 10);
    EXPECT_EQ(ten.calls, 730);
    EXPECT_GT(ten.refusals, 300);
    EXPECT_EQ(fixedPoll({1, 1, 60, 0.5}).refusals, 0);
}

} // namespace
} // namespace vellumor::simulation
