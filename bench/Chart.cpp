#include "Ratio.h"
#include "SampleReading.h"

#include "history/HistoryChart.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace vellumor::bench {

namespace {

constexpr int samplesOfAWeek = 10080; // one a minute

// A full week of three limits, and all of it as the history shows it.
class DrawnWeek {
public:
    DrawnWeek()
    {
        UsageSamples samples;
        for (int minute = 0; minute < samplesOfAWeek; ++minute)
            samples.push_back(
                UsageSample::of(sampleReading(m_start + std::chrono::minutes(minute), minute)));
        m_history = decodeSamples(encodeSamples(samples).value()).value(); // as it is read
    }

    void draw() const
    {
        const TimeSpan span{m_start, m_start + std::chrono::minutes(samplesOfAWeek)};
        for (const auto& [kind, percent] : m_history.front().percents) {
            const auto segments = HistoryChart::segments(m_history, kind, span);
            if (segments.size() != 1)
                std::abort();
            benchmark::DoNotOptimize(segments.data());
        }
    }
    // Looks at each percent of each sample once.
    void walk() const
    {
        double sum = 0;
        for (const UsageSample& sample : m_history) {
            for (const auto& [kind, percent] : sample.percents)
                sum += percent;
        }
        benchmark::DoNotOptimize(sum);
    }

private:
    Instant m_start{std::chrono::seconds(1772359200)};
    UsageSamples m_history;
};

} // namespace

std::vector<Comparison> charts()
{
    const auto week = std::make_shared<DrawnWeek>();
    Comparison comparison{"the chart of a week, CPU time",
                          [week] { week->draw(); },
                          [week] { week->walk(); },
                          200,
                          1,
                          5};
    comparison.isCpuTime = true;
    return {comparison};
}

} // namespace vellumor::bench
