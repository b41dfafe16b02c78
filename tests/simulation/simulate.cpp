// Lets the program run through simulated weeks and prints what they cost, beside what a plain poll
// at a fixed interval would.
// Usage: vellumor_simulate [--days N] [--seeds N] [--costs 1]

#include "simulation/FixedPoll.h"
#include "simulation/Simulation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QCoreApplication>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <string>

namespace {

using namespace vellumor::simulation;

struct Options {
    double days = 7;
    std::uint32_t seeds = 1;
    int costs = 0; // 1: tells what each simulation itself took
};

bool readNumber(const char* text, auto& value)
{
    const std::string_view all(text);
    const auto end = all.data() + all.size();
    return std::from_chars(all.data(), end, value).ptr == end && value > 0;
}

bool read(int count, char** arguments, Options& options)
{
    for (int i = 1; i < count; i += 2) {
        const std::string_view name = arguments[i];
        const bool hasValue = i + 1 < count;
        const bool isGood =
            hasValue && ((name == "--days" && readNumber(arguments[i + 1], options.days)) ||
                         (name == "--seeds" && readNumber(arguments[i + 1], options.seeds)) ||
                         (name == "--costs" && readNumber(arguments[i + 1], options.costs)));
        if (!isGood)
            return false;
    }
    return true;
}

void print(const std::string& who, const Figures& figures)
{
    const double perHour =
        (figures.calls + figures.siblingCalls) / (figures.hoursAwake * figures.accounts);
    fmt::print("| {} | {} | {} | {:.1f} | {} | {} | {:.0f} | {:.0f} |\n", who, figures.accounts,
               figures.calls + figures.siblingCalls, perHour, figures.largestBurst,
               figures.refusals, figures.meanAge, figures.oldestAge);
    std::fflush(stdout);
}

std::string described(const Scenario& scenario)
{
    std::string text = "Vellumor";
    if (scenario.company == Company::sibling)
        text += " and a sibling";
    if (scenario.company == Company::vandal)
        text += " and a vandal";
    if (scenario.hasTrouble)
        text += ", with trouble";
    if (scenario.hasClockSteps)
        text += ", the clock jumps";
    if (scenario.seed > 1)
        text += fmt::format(", seed {}", scenario.seed);
    return text;
}

// True when every promise was kept.
bool simulate(const Scenario& scenario, bool tellsCosts)
{
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = Simulation(scenario).run();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    print(described(scenario), outcome.figures);
    if (tellsCosts)
        fmt::print("took {:.1f} s; bytes in use by week: {}\n", took.count(),
                   fmt::join(outcome.figures.heapByWeek, " "));
    for (const std::string& line : outcome.broken)
        fmt::print("broken: {}\n", line);
    return outcome.broken.empty();
}

bool simulateAll(const Options& options)
{
    bool isGood = true;
    for (const int accounts : {1, 4, 10}) {
        for (std::uint32_t seed = 1; seed <= options.seeds; ++seed) {
            for (const Company company : {Company::alone, Company::sibling}) {
                isGood &= simulate({accounts, company, false, false, options.days, seed, false},
                                   options.costs > 0);
                isGood &= simulate({accounts, company, true, false, options.days, seed, false},
                                   options.costs > 0);
            }
            isGood &= simulate({accounts, Company::vandal, true, false, options.days, seed, false},
                               options.costs > 0);
            isGood &= simulate({accounts, Company::alone, true, true, options.days, seed, false},
                               options.costs > 0);
        }
        print("fixed poll", fixedPoll({accounts, 1, 60.0 * accounts, options.days}));
        print("two fixed polls", fixedPoll({accounts, 2, 60.0 * accounts, options.days}));
    }
    return isGood;
}

} // namespace

int main(int count, char** arguments)
{
    Options options;
    if (!read(count, arguments, options)) {
        std::fprintf(stderr, "usage: vellumor_simulate [--days N] [--seeds N] [--costs 1]\n");
        return 2;
    }
    const QCoreApplication application(count, arguments);
    fmt::print("| | accounts | requests | per account and hour | most in a second | refused (429) "
               "| mean age, s | oldest, s |\n|---|---|---|---|---|---|---|---|\n");
    return simulateAll(options) ? 0 : 1;
}
