#include "ui/settings/Sheet.h"

#include "ui/PlainText.h"
#include "ui/PopoverMetrics.h"
#include "ui/settings/SettingsForm.h"
#include "ui/settings/SettingsMetrics.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace vellumor {

namespace {

int sheetWidth(const QFont& font)
{
    return SettingsMetrics::contentWidth(font) * 3 / 4;
}

} // namespace

Sheet::Sheet(QWidget* parent)
    : QDialog(parent)
    , m_heading(new PlainText(this, 2))
    , m_text(new PlainText(this, PlainText::pageLines))
    , m_content(new QVBoxLayout)
    , m_buttons(new QHBoxLayout)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(SettingsMetrics::margin, SettingsMetrics::margin,
                               SettingsMetrics::margin, SettingsMetrics::margin);
    column->setSpacing(3 * SettingsMetrics::step);
    column->setSizeConstraint(QLayout::SetFixedSize);
    m_heading->setFont(PopoverMetrics::of(font()).name);
    column->addWidget(m_heading);
    column->addWidget(m_text);
    m_content->setSpacing(2 * SettingsMetrics::step);
    column->addLayout(m_content);
    m_buttons->addStretch(1);
    column->addLayout(m_buttons);
}

void Sheet::setHeading(const std::string& heading, const std::string& text)
{
    setWindowTitle(QString::fromStdString(heading));
    showText(*m_heading, heading);
    showText(*m_text, text);
}

QPushButton* Sheet::addButton(const char* title)
{
    auto* const button = new QPushButton(buttonText(title), this);
    button->setAutoDefault(false);
    m_buttons->addWidget(button);
    return button;
}

PlainText* Sheet::addText()
{
    auto* const line = new PlainText(this, PlainText::pageLines);
    line->hide();
    m_content->addWidget(line);
    return line;
}

void Sheet::showText(PlainText& line, const std::string& text)
{
    line.setPlainText(text);
    line.fixWidth(sheetWidth(font()));
    line.setVisible(!text.empty());
}

} // namespace vellumor
