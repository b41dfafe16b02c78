#include "platform/linux/tray/ItemLayout.h"

#include <algorithm>
#include <optional>

namespace vellumor::ItemLayout {

namespace {

using Scales = StatusLabel::Scales;

// Columns from `first` up to but without `end`.
struct Columns {
    int first;
    int end;
};

int scaleAt(std::size_t index)
{
    return static_cast<int>(index) + 1;
}

int roundedUp(int pixels, int scale)
{
    return (pixels + scale - 1) / scale;
}

int widthInPoints(const Scales& picture)
{
    int width = 0;
    for (std::size_t i = 0; i < picture.size(); ++i)
        width = std::max(width, roundedUp(picture[i].width(), scaleAt(i)));
    return width;
}

int heightInPoints(const Scales& picture)
{
    int height = 0;
    for (std::size_t i = 0; i < picture.size(); ++i)
        height = std::max(height, roundedUp(picture[i].height(), scaleAt(i)));
    return height;
}

bool hasInk(const QImage& picture, int column)
{
    for (int y = 0; y < picture.height(); ++y) {
        if (qAlpha(picture.pixel(column, y)) != 0)
            return true;
    }
    return false;
}

std::optional<Columns> inkOf(const QImage& picture)
{
    int first = 0;
    while (first < picture.width() && !hasInk(picture, first))
        ++first;
    if (first == picture.width())
        return std::nullopt;
    int end = picture.width();
    while (!hasInk(picture, end - 1))
        --end;
    return Columns{first, end};
}

// In points, so that nothing of any scale is lost.
std::optional<Columns> inkOf(const Scales& picture)
{
    std::optional<Columns> all;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const auto ink = inkOf(picture[i]);
        if (!ink)
            continue;
        const int scale = scaleAt(i);
        const Columns points{ink->first / scale, roundedUp(ink->end, scale)};
        all = all ? Columns{std::min(all->first, points.first), std::max(all->end, points.end)}
                  : points;
    }
    return all;
}

QImage centred(const QImage& picture, const QSize& canvas, int scale)
{
    const int x = (canvas.width() - picture.width()) / 2;
    const int y = (canvas.height() - picture.height()) / 2;
    QImage plain = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage placed = plain.copy(QRect(QPoint(-x, -y), canvas)); // empty around what there is
    if (placed.isNull()) {
        placed = QImage(canvas, QImage::Format_ARGB32_Premultiplied);
        placed.fill(Qt::transparent);
    }
    placed.setDevicePixelRatio(scale);
    return placed;
}

} // namespace

Host hostOf(std::string_view process)
{
    // Packagers wrap it under names such as ".waybar-wrapped".
    return process.find("waybar") != std::string_view::npos ? Host::waybar : Host::squareCells;
}

Scales cropped(const Scales& picture)
{
    const auto ink = inkOf(picture);
    if (!ink)
        return picture;
    Scales result;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const int scale = scaleAt(i);
        result[i] = picture[i].copy(ink->first * scale, 0, (ink->end - ink->first) * scale,
                                    picture[i].height());
        result[i].setDevicePixelRatio(scale);
    }
    return result;
}

Scales inCell(const Scales& picture)
{
    const QSize points(std::max(cell, widthInPoints(picture)),
                       std::max(cell, heightInPoints(picture)));
    Scales result;
    for (std::size_t i = 0; i < picture.size(); ++i)
        result[i] = centred(picture[i], points * scaleAt(i), scaleAt(i));
    return result;
}

std::vector<Scales> pictures(const StatusLabel& label, Host host)
{
    if (host == Host::waybar)
        return {label.whole};
    const Scales whole = cropped(label.whole);
    if (label.parts.empty() || widthInPoints(whole) <= cell)
        return {inCell(whole)};
    std::vector<Scales> items;
    items.reserve(label.parts.size());
    for (const Scales& part : label.parts)
        items.push_back(inCell(cropped(part)));
    return items;
}

} // namespace vellumor::ItemLayout
