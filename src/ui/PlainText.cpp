#include "ui/PlainText.h"

#include "ui/OneLine.h"
#include "ui/Theme.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace vellumor {

namespace {

// Keeps together what stands between two points in the middle, so that a line ends there rather
// than within; as long as `text`, letter for letter. A part that does not fit is left as it is.
QString withWholeParts(const QString& text, const QFontMetrics& metrics, int width)
{
    QStringList parts = text.split(QStringLiteral(" · "));
    for (QString& part : parts) {
        if (metrics.horizontalAdvance(part + QStringLiteral(" ·")) <= width)
            part.replace(QLatin1Char(' '), QChar(QChar::Nbsp));
    }
    return parts.join(QStringLiteral("\u00a0· "));
}

} // namespace

PlainText::PlainText(QWidget* parent, int mostLines)
    : QLabel(parent)
    , m_mostLines(mostLines)
{
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::NoTextInteraction);
    QSizePolicy policy(mostLines > 1 ? QSizePolicy::Preferred : QSizePolicy::Maximum,
                       mostLines > 1 ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    policy.setHeightForWidth(mostLines > 1);
    setSizePolicy(policy);
}

void PlainText::setPlainText(const std::string& text)
{
    const QString whole = oneLine(text);
    if (whole == this->text())
        return;
    setText(whole);
    updateToolTip();
    updateGeometry();
}

void PlainText::setColour(const QColor& colour)
{
    if (colour == m_colour)
        return;
    m_colour = colour;
    update();
}

void PlainText::setDimmed()
{
    m_isDimmed = true;
    update();
}

void PlainText::fixWidth(int width)
{
    setFixedSize(width, heightForWidth(width));
}

QColor PlainText::ink() const
{
    if (m_colour.isValid())
        return m_colour;
    const QColor text = palette().color(QPalette::WindowText);
    return m_isDimmed
               ? Contrast::readable(text, palette().color(QPalette::Window), Theme::dimmedAlpha)
               : text;
}

PlainText::Lines PlainText::lines(int width) const
{
    const QFontMetrics metrics(font());
    if (m_mostLines == 1 || metrics.horizontalAdvance(text()) <= width) {
        const QString shown = metrics.elidedText(text(), Qt::ElideRight, width);
        return {{shown}, shown != text()};
    }
    Lines whole = broken(withWholeParts(text(), metrics, width), width);
    return whole.isCut ? broken(text(), width) : whole;
}

// `spaced` is the text, but for the kind of its spaces.
PlainText::Lines PlainText::broken(const QString& spaced, int width) const
{
    const QFontMetrics metrics(font());
    Lines lines;
    QTextLayout layout(spaced, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (lines.texts.size() + 1 == m_mostLines &&
            line.textStart() + line.textLength() < text().size()) {
            lines.texts += metrics.elidedText(text().mid(line.textStart()), Qt::ElideRight, width);
            lines.isCut = true;
            break;
        }
        lines.texts += text().mid(line.textStart(), line.textLength());
    }
    layout.endLayout();
    return lines;
}

QSize PlainText::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 1, metrics.height()};
}

QSize PlainText::minimumSizeHint() const
{
    return {0, QFontMetrics(font()).height()};
}

int PlainText::heightForWidth(int width) const
{
    return static_cast<int>(std::max<qsizetype>(lines(width).texts.size(), 1)) *
           QFontMetrics(font()).height();
}

void PlainText::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    updateToolTip();
}

void PlainText::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(ink());
    const int height = QFontMetrics(font()).height();
    const Lines shown = lines(width());
    int top = (this->height() - height * static_cast<int>(shown.texts.size())) / 2;
    for (const QString& line : shown.texts) {
        painter.drawText(QRect(0, top, width(), height),
                         static_cast<int>(alignment() & Qt::AlignHorizontal_Mask) |
                             Qt::AlignVCenter | Qt::TextSingleLine,
                         line);
        top += height;
    }
}

// A text tip is read as rich text when it looks like it, so its marks are escaped.
void PlainText::updateToolTip()
{
    const QString tip = lines(width()).isCut ? text() : QString();
    setToolTip(tip.isEmpty() ? tip : QStringLiteral("<span>%1</span>").arg(tip.toHtmlEscaped()));
}

} // namespace vellumor
