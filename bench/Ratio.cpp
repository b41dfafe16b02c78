#include "Ratio.h"

#include <algorithm>
#include <ctime>

namespace vellumor::bench {

namespace {

double microsecondsNow(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double microsecondsOf(const std::function<void()>& action, const Comparison& comparison)
{
    const clockid_t clock = comparison.isCpuTime ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC;
    const double start = microsecondsNow(clock);
    for (int i = 0; i < comparison.callsARound; ++i)
        action();
    return (microsecondsNow(clock) - start) / comparison.callsARound;
}

double medianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

Medians measure(const Comparison& comparison)
{
    comparison.ours(); // once each to warm up
    comparison.bare();
    std::vector<double> ours;
    std::vector<double> bare;
    for (int round = 0; round < comparison.rounds; ++round) {
        ours.push_back(microsecondsOf(comparison.ours, comparison));
        bare.push_back(microsecondsOf(comparison.bare, comparison));
    }
    return {medianOf(std::move(ours)), medianOf(std::move(bare))};
}

} // namespace vellumor::bench
