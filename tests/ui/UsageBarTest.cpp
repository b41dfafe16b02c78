#include "ui/UsageBar.h"

#include "ui/DesktopPalette.h"

#include <QImage>

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace vellumor::usageBarTest {
namespace {

constexpr int width = 100;
constexpr int height = 6;
constexpr int margin = 10;
constexpr int middle = margin + height / 2;

Theme theme()
{
    return Theme::of(DesktopPalette::dark());
}

// The bar, with a margin of background around it.
QImage paint(double percent, bool isStale = false)
{
    QImage image(width + 2 * margin, height + 2 * margin, QImage::Format_RGB32);
    image.fill(theme().background);
    QPainter painter(&image);
    UsageBar{percent, isStale}.paint(painter, QRectF(margin, margin, width, height), theme());
    return image;
}

QColor at(const QImage& image, int percent)
{
    return image.pixelColor(margin + percent * width / 100, middle);
}

void expectNear(const QColor& a, const QColor& b)
{
    EXPECT_NEAR(a.red(), b.red(), 1);
    EXPECT_NEAR(a.green(), b.green(), 1);
    EXPECT_NEAR(a.blue(), b.blue(), 1);
}

// The colours along the middle, but for the rounded ends.
std::set<QRgb> coloursUpTo(const QImage& image, int percent)
{
    std::set<QRgb> colours;
    for (int at = 5; at < percent - 5; ++at)
        colours.insert(image.pixel(margin + at, middle));
    return colours;
}

TEST(UsageBar, theFillEndsAtThePercent)
{
    for (const int percent : {20, 50, 74}) {
        const QImage image = paint(percent);
        expectNear(at(image, percent - 4), theme().accent);
        expectNear(at(image, percent + 4), theme().track);
        expectNear(at(image, 96), theme().track);
    }
}

TEST(UsageBar, theColourIsThatOfTheDanger)
{
    const std::pair<double, QColor> rows[] = {
        {10, theme().accent}, {74.9, theme().accent}, {75, theme().high}, {89.9, theme().high}};
    for (const auto& [percent, colour] : rows) {
        const auto colours = coloursUpTo(paint(percent), static_cast<int>(percent));
        if (percent > 10) {
            EXPECT_EQ(colours, std::set<QRgb>{colour.rgb()}) << percent; // plain
        }
        expectNear(at(paint(percent), 5), colour);
    }
}

TEST(UsageBar, aFullOneIsHatched)
{
    for (const double percent : {90.0, 97.0, 100.0, 150.0}) {
        const auto colours = coloursUpTo(paint(percent), 88);
        EXPECT_GT(colours.size(), 2U);
        EXPECT_TRUE(colours.contains(theme().full.rgb()));
        for (const QRgb colour : colours)
            EXPECT_GT(qRed(colour), qBlue(colour)) << percent; // all of it reddish
    }
}

TEST(UsageBar, nothingLeavesItsPlace)
{
    const double endless = std::numeric_limits<double>::infinity();
    for (const double percent : {0.5, 99.0, 100.0, 150.0, 1e300, endless}) {
        const QImage image = paint(percent);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (!QRect(margin, margin, width, height).contains(x, y)) {
                    ASSERT_EQ(image.pixel(x, y), theme().background.rgb()) << percent << " " << x;
                }
            }
        }
    }
    EXPECT_EQ(paint(150), paint(100));
    EXPECT_EQ(paint(endless), paint(100));
}

TEST(UsageBar, withoutUseThereIsTheTrackAlone)
{
    const QImage empty = paint(0);
    expectNear(at(empty, 50), theme().track);
    EXPECT_EQ(coloursUpTo(empty, 100).size(), 1U);
    EXPECT_EQ(paint(-20), empty);
    EXPECT_EQ(paint(std::numeric_limits<double>::quiet_NaN()), empty);
    EXPECT_NE(paint(0.1), empty); // the least use is seen
}

TEST(UsageBar, aStaleOneIsFainter)
{
    for (const double percent : {50.0, 80.0}) {
        const QColor fresh = at(paint(percent), 30);
        expectNear(at(paint(percent, true), 30),
                   Contrast::blended(fresh, theme().background, 0.55));
    }
    EXPECT_NE(paint(95, true), paint(95));
}

} // namespace
} // namespace vellumor::usageBarTest
