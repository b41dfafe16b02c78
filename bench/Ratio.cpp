#include "Ratio.h"

#include <algorithm>
#include <chrono>

namespace vellumor::bench {

namespace {

double microsecondsOf(const std::function<void()>& action, int calls)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i)
        action();
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count() / calls;
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
        ours.push_back(microsecondsOf(comparison.ours, comparison.callsARound));
        bare.push_back(microsecondsOf(comparison.bare, comparison.callsARound));
    }
    return {medianOf(std::move(ours)), medianOf(std::move(bare))};
}

} // namespace vellumor::bench
