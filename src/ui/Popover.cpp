#include "ui/Popover.h"

#include "ui/PopoverPlace.h"
#include "ui/PopoverView.h"
#include "ui/ShortTime.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace vellumor {

namespace {

constexpr std::chrono::milliseconds sameClick{300};
constexpr std::chrono::seconds tickLength{1};
constexpr double mostOfScreen = 0.75;
constexpr const char* activationTokenVariable = "XDG_ACTIVATION_TOKEN";

const QScreen& screenAt(const std::optional<QRect>& anchor)
{
    const QScreen* at = anchor ? QGuiApplication::screenAt(anchor->center()) : nullptr;
    return at != nullptr ? *at : *QGuiApplication::primaryScreen();
}

// Where a window that opens may take the focus only with a token, the platform reads it from here.
void offerToken(const std::string& activationToken)
{
    if (!activationToken.empty())
        qputenv(activationTokenVariable, QByteArray::fromStdString(activationToken));
}

} // namespace

Popover::Popover(AppState& appState, Clock& clock, Actions actions)
    : m_appState(appState)
    , m_clock(clock)
    , m_actions(std::move(actions))
{
    m_appState.observe([this] { update(); });
}

Popover::~Popover() = default;

bool Popover::wasJustClosed() const
{
    return m_lostFocusAt && std::chrono::steady_clock::now() - *m_lostFocusAt < sameClick;
}

void Popover::makeView()
{
    m_view = std::make_unique<PopoverView>(PopoverView::Actions{
        .settings = m_actions.settings,
        .refresh = m_actions.refresh,
        .dismissNotice = [this] { m_appState.dismissNewAccounts(); },
        .signInGuide = m_actions.signInGuide,
        .history = [](const std::string&) {},
        .close = [this] { performClose(); },
        .deactivated = [this] { onDeactivated(); },
    });
    m_view->addActions(m_actions.menu);
}

void Popover::show(const std::optional<QRect>& anchor, const std::string& activationToken)
{
    offerToken(activationToken);
    if (!m_view) {
        const bool isOnScreen = anchor && QGuiApplication::screenAt(anchor->center()) != nullptr;
        m_anchor = isOnScreen ? anchor : std::nullopt;
        makeView();
        update();
        m_view->show();
        m_nextTick = m_clock.after(tickLength, [this] { tick(); });
    }
    m_view->raise();
    m_view->activateWindow();
    qunsetenv(activationTokenVariable); // nobody else is to use it, nor a later opening
}

void Popover::performClose()
{
    m_nextTick.reset();
    if (!m_view)
        return;
    auto view = std::move(m_view); // hiding it tells that it is no longer active
    view->hide();
    view.release()->deleteLater(); // it may be its own event that closes it
    m_actions.closed();
}

void Popover::onDeactivated()
{
    if (!m_view)
        return;
    m_lostFocusAt = std::chrono::steady_clock::now();
    performClose();
}

void Popover::tick()
{
    m_nextTick = m_clock.after(tickLength, [this] { tick(); });
    update();
}

void Popover::update()
{
    if (!m_view)
        return;
    const QRect available = screenAt(m_anchor).availableGeometry();
    const QSize before = m_view->size();
    m_view->setContent(PopoverContent::of(m_appState, m_clock.now(),
                                          [](Instant moment) { return shortTimeText(moment); }),
                       static_cast<int>(available.height() * mostOfScreen));
    if (!m_view->isVisible() || m_view->size() != before)
        m_view->setGeometry(PopoverPlace::rect(m_anchor, m_view->size(), available));
}

} // namespace vellumor
