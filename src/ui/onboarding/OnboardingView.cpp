#include "ui/onboarding/OnboardingView.h"

#include "ui/CentredWindow.h"
#include "ui/PlainText.h"
#include "ui/onboarding/AccountsStep.h"
#include "ui/onboarding/DisclosureStep.h"
#include "ui/onboarding/OnboardingMetrics.h"
#include "ui/onboarding/WelcomeStep.h"
#include "ui/settings/SettingsMetrics.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace vellumor {

using SettingsMetrics::margin;

OnboardingView::OnboardingView(AppState& appState, PrivacyModel& privacy,
                               std::function<void()> finish)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint)
    , m_appState(appState)
    , m_privacy(privacy)
    , m_finish(std::move(finish))
    , m_steps(OnboardingContent::steps(appState.accounts().size()))
    , m_pages(new QStackedWidget(this))
{
    setWindowTitle(QStringLiteral("Welcome to Vellumor"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("dev.quorle.vellumor"),
                                   QIcon(QStringLiteral(":/icons/dev.quorle.vellumor.svg"))));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin);
    column->setSizeConstraint(QLayout::SetFixedSize);
    m_pages->setFixedWidth(onboardingWidth(font()));
    for (const OnboardingStep step : m_steps)
        m_pages->addWidget(makeStep(step));
    column->addWidget(m_pages, 1);
    column->addWidget(makeFooter());
    show(0);
    centreOnScreen(*this);
}

QWidget* OnboardingView::makeStep(OnboardingStep step)
{
    switch (step) {
    case OnboardingStep::welcome:
        return makeWelcomeStep();
    case OnboardingStep::accounts:
        return new AccountsStep(m_appState);
    case OnboardingStep::disclosure:
        return new DisclosureStep(m_appState, m_privacy);
    }
    return nullptr;
}

QWidget* OnboardingView::makeFooter()
{
    auto* const footer = new QWidget(this);
    auto* const line = new QHBoxLayout(footer);
    line->setContentsMargins(0, 0, 0, 0);
    m_progress = new PlainText(footer);
    m_progress->setFont(SettingsMetrics::secondary(font()));
    m_progress->setDimmed();
    m_back = new QPushButton(QStringLiteral("Back"), footer);
    m_continue = new QPushButton(footer);
    m_continue->setDefault(true);
    m_continue->setAutoDefault(true);
    line->addWidget(m_progress);
    line->addStretch(1);
    line->addWidget(m_back);
    line->addWidget(m_continue);
    connect(m_back, &QPushButton::clicked, this, [this] { show(m_index - 1); });
    connect(m_continue, &QPushButton::clicked, this, &OnboardingView::goOn);
    return footer;
}

void OnboardingView::show(std::size_t index)
{
    m_index = index;
    m_pages->setCurrentIndex(static_cast<int>(index));
    m_progress->setPlainText(OnboardingContent::progress(index, m_steps.size()));
    m_back->setVisible(index > 0);
    m_continue->setText(index + 1 < m_steps.size() ? QStringLiteral("Continue")
                                                   : QStringLiteral("Get Started"));
    m_continue->setFocus(Qt::OtherFocusReason);
}

void OnboardingView::goOn()
{
    if (m_index + 1 < m_steps.size())
        show(m_index + 1);
    else
        m_finish();
}

void OnboardingView::bringToFront()
{
    QWidget::show();
    raise();
    activateWindow();
}

} // namespace vellumor
