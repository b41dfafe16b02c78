#include "ui/settings/AboutTab.h"

#include "base/Version.h"
#include "ui/PlainText.h"

#include <QIcon>
#include <QVBoxLayout>

namespace vellumor {

namespace {

constexpr int iconPoints = 64;

} // namespace

QWidget* makeAboutTab()
{
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    auto* const icon = new QLabel(page);
    icon->setPixmap(QIcon(QStringLiteral(":/icons/dev.quorle.vellumor.svg"))
                        .pixmap(QSize(iconPoints, iconPoints), page->devicePixelRatioF()));
    column->addWidget(icon, 0, Qt::AlignHCenter);
    const std::string lines[] = {
        "Claude usage in your menu bar.",
        "Version " + std::string(version) + " · part of the Quorle toolkit",
    };
    for (const std::string& line : lines) {
        auto* const text = new PlainText(page);
        text->setPlainText(line);
        column->addWidget(text, 0, Qt::AlignHCenter);
    }
    column->addStretch(1);
    return page;
}

} // namespace vellumor
