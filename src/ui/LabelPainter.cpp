#include "ui/LabelPainter.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QIcon>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

using MenuBarLabel::BarsGeometry;
using MenuBarLabel::Group;
using MenuBarLabel::Placed;
using MenuBarLabel::Slot;

constexpr double faintTrack = 0.18;
constexpr double track = 0.3;
constexpr double dimmedInk = 0.4;
constexpr int numberPixels = 12;
constexpr int stackedPixels = 9;
constexpr double numberGap = 5.0;
constexpr double columnGap = 7.0;
constexpr double numberMargin = 1.0; // at each end
constexpr qsizetype mostCharacters = 5;

QImage canvas(double width, int scale)
{
    QImage image(static_cast<int>(std::ceil(width)) * scale,
                 static_cast<int>(MenuBarLabel::height) * scale,
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

QColor ink(double alpha)
{
    return QColor::fromRgbF(0, 0, 0, static_cast<float>(alpha));
}

void drawBar(QPainter& painter, const Placed& placed)
{
    const QRectF bar(placed.x, MenuBarLabel::height - MenuBarLabel::barY - MenuBarLabel::barHeight,
                     placed.width, MenuBarLabel::barHeight);
    QPainterPath outline;
    outline.addRoundedRect(bar, MenuBarLabel::barRadius, MenuBarLabel::barRadius);
    const bool isFaint =
        placed.slot.dimmed || std::holds_alternative<MenuBarLabel::Ellipsis>(placed.slot.fill);
    painter.fillPath(outline, ink(isFaint ? faintTrack : track));
    const double* percent = std::get_if<double>(&placed.slot.fill);
    if (percent == nullptr || !(*percent > 0))
        return;
    QRectF fill = bar;
    fill.setTop(bar.bottom() - bar.height() * std::min(*percent, 100.0) / 100.0);
    QPainterPath filled;
    filled.addRect(fill);
    painter.fillPath(outline.intersected(filled), ink(placed.slot.dimmed ? dimmedInk : 1.0));
}

QImage barsImage(const std::vector<Group>& groups, int scale)
{
    const BarsGeometry geometry = MenuBarLabel::barsGeometry(groups);
    QImage image = canvas(geometry.total, scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const Placed& placed : geometry.placed)
        drawBar(painter, placed);
    return image;
}

// Draws figures all of one width, whatever the font: a number that grows moves nothing else.
class Figures {
public:
    explicit Figures(const QFont& font)
        : m_font(font)
        , m_metrics(font)
    {
        for (char16_t digit = u'0'; digit <= u'9'; ++digit)
            m_digit = std::max(m_digit, m_metrics.horizontalAdvance(QChar(digit)));
    }

    [[nodiscard]] static QString text(const Slot& slot)
    {
        const QString whole = QString::fromStdString(MenuBarLabel::numberString(slot));
        // No true percent is that long.
        return whole.size() > mostCharacters ? whole.first(mostCharacters - 1) + u'…' : whole;
    }
    [[nodiscard]] double width(const QString& text) const
    {
        double sum = 0;
        for (const QChar c : text)
            sum += advance(c);
        return sum;
    }
    [[nodiscard]] double height() const { return m_metrics.height(); }

    // `top`: of the line.
    void draw(QPainter& painter, double x, double top, const Slot& slot) const
    {
        painter.setFont(m_font);
        painter.setPen(ink(slot.dimmed ? dimmedInk : 1.0));
        for (const QChar c : text(slot)) {
            const double spare = advance(c) - m_metrics.horizontalAdvance(c);
            painter.drawText(QPointF(x + spare / 2, top + m_metrics.ascent()), QString(c));
            x += advance(c);
        }
    }

private:
    [[nodiscard]] double advance(QChar c) const
    {
        return c.isDigit() ? m_digit : m_metrics.horizontalAdvance(c);
    }

    QFont m_font;
    QFontMetricsF m_metrics;
    double m_digit = 0;
};

QImage numbersImage(const std::vector<Group>& groups, const QFont& font, int scale)
{
    const Figures figures(font);
    std::vector<Slot> slots_;
    for (const Group& group : groups)
        slots_.insert(slots_.end(), group.begin(), group.end());
    double width = 2 * numberMargin + numberGap * static_cast<double>(slots_.size() - 1);
    for (const Slot& slot : slots_)
        width += figures.width(Figures::text(slot));
    QImage image = canvas(width, scale);
    QPainter painter(&image);
    double x = numberMargin;
    for (const Slot& slot : slots_) {
        figures.draw(painter, x, (MenuBarLabel::height - figures.height()) * 0.5, slot);
        x += figures.width(Figures::text(slot)) + numberGap;
    }
    return image;
}

double columnWidth(const Figures& figures, const Group& group)
{
    double width = 0;
    for (const Slot& slot : group)
        width = std::max(width, figures.width(Figures::text(slot)));
    return width;
}

// An account's session number over its second one; one that stands alone in the middle.
QImage stackedImage(const std::vector<Group>& groups, const QFont& font, int scale)
{
    const Figures figures(font);
    double width = 2 * numberMargin + columnGap * static_cast<double>(groups.size() - 1);
    for (const Group& group : groups)
        width += columnWidth(figures, group);
    QImage image = canvas(width, scale);
    QPainter painter(&image);
    double x = numberMargin;
    for (const Group& group : groups) {
        const double column = columnWidth(figures, group);
        const double row =
            MenuBarLabel::height / static_cast<double>(std::max<std::size_t>(group.size(), 1));
        double top = (row - figures.height()) * 0.5;
        for (const Slot& slot : group) {
            figures.draw(painter, x + column - figures.width(Figures::text(slot)), top, slot);
            top += row;
        }
        x += column + columnGap;
    }
    return image;
}

bool hasSlots(const std::vector<Group>& groups)
{
    return std::ranges::any_of(groups, [](const Group& group) { return !group.empty(); });
}

// In the font of the desktop, by pixels: the panel's height does not grow with its text.
QFont labelFont(int pixels)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(pixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace

LabelPainter::LabelPainter()
    : m_numbers(labelFont(numberPixels))
    , m_stackedNumbers(labelFont(stackedPixels))
{
}

QImage LabelPainter::image(const std::vector<Group>& groups, MenuBarMode mode, bool dual,
                           int scale) const
{
    if (!hasSlots(groups))
        return symbol(QStringLiteral(":/icons/vellumor-menubar-template.svg"), scale);
    if (mode == MenuBarMode::bars)
        return barsImage(groups, scale);
    return dual ? stackedImage(groups, m_stackedNumbers, scale)
                : numbersImage(groups, m_numbers, scale);
}

QImage LabelPainter::symbol(const QString& file, int scale)
{
    QImage image = canvas(MenuBarLabel::height, scale);
    const int pixels = image.height();
    QPixmap drawn = QIcon(file).pixmap(QSize(pixels, pixels), 1.0);
    if (drawn.isNull())
        return barsImage({{{40.0}}, {{80.0}}, {{60.0}}}, scale);
    drawn.setDevicePixelRatio(scale);
    QPainter(&image).drawPixmap(0, 0, drawn);
    return image;
}

StatusLabel::Scales LabelPainter::scales(const std::vector<Group>& groups, MenuBarMode mode,
                                         bool dual) const
{
    StatusLabel::Scales all;
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = image(groups, mode, dual, static_cast<int>(i) + 1);
    return all;
}

StatusLabel LabelPainter::label(const std::vector<Group>& groups, MenuBarMode mode, bool dual) const
{
    StatusLabel label;
    label.whole = scales(groups, mode, dual);
    if (!hasSlots(groups)) {
        label.iconName = "dev.quorle.vellumor-symbolic";
        return label;
    }
    for (const Group& group : groups)
        label.parts.push_back(scales({group}, mode, dual));
    return label;
}

} // namespace vellumor
