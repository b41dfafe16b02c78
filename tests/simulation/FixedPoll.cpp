#include "simulation/FixedPoll.h"

#include <algorithm>
#include <vector>

namespace vellumor::simulation {

namespace {

using namespace std::chrono_literals;

class FixedPoll {
public:
    explicit FixedPoll(const FixedPollScenario& scenario)
        : m_scenario(scenario)
        , m_endpoint(
              m_timeline, m_clock, [](std::string_view token) { return Home::ownerOf(token); },
              [](std::string_view token) { return Home::ownerOf(token); })
        , m_readAt(static_cast<std::size_t>(scenario.accounts))
    {
        m_figures.accounts = scenario.accounts;
    }

    Figures run()
    {
        const auto interval =
            std::chrono::round<milliseconds>(std::chrono::duration<double>(m_scenario.interval));
        for (int i = 0; i < m_scenario.programs; ++i) // they were not started at one moment
            m_timeline.after(interval * i / m_scenario.programs,
                             [this, i, interval] { round(i, interval); });
        look();
        m_timeline.runUntil(std::chrono::round<milliseconds>(
            std::chrono::duration<double, std::ratio<86400>>(m_scenario.days)));
        m_figures.meanAge = m_ageSum / m_ages;
        return m_figures;
    }

private:
    void round(int program, milliseconds interval)
    {
        for (int account = 0; account < m_scenario.accounts; ++account) {
            const std::string token = "simulated-token-" + std::to_string(account) + "-0";
            const auto answer = m_endpoint.answer(token, Endpoint::Caller::program);
            ++m_figures.calls;
            if (answer.status == 429)
                ++m_figures.refusals;
            else if (program == 0) // each shows what it has read itself
                m_readAt[static_cast<std::size_t>(account)] = m_timeline.now();
        }
        m_figures.largestBurst = std::max(m_figures.largestBurst, m_scenario.accounts);
        m_timeline.after(interval, [this, program, interval] { round(program, interval); });
    }
    void look()
    {
        for (const milliseconds readAt : m_readAt) {
            const double age = std::chrono::duration<double>(m_timeline.now() - readAt).count();
            m_ageSum += age;
            ++m_ages;
            m_figures.oldestAge = std::max(m_figures.oldestAge, age);
        }
        m_figures.hoursAwake += 7.0 / 3600;
        m_timeline.after(7s, [this] { look(); });
    }

    FixedPollScenario m_scenario;
    test::FakeClock m_clock;
    Timeline m_timeline{m_clock, [] {}};
    Endpoint m_endpoint;
    std::vector<milliseconds> m_readAt; // by account
    Figures m_figures;
    double m_ageSum = 0;
    int m_ages = 0;
};

} // namespace

Figures fixedPoll(const FixedPollScenario& scenario)
{
    return FixedPoll(scenario).run();
}

} // namespace vellumor::simulation
