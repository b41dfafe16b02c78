#include "ui/settings/LinkLine.h"

#include "ui/LinkButton.h"
#include "ui/settings/SettingsMetrics.h"

#include <QHBoxLayout>

namespace vellumor {

QHBoxLayout* linkLine(std::initializer_list<Link> links, const SettingsActions& actions,
                      QWidget* parent)
{
    auto* const line = new QHBoxLayout;
    line->setSpacing(4 * SettingsMetrics::step);
    for (const Link& link : links) {
        auto* const button = new LinkButton(parent);
        button->setText(QString::fromUtf8(link.title));
        QObject::connect(button, &QAbstractButton::clicked, parent,
                         [open = actions.openPage, address = link.address] { open(address); });
        line->addWidget(button);
    }
    line->addStretch(1);
    return line;
}

} // namespace vellumor
