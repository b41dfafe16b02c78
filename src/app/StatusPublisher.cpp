#include "app/StatusPublisher.h"

#include "async/OrEnd.h"

namespace vellumor {

namespace {

// What of a state is not shown, and changes with each fetch.
AccountUsageState shown(AccountUsageState state)
{
    state.isLoading = state.isLoading && !state.usage;
    state.source.reset();
    state.backoffUntil.reset();
    state.blockedUntil.reset();
    state.concludedAbout.reset();
    return state;
}

} // namespace

StatusPublisher::StatusPublisher(Parts parts)
    : m_parts(std::move(parts))
{
}

void StatusPublisher::start()
{
    noteChange();
    m_parts.service.start({[this] { return report(); }, [this] { return refresh(); },
                           [this] { m_parts.openPopover(); }});
    m_parts.appState.observe([this] { noteChange(); });
}

StatusInput StatusPublisher::gather() const
{
    const AppState& state = m_parts.appState;
    StatusInput input;
    input.accounts = state.accounts();
    for (const auto& [id, known] : state.states())
        input.states.emplace(id, shown(known));
    input.histories = {state.historyByDir().begin(), state.historyByDir().end()};
    input.anchors = state.resetAnchorsByDir();
    input.effectiveInterval = state.effectiveInterval();
    return input;
}

// Made anew once a second at most, however many ask.
StatusReport StatusPublisher::report()
{
    const Instant now = m_parts.clock.now();
    if (now < m_reportedAt || now - m_reportedAt >= std::chrono::seconds(1)) {
        m_report = m_input.report(now, m_parts.shortTime);
        m_reportedAt = now;
    }
    return m_report;
}

bool StatusPublisher::refresh()
{
    if (!m_gate.admit(m_parts.clock.now()))
        return false;
    [[maybe_unused]] const Task<> running = orEnd(m_parts.appState.refresh(true));
    return true;
}

// Most of what the state announces is not for show, and a report costs a forecast an account.
void StatusPublisher::noteChange()
{
    StatusInput input = gather();
    if (input == m_input)
        return;
    m_input = std::move(input);
    look();
}

void StatusPublisher::look()
{
    const Instant now = m_parts.clock.now();
    StatusReport report = m_input.report(now, m_parts.shortTime);
    StatusReport timeless = report.timeless();
    const bool isOther = timeless != m_announced;
    m_announced = std::move(timeless);
    m_report = std::move(report);
    m_reportedAt = now;
    scheduleStaleness();
    if (isOther)
        m_parts.service.announceChange();
}

// A reading grows old without anything happening.
void StatusPublisher::scheduleStaleness()
{
    m_nextStaleness.reset();
    const Instant now = m_parts.clock.now();
    if (const auto next = m_input.nextStaleChange(now)) {
        m_nextStaleness = m_parts.clock.after(
            std::chrono::ceil<std::chrono::milliseconds>(*next - now), [this] { look(); });
    }
}

} // namespace vellumor
