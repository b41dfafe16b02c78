#pragma once

#include "platform/Notifications.h"
#include "ui/model/settings/NotificationsContent.h"
#include "ui/settings/SettingsPage.h"

#include <map>
#include <vector>

class QCheckBox;
class QComboBox;
class QScrollArea;
class QSpinBox;
class QVBoxLayout;

namespace vellumor {

class PlainText;
class SettingsForm;

// What the user wants to be told about.
class NotificationsTab final : public SettingsPage {
    Q_OBJECT

public:
    // `notifications` outlives it.
    NotificationsTab(AppState& appState, Notifications& notifications);

protected:
    void refresh() override;

private:
    struct CustomRow {
        QWidget* line;
        QCheckBox* isOn;
        QSpinBox* percent;
    };

    void makeThresholds(SettingsForm& form);
    void makeEvents(SettingsForm& form);
    void makeClosing(SettingsForm& form);
    QCheckBox* bind(QCheckBox* box, NotificationsContent::Switch field);
    void setEnabled(bool on);
    void setField(NotificationsContent::Switch field, bool on);
    void makeCustomList(SettingsForm& form);
    CustomRow makeCustomRow(const std::string& id);
    void setCustom(const std::string& id, std::optional<double> percent);
    void refreshCustom(const NotificationsContent& content);

    Notifications& m_notifications;
    QCheckBox* m_master;
    PlainText* m_denied;
    std::vector<std::pair<QCheckBox*, NotificationsContent::Switch>> m_boxes;
    QWidget* m_leadLine; // with the words around the list
    QComboBox* m_lead;
    std::vector<int> m_leads;
    QScrollArea* m_customList; // there may be many accounts
    QWidget* m_customRows;
    QVBoxLayout* m_customColumn;
    std::map<std::string, CustomRow> m_custom; // by account id
    int m_customWidth = 0;
};

} // namespace vellumor
