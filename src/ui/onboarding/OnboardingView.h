#pragma once

#include "app/state/AppState.h"
#include "ui/model/settings/OnboardingContent.h"
#include "ui/model/settings/PrivacyModel.h"

#include <QWidget>

#include <vector>

class QPushButton;
class QStackedWidget;

namespace vellumor {

class PlainText;

// The first-run flow in its window: greets, lets the user tidy the accounts, and says what the
// program reads and sends.
class OnboardingView final : public QWidget {
    Q_OBJECT

public:
    // `finish` is called when the user has been through all of it; closing the window does not.
    // What is borrowed outlives it.
    OnboardingView(AppState& appState, PrivacyModel& privacy, std::function<void()> finish);

    void bringToFront();

private:
    [[nodiscard]] QWidget* makeStep(OnboardingStep step);
    [[nodiscard]] QWidget* makeFooter();
    void show(std::size_t index);
    void goOn();

    AppState& m_appState;
    PrivacyModel& m_privacy;
    std::function<void()> m_finish;
    std::vector<OnboardingStep> m_steps; // fixed from the start
    std::size_t m_index = 0;
    QStackedWidget* m_pages;
    PlainText* m_progress;
    QPushButton* m_back;
    QPushButton* m_continue;
};

} // namespace vellumor
