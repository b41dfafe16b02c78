#include "ui/settings/AboutTab.h"

#include "async/OrEnd.h"
#include "ui/LinkButton.h"
#include "ui/PlainText.h"
#include "ui/PopoverMetrics.h"
#include "ui/QuorleURL.h"
#include "ui/settings/LinkLine.h"
#include "ui/settings/SettingsMetrics.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QPointer>
#include <QPushButton>

namespace vellumor {

using namespace SettingsMetrics;

namespace {

constexpr int iconPoints = 64;

} // namespace

AboutTab::AboutTab(AppState& appState, AboutModel& about, PrivacyModel& privacy,
                   const SettingsActions& actions)
    : SettingsPage(appState)
    , m_about(about)
    , m_privacy(privacy)
    , m_actions(actions)
    , m_column(new QVBoxLayout(this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(step);
    makeTitle();
    m_column->addSpacing(sectionGap);
    makeReport();
    makeCrossPromo();
    m_column->addSpacing(sectionGap);
    addText(*m_column, true)->setPlainText(AboutContent::disclaimer);
    m_column->addLayout(
        linkLine({{"Terms", QuorleURL::terms}, {"Privacy", QuorleURL::privacy}}, m_actions, this));
    m_column->addStretch(1);
    for (PlainText* const line : findChildren<PlainText*>()) {
        if (line->hasHeightForWidth())
            line->fixWidth(contentWidth(font()));
    }
    m_about.observe([self = QPointer<AboutTab>(this)] {
        if (self && self->isVisible())
            self->refresh();
    });
}

PlainText* AboutTab::addText(QVBoxLayout& column, bool isDimmed)
{
    auto* const line = new PlainText(this, PlainText::pageLines);
    if (isDimmed) {
        line->setFont(secondary(font()));
        line->setDimmed();
    }
    column.addWidget(line);
    return line;
}

void AboutTab::makeTitle()
{
    auto* const icon = new QLabel(this);
    icon->setPixmap(QIcon(QStringLiteral(":/icons/dev.quorle.vellumor.svg"))
                        .pixmap(QSize(iconPoints, iconPoints), devicePixelRatioF()));
    auto* const tagline = new PlainText(this);
    tagline->setPlainText(AboutContent::tagline);
    m_version = new PlainText(this);
    m_version->setDimmed();
    m_column->addWidget(icon, 0, Qt::AlignHCenter);
    m_column->addSpacing(step);
    m_column->addWidget(tagline, 0, Qt::AlignHCenter);
    m_column->addWidget(m_version, 0, Qt::AlignHCenter);
}

void AboutTab::makeReport()
{
    auto* const heading = new PlainText(this);
    heading->setFont(PopoverMetrics::of(font()).name);
    heading->setPlainText("Report a problem");
    m_column->addWidget(heading);
    m_status = addText(*m_column, false);
    m_instructions = addText(*m_column, true);
    auto* const line = new QHBoxLayout;
    m_copy = new QPushButton(QStringLiteral("Copy Details"), this);
    auto* const reports = new QPushButton(QStringLiteral("Show Reports"), this);
    line->addWidget(m_copy);
    line->addWidget(reports);
    line->addStretch(1);
    m_column->addSpacing(step);
    m_column->addLayout(line);
    connect(m_copy, &QPushButton::clicked, this, [this] {
        m_actions.copy(m_about.details());
        m_copy->setText(QStringLiteral("Copied"));
    });
    connect(reports, &QPushButton::clicked, this, [this] { m_about.showReports(); });
}

void AboutTab::makeCrossPromo()
{
    m_crossPromo = new QWidget(this);
    auto* const column = new QVBoxLayout(m_crossPromo);
    column->setContentsMargins(0, sectionGap, 0, 0);
    column->setSpacing(step);
    auto* const heading = new PlainText(m_crossPromo);
    heading->setFont(PopoverMetrics::of(font()).name);
    heading->setPlainText(AboutContent::crossPromoTitle);
    column->addWidget(heading);
    auto* const line = new QHBoxLayout;
    line->setSpacing(step);
    auto* const link = new LinkButton(m_crossPromo);
    link->setText(QStringLiteral("Ostrelline"));
    auto* const kind = new PlainText(m_crossPromo);
    kind->setPlainText(AboutContent::crossPromoKind);
    auto* const dismiss = new QPushButton(QStringLiteral("Don't show this again"), m_crossPromo);
    line->addWidget(link);
    line->addWidget(kind);
    line->addStretch(1);
    line->addWidget(dismiss);
    column->addLayout(line);
    addText(*column, true)->setPlainText(AboutContent::crossPromoText);
    m_column->addWidget(m_crossPromo);
    connect(link, &QAbstractButton::clicked, this, [this] {
        m_privacy.noteCrossPromoClicked();
        m_actions.openPage(QuorleURL::home);
    });
    connect(dismiss, &QPushButton::clicked, this, [this] {
        m_appState.updatePreferences([](Preferences& p) { p.crossPromoDismissed = true; });
    });
}

void AboutTab::showEvent(QShowEvent* event)
{
    m_copy->setText(QStringLiteral("Copy Details"));
    SettingsPage::showEvent(event);
    [[maybe_unused]] const Task<> running = orEnd(m_about.load());
}

void AboutTab::refresh()
{
    const AboutContent content = m_about.content(m_appState.preferences());
    m_version->setPlainText(content.version);
    m_status->setPlainText(content.status);
    m_status->fixWidth(contentWidth(font()));
    m_instructions->setPlainText(content.instructions);
    m_instructions->fixWidth(contentWidth(font()));
    m_instructions->setVisible(!content.instructions.empty());
    m_copy->setEnabled(content.canCopy);
    m_crossPromo->setVisible(content.showsCrossPromo);
}

} // namespace vellumor
