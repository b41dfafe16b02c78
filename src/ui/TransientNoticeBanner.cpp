#include "ui/TransientNoticeBanner.h"

#include "ui/PlainText.h"
#include "ui/SymbolButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace vellumor {

namespace {

constexpr double shade = 0.06; // of the text's colour, under the whole banner

} // namespace

TransientNoticeBanner::TransientNoticeBanner(const PopoverMetrics& metrics, QWidget* parent)
    : QWidget(parent)
    , m_text(new PlainText(this, PlainText::sentenceLines))
    , m_dismiss(new SymbolButton(Symbols::Symbol::dismiss, this))
{
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(metrics.margin, 2 * metrics.step, metrics.margin, 2 * metrics.step);
    row->setSpacing(2 * metrics.step);
    row->addWidget(m_text, 1);
    row->addWidget(m_dismiss, 0, Qt::AlignTop);
    m_text->setFont(metrics.base);
    m_dismiss->setHelp("Dismiss");
    connect(m_dismiss, &QAbstractButton::clicked, this, [this] {
        if (onDismiss)
            onDismiss();
    });
}

void TransientNoticeBanner::setContent(const std::string& text, const Theme& theme)
{
    if (theme != m_theme)
        update();
    m_theme = theme;
    m_text->setPlainText(text);
    m_text->setColour(theme.text);
    m_dismiss->setColour(theme.dimmed);
    setVisible(!text.empty());
}

void TransientNoticeBanner::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), Contrast::blended(m_theme.text, m_theme.background, shade));
}

} // namespace vellumor
