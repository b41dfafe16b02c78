#include "ui/settings/SettingsPage.h"

#include <QPointer>

namespace vellumor {

SettingsPage::SettingsPage(AppState& appState)
    : m_appState(appState)
{
    m_appState.observe([self = QPointer<SettingsPage>(this)] {
        if (self && self->isVisible())
            self->refresh();
    });
}

void SettingsPage::showEvent(QShowEvent* event)
{
    refresh();
    QWidget::showEvent(event);
}

} // namespace vellumor
