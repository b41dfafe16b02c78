#pragma once

#include "app/state/AppState.h"
#include "platform/Notifications.h"
#include "platform/StatusItem.h"
#include "ui/LabelPainter.h"
#include "ui/Popover.h"
#include "ui/model/settings/AboutModel.h"
#include "ui/model/settings/GeneralModel.h"
#include "ui/model/settings/PrivacyModel.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/SettingsTab.h"

#include <QAction>

#include <memory>
#include <optional>

namespace vellumor {

class OnboardingView;
class SettingsWindow;

// Owns everything that people see, and fixes the order of what happens at the start. Main thread
// only.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        AppState& appState;
        Clock& clock;
        StatusItem& statusItem;
        Notifications& notifications;
        std::function<void()> heal;         // the data folders, in the background
        std::function<void()> startPolling; // once the accounts are known
        std::function<Task<>(Instant now)> markPresence;
        std::function<void()> terminate;
        std::function<void()> giveMemoryBack; // what is free, after much was used for a moment
        PrivacyModel& privacy;
        GeneralModel& general;
        AboutModel& about;
        SettingsActions settingsActions;
        std::function<Task<>()> sweepCrashes;
        std::function<Task<>(Instant now)> emitSpineIfDue;
        std::function<void()> notePopoverOpened;
        std::function<bool()> isOnboardingDue;
        std::function<void()> completeOnboarding;
    };

    // What is borrowed outlives it. Shows nothing yet.
    explicit AppDelegate(Parts parts);
    ~AppDelegate() override;

    // Once, at the start of the event loop.
    void applicationDidFinishLaunching();

    // The desktop or a second start asks for the program: opens the popover, and closes none.
    void activate(const std::string& activationToken);
    // A click on the status item.
    void togglePopover(const std::optional<QRect>& anchor, const std::string& activationToken);
    // Without a tab: as the window was left.
    void showSettings(std::optional<SettingsTab> initialTab);
    void updateLabel();

private:
    struct Shown {
        std::vector<MenuBarLabel::Group> groups;
        MenuBarMode mode;
        bool dual;
        bool operator==(const Shown&) const = default;
    };

    void installMainMenu();
    [[nodiscard]] std::vector<StatusItem::MenuEntry> contextMenu();
    [[nodiscard]] Task<> begin();
    void keepTask(Task<> task);
    void refreshIfDue();
    void giveMemoryBackSoon(std::chrono::seconds delay);
    void showOnboardingIfNeeded();
    void finishOnboarding();
    void scheduleStaleness(const std::vector<Account>& pinned, Instant now);

    Parts m_parts;
    LabelPainter m_painter;
    QAction m_quit;
    Popover m_popover;
    std::unique_ptr<SettingsWindow> m_settings;   // kept once it was made
    std::unique_ptr<OnboardingView> m_onboarding; // until it was finished
    std::optional<Shown> m_shown;                 // what the label was last drawn from
    StatusLabel m_label;
    std::unique_ptr<Alarm> m_nextStaleness;
    std::unique_ptr<Alarm> m_nextGivingBack;
    std::optional<QRect> m_lastAnchor; // where the item was clicked last
};

} // namespace vellumor
