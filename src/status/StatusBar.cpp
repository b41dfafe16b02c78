#include "status/StatusBar.h"

#include <algorithm>
#include <cmath>

namespace vellumor::StatusBar {

namespace {

// NaN counts as nothing.
int filledOf(double percent, int width)
{
    if (!(percent > 0) || width <= 0)
        return 0;
    if (percent >= 100)
        return width;
    const auto filled = static_cast<int>(std::lround(percent / 100 * width));
    return std::clamp(filled, 1, std::max(width - 1, 1));
}

} // namespace

std::string text(double percent, int width, Characters characters)
{
    const bool isAscii = characters == Characters::ascii;
    const int filled = filledOf(percent, width);
    std::string bar;
    for (int i = 0; i < width; ++i)
        bar += i < filled ? (isAscii ? "#" : "█") : (isAscii ? "-" : "░");
    return bar;
}

} // namespace vellumor::StatusBar
