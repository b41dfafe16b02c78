#pragma once

#include "platform/StatusItem.h"

#include <QPainter>

#include <vector>

namespace vellumor::test {

// A picture of `width` by 19 points at three scales, with a bar from `left` up to `right`.
inline StatusLabel::Scales picture(int width, int left, int right)
{
    StatusLabel::Scales scales;
    for (std::size_t i = 0; i < scales.size(); ++i) {
        const int scale = static_cast<int>(i) + 1;
        scales[i] = QImage(width * scale, 19 * scale, QImage::Format_ARGB32_Premultiplied);
        scales[i].setDevicePixelRatio(scale);
        scales[i].fill(Qt::transparent);
        QPainter(&scales[i]).fillRect(left, 2, right - left, 15, Qt::black);
    }
    return scales;
}

inline StatusLabel label(int width, std::size_t accounts, const std::string& text)
{
    StatusLabel made{picture(width, 0, width), {}, text, {}};
    for (std::size_t i = 0; i < accounts; ++i)
        made.parts.push_back(picture(11, 0, 5 + static_cast<int>(i)));
    return made;
}

} // namespace vellumor::test
