#include "ui/Popover.h"

#include "history/HistoryExport.h"
#include "ui/ExportPanel.h"
#include "ui/PopoverPlace.h"
#include "ui/PopoverView.h"
#include "ui/ShortTime.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QWindow>

namespace vellumor {

namespace {

constexpr std::chrono::milliseconds sameClick{300};
constexpr std::chrono::seconds tickInterval{1};
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
        .dismissNotice = [this] { dismissNotice(); },
        .signInGuide = m_actions.signInGuide,
        .history = [this](const std::string& configDir) { showHistory(configDir); },
        .back = [this] { showHistory({}); },
        .copy =
            [](const std::string& text) {
                QGuiApplication::clipboard()->setText(QString::fromStdString(text));
            },
        .exportAs = [this](const std::string& extension) { exportHistory(extension); },
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
        m_historyInputs = {};
        update();
        m_view->show();
        m_nextTick = m_clock.after(tickInterval, [this] { tick(); });
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
    m_exportFailure.clear();
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

void Popover::showHistory(const std::string& configDir)
{
    m_historyDir = configDir;
    m_historyInputs = {};
    update();
}

const Account* Popover::historyAccount() const
{
    const auto& accounts = m_appState.accounts();
    const auto found = std::ranges::find(accounts, m_historyDir, &Account::configDir);
    return found == accounts.end() ? nullptr : &*found;
}

// An account may go while its history is shown.
void Popover::updateHistory(Instant now)
{
    const Account* account = historyAccount();
    if (account == nullptr) { // should it come back, nobody has asked for its history
        m_historyDir.clear();
        m_historyInputs = {};
        m_view->setHistory(nullptr);
        return;
    }
    HistoryInputs inputs;
    if (const auto known = m_appState.historyByDir().find(m_historyDir);
        known != m_appState.historyByDir().end())
        inputs.samples = known->second;
    if (const auto known = m_appState.receiptsByDir().find(m_historyDir);
        known != m_appState.receiptsByDir().end())
        inputs.receipts = known->second;
    if (const AccountUsageState* state = m_appState.state(account->id))
        inputs.usage = state->usage;
    inputs.name = account->displayName;
    inputs.minute = std::chrono::floor<std::chrono::minutes>(now.time_since_epoch());
    if (inputs == m_historyInputs)
        return;
    const UsageSamples none;
    m_view->setHistory(std::make_shared<const HistoryContent>(
        HistoryContent::of(*account, inputs.samples ? *inputs.samples : none, inputs.receipts,
                           inputs.usage ? &*inputs.usage : nullptr, now,
                           [](Instant moment) { return shortTimeText(moment); })));
    m_historyInputs = std::move(inputs);
}

void Popover::exportHistory(const std::string& extension)
{
    const Account* account = historyAccount();
    if (account == nullptr)
        return;
    const Instant now = m_clock.now();
    const UsageSamples samples =
        m_historyInputs.samples ? *m_historyInputs.samples : UsageSamples();
    const auto bytes = extension == "csv" ? std::optional(HistoryExport::csv(samples))
                                          : HistoryExport::json(account->displayName, samples,
                                                                m_historyInputs.receipts, now);
    if (!bytes)
        return;
    ExportPanel::save(HistoryExport::filename(account->displayName, extension, now), *bytes,
                      [self = QPointer(this)](const std::string& reason) {
                          if (self)
                              self->onExportFailed(reason);
                      });
}

// The panel that asked for the place has closed the popover.
void Popover::onExportFailed(const std::string& reason)
{
    m_exportFailure = "The export could not be written: " + reason;
    show(m_anchor, {});
    update();
}

void Popover::dismissNotice()
{
    if (m_exportFailure.empty())
        return m_appState.dismissNewAccounts();
    m_exportFailure.clear();
    update();
}

void Popover::tick()
{
    m_nextTick = m_clock.after(tickInterval, [this] { tick(); });
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
    m_view->setUrgentNotice(m_exportFailure);
    updateHistory(m_clock.now());
    if (!m_view->isVisible() || m_view->size() != before)
        m_view->setGeometry(PopoverPlace::rect(m_anchor, m_view->size(), available));
}

} // namespace vellumor
