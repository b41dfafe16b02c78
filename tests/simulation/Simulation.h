#pragma once

#include "simulation/QuickFileCalls.h"
#include "simulation/Sibling.h"
#include "simulation/Watch.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vellumor::simulation {

enum class Company { alone, sibling, vandal };

struct Scenario {
    int accounts = 1;
    Company company = Company::alone;
    bool hasTrouble = false;
    bool hasClockSteps = false;
    double days = 7;
    std::uint32_t seed = 1;
    bool traces = false;
};

struct Outcome {
    Figures figures;
    std::vector<std::string> broken; // promises that were not kept
    std::string trace;               // if asked for, every call: when, whose, and what came of it
};

// Lets the program run through a scenario. The same scenario gives the same outcome.
class Simulation {
public:
    explicit Simulation(const Scenario& scenario);
    [[nodiscard]] Outcome run();

private:
    [[nodiscard]] SimulatedProgram::World world();
    void settle();
    void drain();
    void startProgram();
    void restartProgram();
    void lookAgain();
    void onCall(const Endpoint::Call& call);
    [[nodiscard]] int runClaude(int account);

    // What happens in the world, each at random moments of its own.
    void scheduleUse(int account);
    void scheduleTrouble();
    void every(std::chrono::hours mean, std::function<void()> what);
    void sleepFor(milliseconds duration);
    void goOfflineFor(milliseconds duration);
    void makeUnwellFor(milliseconds duration);
    void signOutFor(milliseconds duration);
    void takeAwayFor(milliseconds duration);
    void standAloneFor(milliseconds duration);
    void stepClock();
    [[nodiscard]] int anyAccount();
    [[nodiscard]] milliseconds between(milliseconds least, milliseconds most);

    Scenario m_scenario;
    std::mt19937 m_random;
    test::FakeClock m_clock{test::instant("2026-03-02T06:00:00Z")};
    Worker m_worker;
    QuickFileCalls m_calls;
    FileStore m_files{m_calls};
    Timeline m_timeline{m_clock, [this] { settle(); }};
    Home m_home;
    Folders m_folders{m_home.path(), m_home.path() + "/data", m_home.path() + "/config"};
    Endpoint m_endpoint;
    Watch m_watch{m_timeline, m_home, m_endpoint};
    Sibling m_sibling{m_timeline, m_clock, m_files, m_folders, m_home, m_endpoint};
    Vandal m_vandal;
    std::unique_ptr<SimulatedProgram> m_program;
    bool m_isOnline = true;
    bool m_isClaudeAble = true;
    std::string m_trace;
    std::vector<std::size_t> m_heapByWeek;
};

} // namespace vellumor::simulation
