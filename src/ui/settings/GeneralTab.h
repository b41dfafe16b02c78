#pragma once

#include "ui/model/settings/GeneralModel.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/SettingsPage.h"

class QCheckBox;
class QPushButton;

namespace vellumor {

class LinkButton;
class PlainText;
class SettingsForm;

// Starting at login, updates, and leaving without a trace.
class GeneralTab final : public SettingsPage {
    Q_OBJECT

public:
    // What is borrowed outlives it.
    GeneralTab(AppState& appState, GeneralModel& general, const SettingsActions& actions);

protected:
    void showEvent(QShowEvent* event) override;
    void refresh() override;

private:
    void makeUpdates(SettingsForm& form, const SettingsActions& actions);
    void makeRemoval(SettingsForm& form);
    void askForRemoval();

    GeneralModel& m_general;
    QCheckBox* m_login;
    PlainText* m_loginError;
    QCheckBox* m_autoUpdates;
    QPushButton* m_check;
    PlainText* m_updateNote;
    LinkButton* m_download;
    QPushButton* m_remove;
    PlainText* m_removalError;
};

} // namespace vellumor
