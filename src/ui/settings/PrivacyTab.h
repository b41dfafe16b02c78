#pragma once

#include "ui/model/settings/PrivacyModel.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/SettingsPage.h"

class QCheckBox;

namespace vellumor {

class PlainText;

// What may be told about this installation.
class PrivacyTab final : public SettingsPage {
    Q_OBJECT

public:
    // What is borrowed outlives it.
    PrivacyTab(AppState& appState, PrivacyModel& privacy, const SettingsActions& actions);

protected:
    void refresh() override;

private:
    PrivacyModel& m_privacy;
    QCheckBox* m_diagnostics;
    QCheckBox* m_analytics;
    PlainText* m_id;
};

} // namespace vellumor
