#include "ui/Theme.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

constexpr double hairlineAlpha = 0.08;
constexpr double edgeAlpha = 0.2;
constexpr double trackAlpha = 0.12;
constexpr double leastContrast = 4.5;
constexpr double alphaStep = 0.05;

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour)
{
    return 0.2126 * linear(static_cast<double>(colour.redF())) +
           0.7152 * linear(static_cast<double>(colour.greenF())) +
           0.0722 * linear(static_cast<double>(colour.blueF()));
}

} // namespace

double Contrast::ratio(const QColor& a, const QColor& b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor Contrast::blended(const QColor& over, const QColor& under, double alpha)
{
    const auto mixed = [alpha](float above, float below) {
        return static_cast<float>(static_cast<double>(above) * alpha +
                                  static_cast<double>(below) * (1 - alpha));
    };
    return QColor::fromRgbF(mixed(over.redF(), under.redF()), mixed(over.greenF(), under.greenF()),
                            mixed(over.blueF(), under.blueF()))
        .toRgb();
}

QColor Contrast::readable(const QColor& over, const QColor& under, double alpha)
{
    while (alpha < 1 && ratio(blended(over, under, alpha), under) < leastContrast)
        alpha += alphaStep;
    return blended(over, under, std::min(alpha, 1.0));
}

QColor Contrast::legible(const QColor& colour, const QColor& text, const QColor& background)
{
    QColor mixed = colour;
    for (double share = alphaStep; share < 1 && ratio(mixed, background) < leastContrast;
         share += alphaStep)
        mixed = blended(text, colour, share);
    return mixed;
}

Theme Theme::of(const QPalette& palette)
{
    Theme theme;
    theme.background = palette.color(QPalette::Active, QPalette::Base);
    theme.text = palette.color(QPalette::Active, QPalette::Text);
    theme.dimmed = Contrast::readable(theme.text, theme.background, dimmedAlpha);
    theme.hairline = Contrast::blended(theme.text, theme.background, hairlineAlpha);
    theme.edge = Contrast::blended(theme.text, theme.background, edgeAlpha);
    theme.track = Contrast::blended(theme.text, theme.background, trackAlpha);
    theme.accent = palette.color(QPalette::Active, QPalette::Highlight);
    theme.link = Contrast::legible(palette.color(QPalette::Active, QPalette::Link), theme.text,
                                   theme.background);
    theme.high = theme.isDark() ? QColor(0xe5, 0xa0, 0x3c) : QColor(0xb9, 0x6f, 0x0c);
    theme.full =
        Contrast::legible(theme.isDark() ? QColor(0xff, 0x6b, 0x61) : QColor(0xc6, 0x28, 0x28),
                          theme.text, theme.background);
    return theme;
}

const QColor& Theme::fill(UsageLevel level) const
{
    switch (level) {
    case UsageLevel::calm:
        break;
    case UsageLevel::high:
        return high;
    case UsageLevel::full:
        return full;
    }
    return accent;
}

QColor Theme::stale(const QColor& colour) const
{
    return Contrast::readable(colour, background, staleAlpha);
}

} // namespace vellumor
