#include "Ratio.h"
#include "SampleReading.h"

#include "history/HistoryChart.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>

namespace vellumor::bench {

namespace {

constexpr int samplesOfAWeek = 10080; // one a minute
constexpr std::string_view kinds[] = {"session", "weekly_all", "seven_day_opus"};

// A full week of three limits, and all of it as the history shows it. The polls come a tenth
// earlier or later, as the program's own do.
class DrawnWeek {
public:
    // Every `pause` samples there is a hole of an hour; 0: never.
    explicit DrawnWeek(int pause)
        : m_pause(pause)
    {
        std::mt19937 random;
        std::uniform_int_distribution<int> jitter(-6000, 6000);
        UsageSamples samples;
        Instant at = m_start;
        for (int i = 0; i < samplesOfAWeek; ++i) {
            samples.push_back(UsageSample::of(sampleReading(at, i)));
            at += std::chrono::milliseconds(60000 + jitter(random));
            if (pause > 0 && i % pause == pause - 1)
                at += std::chrono::hours(1);
        }
        m_end = at;
        m_history = decodeSamples(encodeSamples(samples).value()).value(); // as it is read
    }

    void draw() const
    {
        const auto stretches =
            static_cast<std::size_t>(m_pause == 0 ? 1 : samplesOfAWeek / m_pause);
        const auto charts = HistoryChart::segmentsOfKinds(m_history, kinds, {m_start, m_end});
        for (const auto& segments : charts) {
            if (segments.size() != stretches)
                std::abort();
        }
        benchmark::DoNotOptimize(charts.data());
    }
    // Looks at the moment and each percent of each sample once.
    void walk() const
    {
        Instant::duration moments{};
        double sum = 0;
        for (const UsageSample& sample : m_history) {
            moments += sample.at - m_start;
            for (const auto& [kind, percent] : sample.percents)
                sum += percent;
        }
        benchmark::DoNotOptimize(moments);
        benchmark::DoNotOptimize(sum);
    }

private:
    int m_pause;
    Instant m_start{std::chrono::seconds(1772359200)};
    Instant m_end;
    UsageSamples m_history;
};

} // namespace

std::vector<Comparison> charts()
{
    const auto compare = [](const char* name, int pause, double limit) {
        const auto week = std::make_shared<DrawnWeek>(pause);
        Comparison comparison{name, [week] { week->draw(); }, [week] { week->walk(); }, 200, 1,
                              limit};
        comparison.isCpuTime = true;
        return comparison;
    };
    return {compare("the chart of a week, CPU time", 0, 5),
            compare("the chart of a week with holes, CPU time", 1440, 6)};
}

} // namespace vellumor::bench
