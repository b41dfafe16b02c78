#include "app/AppDelegate.h"

#include "app/state/AccountList.h"
#include "async/OrEnd.h"
#include "ui/QuorleURL.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/settings/SettingsWindow.h"

namespace vellumor {

namespace {

constexpr double freshEnough = 20.0;           // seconds since the last round
constexpr std::chrono::seconds afterStart{12}; // the first round is over by then
constexpr std::chrono::seconds afterClosing{1};

bool isRefreshDue(const std::optional<Instant>& lastUpdated, Instant now)
{
    return !lastUpdated || !(secondsBetween(*lastUpdated, now) < freshEnough);
}

} // namespace

AppDelegate::AppDelegate(Parts parts)
    : m_parts(std::move(parts))
    , m_popover(
          m_parts.appState, m_parts.clock,
          {.settings =
               [this] {
                   m_popover.performClose();
                   showSettings(std::nullopt);
               },
           .refresh = [this] { keepTask(m_parts.appState.refresh(true)); },
           .signInGuide = [this] { m_parts.settingsActions.openPage(QuorleURL::signInGuide); },
           .closed = [this] { giveMemoryBackSoon(afterClosing); },
           .menu = {&m_quit}})
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    m_parts.notifications.onOpen(
        [this](const std::string& activationToken) { activate(activationToken); });
    installMainMenu();
    keepTask(m_parts.sweepCrashes());
    m_parts.heal();
    m_parts.statusItem.show(
        {[this](const std::optional<QRect>& anchor, const std::string& activationToken) {
             togglePopover(anchor, activationToken);
         },
         contextMenu()});
    m_parts.appState.observe([this] { updateLabel(); });
    updateLabel();
    keepTask(begin());
}

Task<> AppDelegate::begin()
{
    co_await m_parts.appState.rescan();
    co_await m_parts.appState.seedFromSnapshots();
    m_parts.appState.recomputeEffectiveInterval(m_parts.clock.now());
    updateLabel();
    m_parts.startPolling();
    co_await m_parts.emitSpineIfDue(m_parts.clock.now());
    co_await m_parts.markPresence(m_parts.clock.now());
    showOnboardingIfNeeded();
    giveMemoryBackSoon(afterStart);
}

void AppDelegate::giveMemoryBackSoon(std::chrono::seconds delay)
{
    m_nextGivingBack = m_parts.clock.after(delay, [this] { m_parts.giveMemoryBack(); });
}

// The tasks end by themselves; this object lives as long as the event loop.
void AppDelegate::keepTask(Task<> task)
{
    [[maybe_unused]] const Task<> running = orEnd(std::move(task));
}

void AppDelegate::installMainMenu()
{
    m_quit.setText(QStringLiteral("Quit Vellumor"));
    m_quit.setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(&m_quit, &QAction::triggered, this, [this] { m_parts.terminate(); });
}

std::vector<StatusItem::MenuEntry> AppDelegate::contextMenu()
{
    return {
        {"Refresh", {"Control", "r"}, [this] { keepTask(m_parts.appState.refresh(true)); }},
        {"Scan for Accounts", {}, [this] { keepTask(m_parts.appState.rescan()); }},
        {},
        {"Settings…", {"Control", "comma"}, [this] { showSettings(std::nullopt); }},
        {"About Vellumor", {}, [this] { showSettings(SettingsTab::about); }},
        {},
        {"Quit Vellumor", {"Control", "q"}, [this] { m_parts.terminate(); }},
    };
}

void AppDelegate::updateLabel()
{
    const AppState& state = m_parts.appState;
    const Instant now = m_parts.clock.now();
    const auto pinned = AccountList::pinned(state.accounts());
    const auto renders =
        MenuBarLabel::renders(pinned, state.states(), state.effectiveInterval(), now);
    const bool dual = state.preferences().menuBarDualBars;
    Shown shown{MenuBarLabel::groups(renders, state.menuBarMode(), dual), state.menuBarMode(),
                dual};
    if (shown != m_shown) {
        m_label = m_painter.label(shown.groups, shown.mode, shown.dual);
        m_shown = std::move(shown);
    }
    m_label.text = MenuBarLabel::accessibilityDescription(renders, state.menuBarMode(), dual);
    m_parts.statusItem.setLabel(m_label);
    scheduleStaleness(pinned, now);
}

// A reading grows old without anything happening.
void AppDelegate::scheduleStaleness(const std::vector<Account>& pinned, Instant now)
{
    m_nextStaleness.reset();
    const AppState& state = m_parts.appState;
    const auto next =
        MenuBarLabel::nextStaleness(pinned, state.states(), state.effectiveInterval(), now);
    if (next) {
        m_nextStaleness = m_parts.clock.after(
            std::chrono::ceil<std::chrono::milliseconds>(*next - now), [this] { updateLabel(); });
    }
}

void AppDelegate::activate(const std::string& activationToken)
{
    if (!m_popover.isShown()) {
        refreshIfDue();
        m_parts.notePopoverOpened();
    }
    m_popover.show(m_lastAnchor, activationToken);
}

void AppDelegate::togglePopover(const std::optional<QRect>& anchor,
                                const std::string& activationToken)
{
    if (m_popover.isShown()) {
        m_popover.performClose();
        return;
    }
    if (m_popover.wasJustClosed())
        return;
    refreshIfDue();
    m_parts.notePopoverOpened();
    m_lastAnchor = anchor;
    m_popover.show(anchor, activationToken);
}

void AppDelegate::refreshIfDue()
{
    if (isRefreshDue(m_parts.appState.lastUpdated(), m_parts.clock.now()))
        keepTask(m_parts.appState.refresh(false));
}

// Closed by its button, the window is made anew at the next start.
void AppDelegate::showOnboardingIfNeeded()
{
    if (m_onboarding || !m_parts.isOnboardingDue())
        return;
    m_onboarding = std::make_unique<OnboardingView>(m_parts.appState, m_parts.privacy,
                                                    [this] { finishOnboarding(); });
    m_onboarding->addAction(&m_quit);
    m_onboarding->bringToFront();
}

void AppDelegate::finishOnboarding()
{
    m_parts.completeOnboarding();
    m_parts.privacy.noteOnboardingCompleted();
    m_onboarding->close();
    m_onboarding.release()->deleteLater(); // one of its buttons is being pressed
}

void AppDelegate::showSettings(std::optional<SettingsTab> initialTab)
{
    if (!m_settings) {
        m_settings = std::make_unique<SettingsWindow>(
            SettingsWindow::Parts{m_parts.appState, m_parts.notifications, m_parts.privacy,
                                  m_parts.general, m_parts.about, m_parts.settingsActions});
        m_settings->addAction(&m_quit);
    }
    if (initialTab)
        m_settings->select(*initialTab);
    m_settings->bringToFront();
}

} // namespace vellumor
