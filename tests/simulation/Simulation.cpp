#include "simulation/Simulation.h"

#include "support/PassWorker.h"

#include <fmt/format.h>

#include <QCoreApplication>

#include <malloc.h>

#include <algorithm>
#include <utility>

namespace vellumor::simulation {

using namespace std::chrono_literals;

Simulation::Simulation(const Scenario& scenario)
    : m_scenario(scenario)
    , m_random(scenario.seed)
    , m_endpoint(
          m_timeline, m_clock,
          [this](std::string_view token) { return m_home.accountOf(token, m_timeline.trueTime()); },
          [](std::string_view token) { return Home::ownerOf(token); })
    , m_vandal(m_random, m_folders.quorle())
{
    m_endpoint.onCall = [this](const Endpoint::Call& call) { onCall(call); };
    for (int i = 0; i < scenario.accounts; ++i) {
        m_home.add(m_timeline.trueTime());
        scheduleUse(i);
    }
    if (scenario.hasTrouble)
        scheduleTrouble();
    if (scenario.hasClockSteps)
        every(20h, [this] { stepClock(); });
    if (scenario.company == Company::vandal)
        every(1h, [this] { m_vandal.strike(); });
}

Outcome Simulation::run()
{
    if (m_scenario.company != Company::alone)
        m_sibling.start();
    startProgram();
    lookAgain();
    m_timeline.runUntil(std::chrono::round<milliseconds>(
        std::chrono::duration<double, std::ratio<86400>>(m_scenario.days)));
    m_sibling.stop();
    // What is under way ends, so that nobody is left waiting for a program that is gone.
    m_watch.follow(nullptr);
    m_timeline.thaw();
    m_program->stopLoop();
    while (m_clock.pendingAlarms() > 0)
        m_timeline.runUntil(m_timeline.now() + 10s);
    drain();
    Figures figures = m_watch.figures();
    figures.heapByWeek = m_heapByWeek;
    return {figures, m_watch.broken(), m_trace};
}

// Everything that needs no time runs, until all that is left waits for the clock.
void Simulation::settle()
{
    QCoreApplication::processEvents();
    while (m_worker.awaited() > 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// What nobody waits for has been written, too.
void Simulation::drain()
{
    const auto passWorker = [](Worker& worker) -> Task<> {
        auto nothing = [] {};
        co_await worker.run(std::move(nothing));
    };
    QCoro::waitFor(passWorker(m_worker));
}

SimulatedProgram::World Simulation::world()
{
    return {m_timeline,
            m_clock,
            m_worker,
            m_files,
            m_folders,
            m_home,
            m_endpoint,
            m_random,
            [this](int account) { return runClaude(account); },
            [this] { m_watch.onTick(); }};
}

void Simulation::startProgram()
{
    m_program = std::make_unique<SimulatedProgram>(world());
    m_program->setOnline(m_isOnline);
    m_watch.follow(m_program.get());
    m_watch.onRound(false);
    m_program->start();
}

void Simulation::restartProgram()
{
    if (m_timeline.isFrozen())
        return;
    m_program->stopLoop();
    if (m_clock.pendingAlarms() > 0) { // something is under way
        m_timeline.after(5s, [this] { restartProgram(); });
        return;
    }
    m_watch.follow(nullptr);
    settle();
    drain();
    startProgram();
}

void Simulation::lookAgain()
{
    m_watch.look();
    m_timeline.after(30s, [this] { lookAgain(); });
    if (m_timeline.now() >= (m_heapByWeek.size() + 1) * week)
        m_heapByWeek.push_back(::mallinfo2().uordblks);
}

void Simulation::onCall(const Endpoint::Call& call)
{
    m_watch.onCall(call);
    if (m_scenario.traces)
        m_trace += fmt::format("{} {} {} {}\n", call.at.count(), call.account, call.status,
                               call.caller == Endpoint::Caller::program ? "program" : "sibling");
}

int Simulation::runClaude(int account)
{
    if (!m_isClaudeAble || !m_isOnline || !m_home.isSignedIn(account))
        return 1;
    m_home.renew(account, m_timeline.trueTime());
    m_watch.onRevival(account);
    return 0;
}

// --- What happens
// ---------------------------------------------------------------------------------

void Simulation::every(std::chrono::hours mean, std::function<void()> what)
{
    const auto pause = between(mean / 4, 2 * mean);
    m_timeline.after(pause, [this, mean, what = std::move(what)] {
        what();
        every(mean, what);
    });
}

// A person works with an account, at times just before its token ends, at times hours later.
void Simulation::scheduleUse(int account)
{
    m_timeline.after(between(1h, 14h), [this, account] {
        if (m_home.isSignedIn(account) && m_isOnline && !m_timeline.isFrozen())
            m_home.renew(account, m_timeline.trueTime());
        scheduleUse(account);
    });
}

void Simulation::scheduleTrouble()
{
    every(16h, [this] { sleepFor(between(1min, 9h)); });
    every(9h, [this] { goOfflineFor(between(10s, 3h)); });
    every(8h, [this] { makeUnwellFor(between(2min, 90min)); });
    every(30h, [this] { signOutFor(between(30min, 6h)); });
    every(30h, [this] { takeAwayFor(between(10min, 3h)); });
    every(30h, [this] { standAloneFor(between(5min, 1h)); });
    every(5h, [this] { m_endpoint.drain(); });
    every(40h, [this] { restartProgram(); });
    every(12h, [this] {
        m_isClaudeAble = false;
        m_timeline.after(between(1h, 4h), [this] { m_isClaudeAble = true; });
    });
    every(6h, [this] {
        if (m_timeline.isFrozen())
            return;
        m_watch.onRound(true);
        m_program->refreshByHand();
    });
}

void Simulation::sleepFor(milliseconds duration)
{
    if (m_timeline.isFrozen())
        return;
    m_program->willSleep();
    m_timeline.freeze();
    m_timeline.after(duration, [this] {
        m_timeline.thaw();
        if (m_isOnline)
            m_watch.onRound(false);
        m_program->didWake();
        if (m_isOnline != m_program->isOnline())
            m_program->setOnline(m_isOnline);
    });
}

void Simulation::goOfflineFor(milliseconds duration)
{
    const auto tell = [this](bool isOnline) {
        if (isOnline == m_isOnline)
            return;
        m_isOnline = isOnline;
        m_sibling.setOnline(isOnline);
        if (m_timeline.isFrozen()) // the program hears of it when it wakes
            return;
        if (isOnline)
            m_watch.onRound(false);
        m_program->setOnline(isOnline);
    };
    tell(false);
    m_timeline.after(duration, [tell] { tell(true); });
}

void Simulation::makeUnwellFor(milliseconds duration)
{
    using Mood = Endpoint::Mood;
    static constexpr Mood moods[] = {Mood::forbidding, Mood::failing, Mood::babbling, Mood::silent};
    const int account = anyAccount();
    m_endpoint.setMood(account, moods[m_random() % std::size(moods)]);
    m_timeline.after(duration, [this, account] { m_endpoint.setMood(account, Mood::well); });
}

void Simulation::signOutFor(milliseconds duration)
{
    const int account = anyAccount();
    m_home.signOut(account);
    m_timeline.after(duration, [this, account] {
        m_home.renew(account, m_timeline.trueTime());
        m_watch.excuse(account, 1h + 20min); // an account without trouble is looked at once an hour
    });
}

void Simulation::takeAwayFor(milliseconds duration)
{
    const int account = anyAccount();
    if (!m_home.isThere(account))
        return;
    m_home.takeAway(account);
    m_timeline.after(duration, [this, account] {
        m_home.bringBack(account);
        m_watch.excuse(account, 1h + 20min);
    });
}

void Simulation::standAloneFor(milliseconds duration)
{
    const auto set = [this](bool isLocal) {
        m_program->state().updatePreferences(
            [isLocal](Preferences& preferences) { preferences.localCacheOnly = isLocal; });
    };
    set(true);
    m_timeline.after(duration, [set] { set(false); });
}

void Simulation::stepClock()
{
    if (m_timeline.isFrozen())
        return;
    m_watch.excuseWallClock();
    const auto step = between(1h, 72h);
    m_clock.jumpTo(m_random() % 2 == 0 ? m_clock.now() + step : m_clock.now() - step);
}

int Simulation::anyAccount()
{
    return static_cast<int>(m_random() % static_cast<unsigned>(m_home.size()));
}

milliseconds Simulation::between(milliseconds least, milliseconds most)
{
    return milliseconds(
        std::uniform_int_distribution<std::int64_t>(least.count(), most.count())(m_random));
}

} // namespace vellumor::simulation
