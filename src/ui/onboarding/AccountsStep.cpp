#include "ui/onboarding/AccountsStep.h"

#include "ui/NameOrder.h"
#include "ui/PlainText.h"
#include "ui/PopoverMetrics.h"
#include "ui/model/settings/AccountsContent.h"
#include "ui/model/settings/OnboardingContent.h"
#include "ui/onboarding/OnboardingMetrics.h"
#include "ui/settings/AccountRows.h"
#include "ui/settings/SettingsMetrics.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace vellumor {

AccountsStep::AccountsStep(AppState& appState)
    : SettingsPage(appState)
    , m_found(new PlainText(this))
    , m_list(new QScrollArea(this))
{
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2 * SettingsMetrics::step);
    m_found->setFont(PopoverMetrics::of(font()).name);
    auto* const text = new PlainText(this, 4);
    text->setPlainText(OnboardingContent::accountsText);
    text->setDimmed();
    text->fixWidth(onboardingWidth(font()));
    m_rows = new AccountRows(appState, *m_list);
    column->addWidget(m_found);
    column->addWidget(text);
    column->addSpacing(SettingsMetrics::step);
    column->addWidget(m_list, 1);
}

void AccountsStep::refresh()
{
    const AccountsContent content = AccountsContent::of(m_appState, namesInOrder);
    m_found->setPlainText(OnboardingContent::found(content.rows.size()));
    m_rows->setContent(content.rows);
}

} // namespace vellumor
