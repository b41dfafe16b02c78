#include "FourFullWeeks.h"
#include "Ratio.h"

#include "ui/PopoverView.h"
#include "ui/ShortTime.h"

#include <benchmark/benchmark.h>

namespace vellumor::bench {

namespace {

constexpr int screenHeight = 1000;

// Three limits, each of which has a pace to tell.
FetchOutcome outcomeAt(Instant now)
{
    Usage usage = sampleReading(now, 160);
    for (LimitWindow& window : usage.windows)
        window.resetsAt = now + std::chrono::hours(window.kind == "session" ? 1 : 48);
    FetchOutcome outcome;
    outcome.usage = std::move(usage);
    outcome.source = UsageSource::endpoint;
    return outcome;
}

// The popover, open above four weeks of history, in which nothing changes but the seconds.
class OpenPopover {
public:
    OpenPopover()
    {
        for (const Account& account : m_weeks.state().accounts())
            m_weeks.state().apply(outcomeAt(m_now), account.id);
        const PopoverContent content = contentNow();
        for (const AccountSectionContent& section : content.sections) {
            if (section.rows.size() != 3 || section.forecast.empty())
                std::abort();
        }
        m_view.setContent(content, screenHeight);
        m_view.show();
        QCoreApplication::processEvents();
    }

    void tick()
    {
        m_now += std::chrono::milliseconds(1); // all ticks lie within one minute
        m_view.setContent(contentNow(), screenHeight);
        QCoreApplication::processEvents();
    }
    // Looks at every percent once.
    void walk()
    {
        double sum = 0;
        for (const auto& [configDir, history] : m_weeks.state().historyByDir()) {
            for (const UsageSample& sample : *history) {
                for (const auto& [kind, percent] : sample.percents)
                    sum += percent;
            }
        }
        benchmark::DoNotOptimize(sum);
    }

private:
    [[nodiscard]] PopoverContent contentNow()
    {
        return PopoverContent::of(m_weeks.state(), m_now,
                                  [](Instant moment) { return shortTimeText(moment); });
    }

    FourFullWeeks m_weeks;
    Instant m_now = m_weeks.now();
    PopoverView m_view{{}};
};

} // namespace

// Made when its row comes, as for the other tick.
std::vector<Comparison> popoverTick()
{
    const auto made = std::make_shared<std::unique_ptr<OpenPopover>>();
    const auto popover = [made]() -> OpenPopover& {
        if (*made == nullptr)
            *made = std::make_unique<OpenPopover>();
        return **made;
    };
    Comparison comparison{"a popover tick, CPU time",
                          [popover] { popover().tick(); },
                          [popover] { popover().walk(); },
                          100,
                          1,
                          20};
    comparison.isCpuTime = true;
    return {comparison};
}

} // namespace vellumor::bench
