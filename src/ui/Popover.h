#pragma once

#include "app/state/AppState.h"
#include "base/Clock.h"

#include <QAction>
#include <QList>
#include <QObject>
#include <QRect>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vellumor {

class PopoverView;

// Opens and closes the popover's window and keeps what it shows up to date, once a second while it
// is open. A closed popover costs nothing: its window is made anew at each opening.
class Popover final : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> settings;
        std::function<void()> refresh;
        std::function<void()> signInGuide;
        std::function<void()> closed;
        QList<QAction*> menu; // shortcuts that work in the window too; they outlive this
    };

    // What is borrowed outlives it.
    Popover(AppState& appState, Clock& clock, Actions actions);
    ~Popover() override;

    [[nodiscard]] bool isShown() const { return m_view != nullptr; }
    // True for a moment after it lost the focus: the click on the status item that is about to be
    // told has closed it.
    [[nodiscard]] bool wasJustClosed() const;

    // Beside `anchor`, with the focus on none of its controls. The token, which may be empty, lets
    // it take the focus. One that is open comes to the front.
    void show(const std::optional<QRect>& anchor, const std::string& activationToken);
    void performClose();

private:
    // What a history is made of: made anew when one of these is another.
    struct HistoryInputs {
        AppState::History samples;
        WeeklyReceipts receipts;
        std::optional<Usage> usage;
        std::string name;
        std::chrono::minutes minute{};
        bool operator==(const HistoryInputs&) const = default;
    };

    void makeView();
    void update();
    void updateHistory(Instant now);
    void showHistory(const std::string& configDir); // empty: the list
    void exportHistory(const std::string& extension);
    void onExportFailed(const std::string& reason);
    void dismissNotice();
    [[nodiscard]] const Account* historyAccount() const;
    void tick();
    void onDeactivated();

    AppState& m_appState;
    Clock& m_clock;
    Actions m_actions;
    std::unique_ptr<PopoverView> m_view; // while it is open
    std::unique_ptr<Alarm> m_nextTick;
    std::optional<QRect> m_anchor;
    // Of which account the history is shown; empty for none. Stays when the popover closes.
    std::string m_historyDir;
    HistoryInputs m_historyInputs; // what it was last made of
    std::string m_exportFailure;   // to be told until it is dismissed or the popover closes
    std::optional<std::chrono::steady_clock::time_point> m_lostFocusAt;
};

} // namespace vellumor
