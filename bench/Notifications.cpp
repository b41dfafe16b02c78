#include "Ratio.h"
#include "SampleReading.h"

#include "history/UsageSample.h"
#include "notifications/NotificationManager.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace vellumor::bench {

namespace {

constexpr int samplesOfAWeek = 10080; // one a minute

// An account with a full week of history, whose next reading is like the one before for ever.
class WatchedWeek {
public:
    WatchedWeek()
    {
        for (int minute = 0; minute < samplesOfAWeek; ++minute) {
            // It climbs by little, so that the forecast walks back as far as it ever does.
            const Instant at = m_now - std::chrono::minutes(samplesOfAWeek - minute);
            m_history.push_back(UsageSample::of(reading(at, 0.005 * minute)));
        }
        m_account.id = "k3f9qz";
        m_preferences.notificationsEnabled = true;
        m_preferences.notifyProjectedSession = m_preferences.notifyProjectedWeekly = true;
        m_preferences.notifyQuotaReset = m_preferences.notifySessionClosing = true;
        m_preferences.customThresholds[m_account.id] = 75;
    }

    void observe()
    {
        m_manager.observe(m_account, m_reading, UsageSource::endpoint, m_preferences, m_history,
                          120);
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
    // The three limits, half way to their resets.
    [[nodiscard]] Usage reading(Instant at, double percent) const
    {
        Usage usage = sampleReading(at, 0);
        for (LimitWindow& window : usage.windows) {
            window.group = window.kind == "session" ? "session" : "weekly";
            window.percent = percent;
            window.resetsAt = m_now + (window.group == "session" ? std::chrono::hours(2)
                                                                 : std::chrono::hours(84));
        }
        return usage;
    }

    Instant m_now{std::chrono::seconds(1772359200)};
    Account m_account;
    Preferences m_preferences;
    UsageSamples m_history;
    Usage m_reading = reading(m_now, 51);
    NotificationManager m_manager{{[](const std::string&, const std::string&) {},
                                   [this] { return m_now; },
                                   [](Instant) { return std::string("14:05"); }}};
};

} // namespace

std::vector<Comparison> notifications()
{
    const auto week = std::make_shared<WatchedWeek>();
    Comparison comparison{"a reading through all alerts, CPU time",
                          [week] { week->observe(); },
                          [week] { week->walk(); },
                          100,
                          1,
                          20};
    comparison.isCpuTime = true;
    comparison.mostMicroseconds = 2000;
    return {comparison};
}

} // namespace vellumor::bench
