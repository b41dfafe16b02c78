#include "ui/settings/SettingsForm.h"

#include "ui/PlainText.h"
#include "ui/settings/SettingsMetrics.h"

#include <QCheckBox>
#include <QLabel>
#include <QStyle>

#include <algorithm>

namespace vellumor {

namespace {

int widest(const std::initializer_list<const char*>& labels, const QFontMetrics& metrics)
{
    int width = 0;
    for (const char* label : labels)
        width = std::max(width, metrics.horizontalAdvance(QString::fromUtf8(label)));
    return width;
}

} // namespace

QString buttonText(const std::string& text)
{
    return QString::fromStdString(text).replace(u'&', QStringLiteral("&&"));
}

SettingsForm::SettingsForm(QWidget* page, std::initializer_list<const char*> labels)
    : m_page(page)
    , m_grid(new QGridLayout(page))
{
    using namespace SettingsMetrics;
    const int labelWidth = widest(labels, QFontMetrics(page->font()));
    const int gap = labelWidth > 0 ? labelGap : 0;
    m_controlWidth = contentWidth(page->font()) - labelWidth - gap;
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setHorizontalSpacing(gap);
    m_grid->setVerticalSpacing(step);
    m_grid->setColumnMinimumWidth(0, labelWidth);
    m_grid->setColumnStretch(1, 1);
}

void SettingsForm::section()
{
    m_grid->setRowMinimumHeight(m_row++, SettingsMetrics::sectionGap - 2 * SettingsMetrics::step);
}

void SettingsForm::gap()
{
    m_grid->setRowMinimumHeight(m_row++, SettingsMetrics::step);
}

QLabel* SettingsForm::addLabel(const char* label, QWidget* buddy)
{
    if (*label == '\0')
        return nullptr;
    auto* const text = new QLabel(QString::fromUtf8(label), m_page);
    text->setTextFormat(Qt::PlainText);
    if (buddy != nullptr) {
        text->setBuddy(buddy);
        if (qobject_cast<QLabel*>(buddy) != nullptr) // a text is read as it stands
            buddy->setAccessibleDescription(text->text());
        else if (buddy->accessibleName().isEmpty())
            buddy->setAccessibleName(text->text());
    }
    m_grid->addWidget(text, m_row, 0, Qt::AlignRight | Qt::AlignVCenter);
    return text;
}

void SettingsForm::add(const char* label, QWidget* control)
{
    addLabel(label, control);
    m_grid->addWidget(control, m_row++, 1, Qt::AlignLeft | Qt::AlignVCenter);
}

void SettingsForm::add(const char* label, QLayout* controls, int firstRow)
{
    if (QLabel* const text = addLabel(label, nullptr)) {
        text->setFixedHeight(std::max(firstRow, text->sizeHint().height()));
        m_grid->setAlignment(text, Qt::AlignRight | Qt::AlignTop);
    }
    m_grid->addLayout(controls, m_row++, 1);
}

PlainText* SettingsForm::addText(const std::string& text, int left)
{
    auto* const line = new PlainText(m_page, PlainText::pageLines);
    line->setPlainText(text);
    line->setFont(SettingsMetrics::secondary(m_page->font()));
    line->setDimmed();
    line->fixWidth(m_controlWidth - left);
    m_grid->addWidget(line, m_row++, 1, Qt::AlignRight | Qt::AlignTop);
    return line;
}

PlainText* SettingsForm::note(const std::string& text)
{
    return addText(text, 0);
}

PlainText* SettingsForm::text(const std::string& text)
{
    auto* const line = new PlainText(m_page, PlainText::pageLines);
    line->setPlainText(text);
    line->fixWidth(m_controlWidth);
    m_grid->addWidget(line, m_row++, 1, Qt::AlignLeft | Qt::AlignTop);
    return line;
}

QCheckBox* SettingsForm::toggle(const char* label, const char* title, const char* help)
{
    auto* const box = new QCheckBox(buttonText(title), m_page);
    box->setAccessibleName(QString::fromUtf8(title));
    add(label, box);
    if (*help != '\0')
        this->help(*box, help);
    return box;
}

int SettingsForm::titleIndent(const QAbstractButton& button) const
{
    const QStyle* const style = m_page->style();
    return style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &button) +
           style->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &button);
}

void SettingsForm::help(QAbstractButton& button, const char* text)
{
    addText(text, titleIndent(button));
    button.setAccessibleDescription(QString::fromUtf8(text));
}

void SettingsForm::end()
{
    m_grid->setRowStretch(m_row, 1);
}

} // namespace vellumor
