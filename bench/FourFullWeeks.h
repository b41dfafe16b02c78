#pragma once

#include "SampleReading.h"

#include "simulation/SimulatedProgram.h"
#include "store/AccountFiles.h"

#include <QCoreApplication>

#include <cstdlib>

namespace vellumor::bench {

// Four accounts, each with a week of history that is full, and the program that polls them; its
// time moves only when it is told to.
class FourFullWeeks {
public:
    FourFullWeeks()
    {
        for (int account = 0; account < accounts; ++account)
            fill(m_kept, m_home.configDir(m_home.add(m_clock.now())));
        fill(m_aside, nobody);
        wait(m_program.state().rescan());
        for (const auto& [configDir, history] : m_program.state().historyByDir()) {
            if (history->size() != samplesOfAWeek)
                std::abort();
        }
    }

    // One account's turn.
    void tick()
    {
        const auto before = m_program.state().historyByDir();
        pass(std::chrono::seconds(60));
        wait(m_program.state().refreshNext());
        if (m_program.state().historyByDir() == before) // nothing was read, and nothing learnt
            std::abort();
    }
    // A reading of an account that nobody polls.
    void append()
    {
        const Instant at = m_start + std::chrono::minutes(++m_appended);
        m_history.append(sampleReading(at, m_appended), nobody, at);
    }

    [[nodiscard]] AppState& state() { return m_program.state(); }
    [[nodiscard]] Instant now() const { return m_clock.now(); }

private:
    static constexpr int accounts = 4;
    static constexpr int samplesOfAWeek = 10080; // one a minute
    static constexpr const char* nobody = "/home/nobody/.claude";

    // Its minutes end where the clock stands.
    void fill(const std::string& folder, const std::string& configDir) const
    {
        UsageSamples samples;
        for (int i = samplesOfAWeek; i > 0; --i)
            samples.push_back(UsageSample::of(sampleReading(m_start - std::chrono::minutes(i), i)));
        m_files.write(encodeSamples(samples).value(), AccountFiles::path(folder, configDir));
    }
    void pass(std::chrono::milliseconds time) { m_timeline.runUntil(m_timeline.now() + time); }
    void wait(Task<> task)
    {
        for (settle(); !task.isReady(); settle())
            pass(std::chrono::milliseconds(400));
        if (m_program.state().historyByDir().size() != accounts)
            std::abort();
    }
    void settle()
    {
        QCoreApplication::processEvents();
        while (m_worker.awaited() > 0)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    test::FakeClock m_clock;
    Instant m_start = m_clock.now();
    Worker m_worker;
    FileStore m_files;
    simulation::Timeline m_timeline{m_clock, [this] { settle(); }};
    simulation::Home m_home;
    Folders m_folders{m_home.path(), m_home.path() + "/data", m_home.path() + "/config"};
    simulation::Endpoint m_endpoint{
        m_timeline, m_clock,
        [](std::string_view token) { return simulation::Home::ownerOf(token); },
        [](std::string_view token) { return simulation::Home::ownerOf(token); }};
    std::mt19937 m_random;
    std::string m_kept = m_folders.vellumor() + "/history";
    std::string m_aside = m_home.path() + "/aside"; // where nothing is pruned
    UsageHistoryStore m_history{m_files, m_aside};
    simulation::SimulatedProgram m_program{{m_timeline, m_clock, m_worker, m_files, m_folders,
                                            m_home, m_endpoint, m_random, [](int) { return 1; },
                                            [] {}}};
    int m_appended = 0;
};

} // namespace vellumor::bench
