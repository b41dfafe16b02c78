#pragma once

#include "ui/model/settings/PrivacyModel.h"
#include "ui/settings/SettingsPage.h"

class QCheckBox;
class QVBoxLayout;

namespace vellumor {

// What the program reads and sends, and the choices about it.
class DisclosureStep final : public SettingsPage {
    Q_OBJECT

public:
    // Both outlive it.
    DisclosureStep(AppState& appState, PrivacyModel& privacy);

protected:
    void refresh() override;

private:
    void addHeading(const char* text, bool isLarge);
    void addText(const std::string& text);
    [[nodiscard]] QCheckBox* addToggle(const char* title, const char* help);
    void setLocalOnly(bool on);

    PrivacyModel& m_privacy;
    QVBoxLayout* m_column;
    QCheckBox* m_localOnly;
    QCheckBox* m_diagnostics;
    QCheckBox* m_analytics;
};

} // namespace vellumor
