#pragma once

#include "ui/model/settings/UsageContent.h"
#include "ui/settings/SettingsPage.h"

class QCheckBox;
class QComboBox;
class QPushButton;

namespace vellumor {

class PlainText;

// How often usage is refreshed, and from where.
class UsageTab final : public SettingsPage {
    Q_OBJECT

public:
    // `chooseFile` lets the user pick a file and calls back with its path; not at all when the user
    // picks none.
    using ChooseFile = std::function<void(std::function<void(const std::string& path)> chosen)>;

    // `onLocalOnly` is called when the user turns on reading from the local cache alone.
    UsageTab(AppState& appState, ChooseFile chooseFile, std::function<void()> onLocalOnly);

protected:
    void refresh() override;

private:
    void makeClaudeLocation(class SettingsForm& form);
    void setClaudePath(const std::string& path);

    UsageContent m_content;
    ChooseFile m_chooseFile;
    QComboBox* m_interval;
    PlainText* m_designed;
    PlainText* m_effective;
    QCheckBox* m_localOnly;
    QCheckBox* m_revival;
    PlainText* m_location;
    QPushButton* m_clear;
};

} // namespace vellumor
