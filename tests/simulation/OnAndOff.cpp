#include "simulation/OnAndOff.h"

#include "support/PassWorker.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace vellumor::simulation {

using namespace std::chrono_literals;

namespace {

constexpr double fullPercent = 60; // of account 0, when its window ends

} // namespace

OnAndOff::OnAndOff(std::uint32_t seed)
    : m_random(seed)
    , m_endpoint(
          m_timeline, m_clock,
          [this](std::string_view token) { return m_home.accountOf(token, m_timeline.trueTime()); },
          [](std::string_view token) { return Home::ownerOf(token); })
{
    m_endpoint.onCall = [this](const Endpoint::Call& call) {
        if (call.status == 200)
            m_readings.push_back(m_start + call.at);
    };
    m_home.add(m_timeline.trueTime());
    use();
}

OnAndOff::~OnAndOff()
{
    m_program.reset();
    test::passWorker(m_worker);
}

void OnAndOff::run(int weeks)
{
    m_timeline.after(between(1min, 30h), [this] { turnOn(); });
    m_timeline.runUntil(weeks * week);
    m_endpoint.onCall = nullptr;
    if (m_program == nullptr)
        return;
    m_spells.back().to = m_timeline.trueTime();
    m_program->stopLoop();
    while (m_clock.pendingAlarms() > 0)
        m_timeline.runUntil(m_timeline.now() + 10s);
    settle();
    test::passWorker(m_worker);
}

double OnAndOff::percentAt(Instant moment, std::chrono::hours length) const
{
    const auto into = (moment - m_start) % length;
    return std::floor(fullPercent * std::chrono::duration<double>(into).count() /
                      std::chrono::duration<double>(length).count());
}

WeeklyReceipts OnAndOff::kept() const
{
    return ReceiptStore(m_files, m_folders.vellumor() + "/receipts").load(m_home.configDir(0));
}

SimulatedProgram::World OnAndOff::world()
{
    return {m_timeline,        m_clock,   m_worker,
            m_files,           m_folders, m_home,
            m_endpoint,        m_random,  [](int) { return 1; },
            [this] { look(); }};
}

void OnAndOff::settle()
{
    QCoreApplication::processEvents();
    while (m_worker.awaited() > 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void OnAndOff::turnOn()
{
    m_program = std::make_unique<SimulatedProgram>(world());
    m_program->setOnline(true);
    m_program->state().setUserInterval(interval.count());
    m_program->start();
    m_spells.push_back({m_timeline.trueTime(), Instant::max()});
    m_timeline.after(between(shortestOn, 60h), [this] { turnOff(); });
}

void OnAndOff::turnOff()
{
    m_spells.back().to = std::min(m_spells.back().to, m_timeline.trueTime());
    m_program->stopLoop();
    if (m_clock.pendingAlarms() > 0) { // something is under way
        m_timeline.after(5s, [this] { turnOff(); });
        return;
    }
    settle();
    look();
    test::passWorker(m_worker);
    m_program.reset();
    const bool isAway = m_random() % 8 == 0;
    const auto pause = isAway ? between(7 * 24h, 18 * 24h) : between(shortestOff, 60h);
    m_timeline.after(pause, [this] { turnOn(); });
}

// A person works with the account, so that its token lives.
void OnAndOff::use()
{
    m_home.renew(0, m_timeline.trueTime());
    m_timeline.after(5h, [this] { use(); });
}

void OnAndOff::look()
{
    const auto& byDir = m_program->state().receiptsByDir();
    const auto known = byDir.find(m_home.configDir(0));
    if (known == byDir.end())
        return;
    for (const WeeklyReceipt& receipt : known->second) {
        if (std::ranges::find(m_published, receipt) == m_published.end())
            m_published.push_back(receipt);
    }
}

milliseconds OnAndOff::between(milliseconds least, milliseconds most)
{
    return milliseconds(
        std::uniform_int_distribution<std::int64_t>(least.count(), most.count())(m_random));
}

} // namespace vellumor::simulation
