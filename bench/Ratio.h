#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vellumor::bench {

// One thing that the program does, beside the least that doing it could cost.
struct Comparison {
    std::string name;
    std::function<void()> ours;
    std::function<void()> bare;
    int rounds = 0;         // how often each is timed; they take turns
    int callsARound = 1;    // so many calls are timed together, since one may be too short
    double limit = 0;       // the highest ratio that is good
    bool isCpuTime = false; // of all threads, in place of the time that passes
    // The most that ours may take in microseconds, whatever the ratio; 0: that does not matter.
    double mostMicroseconds = 0;
};

struct Medians {
    double oursMicroseconds = 0; // of one call
    double bareMicroseconds = 0;
    [[nodiscard]] double ratio() const { return oursMicroseconds / bareMicroseconds; }
    [[nodiscard]] bool isGood(const Comparison& comparison) const
    {
        return ratio() <= comparison.limit && (comparison.mostMicroseconds == 0 ||
                                               oursMicroseconds <= comparison.mostMicroseconds);
    }
};

// What it takes at the least to replace `folder`/bare.json so that a power cut leaves the old or
// the new one.
void writeBare(const std::string& folder, const std::string& bytes);

// Times both in turns, so that whatever else the machine does meets both.
[[nodiscard]] Medians measure(const Comparison& comparison);

[[nodiscard]] std::vector<Comparison> usageDecoding();
[[nodiscard]] std::vector<Comparison> fileWriting(const std::string& folder);
[[nodiscard]] std::vector<Comparison> usageHistory(const std::string& folder);
[[nodiscard]] std::vector<Comparison> accountDiscovery(const std::string& folder);
[[nodiscard]] std::vector<Comparison> tick();
[[nodiscard]] std::vector<Comparison> labels();
[[nodiscard]] std::vector<Comparison> popoverTick();
[[nodiscard]] std::vector<Comparison> notifications();
[[nodiscard]] std::vector<Comparison> charts();
[[nodiscard]] std::vector<Comparison> scrubber();

} // namespace vellumor::bench
