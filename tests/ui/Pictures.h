#pragma once

#include <QImage>

#include <algorithm>

// What is in a picture.
namespace vellumor::test {

inline int alphaAt(const QImage& image, int x, int y)
{
    return qAlpha(image.pixel(x, y));
}

inline bool isBlack(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qRed(pixel) != 0 || qGreen(pixel) != 0 || qBlue(pixel) != 0)
                return false;
        }
    }
    return true;
}

inline int mostAlpha(const QImage& image)
{
    int most = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            most = std::max(most, alphaAt(image, x, y));
    }
    return most;
}

// The smallest rectangle around everything drawn, in pixels; null when nothing is.
inline QRect inked(const QImage& image)
{
    QRect all;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (alphaAt(image, x, y) > 0)
                all |= QRect(x, y, 1, 1);
        }
    }
    return all;
}

} // namespace vellumor::test
