#include "ui/onboarding/WelcomeStep.h"

#include "ui/PlainText.h"
#include "ui/PopoverMetrics.h"
#include "ui/settings/SettingsMetrics.h"

#include <QIcon>
#include <QVBoxLayout>

namespace vellumor {

namespace {

constexpr int iconPoints = 96;

} // namespace

QWidget* makeWelcomeStep()
{
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2 * SettingsMetrics::step);
    auto* const icon = new QLabel(page);
    icon->setPixmap(QIcon(QStringLiteral(":/icons/dev.quorle.vellumor.svg"))
                        .pixmap(QSize(iconPoints, iconPoints), page->devicePixelRatioF()));
    auto* const title = new PlainText(page);
    QFont large = PopoverMetrics::of(page->font()).name;
    large.setPointSizeF(large.pointSizeF() * 1.4);
    title->setFont(large);
    title->setPlainText("Welcome to Vellumor");
    auto* const text = new PlainText(page);
    text->setPlainText("Claude usage in your menu bar.");
    text->setDimmed();
    column->addStretch(1);
    column->addWidget(icon, 0, Qt::AlignHCenter);
    column->addSpacing(SettingsMetrics::step);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addWidget(text, 0, Qt::AlignHCenter);
    column->addStretch(2);
    return page;
}

} // namespace vellumor
