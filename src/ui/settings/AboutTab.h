#pragma once

#include "ui/model/settings/AboutModel.h"
#include "ui/model/settings/PrivacyModel.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/SettingsPage.h"

class QPushButton;
class QVBoxLayout;

namespace vellumor {

class PlainText;

// What the program is, which version of it runs, and what to do about a problem.
class AboutTab final : public SettingsPage {
    Q_OBJECT

public:
    // What is borrowed outlives it.
    AboutTab(AppState& appState, AboutModel& about, PrivacyModel& privacy,
             const SettingsActions& actions);

protected:
    void showEvent(QShowEvent* event) override;
    void refresh() override;

private:
    void makeTitle();
    void makeReport();
    void makeCrossPromo();
    PlainText* addText(QVBoxLayout& column, bool isDimmed);

    AboutModel& m_about;
    PrivacyModel& m_privacy;
    const SettingsActions& m_actions;
    QVBoxLayout* m_column;
    PlainText* m_version;
    PlainText* m_status;
    PlainText* m_instructions;
    QPushButton* m_copy;
    QWidget* m_crossPromo;
};

} // namespace vellumor
