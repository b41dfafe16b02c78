#include "ui/PopoverPlace.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::popoverPlaceTest {
namespace {

using PopoverPlace::rect;

const QRect screen(0, 0, 1920, 1080);
const QRect second(1920, -200, 1280, 1024); // to the right, and higher up
const QSize size(352, 400);

TEST(PopoverPlace, itStandsUnderAnItemAtTheTopAndOverOneAtTheBottom)
{
    const struct {
        const char* name;
        QRect anchor;
        QRect available;
        bool isUnder;
    } rows[] = {
        {"top", {1000, 0, 22, 22}, screen.adjusted(0, 24, 0, 0), true},
        {"bottom", {1000, 1058, 22, 22}, screen.adjusted(0, 0, 0, -24), false},
        {"a floating panel at the top", {1000, 100, 22, 22}, screen, true},
        {"a floating panel at the bottom", {1000, 900, 22, 22}, screen, false},
        {"second screen, top", {2500, -200, 22, 22}, second, true},
        {"second screen, bottom", {2500, 800, 22, 22}, second, false},
        {"a point", {1000, 10, 1, 1}, screen, true},
    };
    for (const auto& [name, anchor, available, isUnder] : rows) {
        SCOPED_TRACE(name);
        const QRect place = rect(anchor, size, available);
        EXPECT_EQ(place.size(), size);
        EXPECT_TRUE(available.contains(place));
        EXPECT_FALSE(place.intersects(anchor));
        EXPECT_NEAR(place.center().x(), anchor.center().x(), 1);
        if (isUnder) {
            EXPECT_LE(place.top() - std::max(anchor.bottom(), available.top()), 8);
        } else {
            EXPECT_LE(std::min(anchor.top(), available.bottom()) - place.bottom(), 8);
        }
    }
}

TEST(PopoverPlace, inACornerItKeepsToTheScreen)
{
    for (const QRect& available : {screen, second, screen.adjusted(60, 24, -40, -30)}) {
        for (const QPoint corner : {available.topLeft(), available.topRight(),
                                    available.bottomLeft(), available.bottomRight()}) {
            const QRect anchor(corner - QPoint(11, 11), QSize(22, 22));
            const QRect place = rect(anchor, size, available);
            EXPECT_EQ(place.size(), size);
            EXPECT_TRUE(available.contains(place));
            EXPECT_FALSE(place.intersects(anchor));
            const bool isLeft = corner.x() == available.left();
            EXPECT_LE(isLeft ? place.left() - available.left() : available.right() - place.right(),
                      8);
        }
    }
}

TEST(PopoverPlace, withoutAnItemItStandsInTheUpperRightCorner)
{
    for (const QRect& available : {screen, second, screen.adjusted(0, 30, -50, 0)}) {
        const QRect place = rect(std::nullopt, size, available);
        EXPECT_EQ(place.size(), size);
        EXPECT_TRUE(available.contains(place));
        EXPECT_LE(available.right() - place.right(), 8);
        EXPECT_LE(place.top() - available.top(), 8);
    }
}

TEST(PopoverPlace, anItemInTheMiddleIsNotCovered)
{
    const QRect anchor(900, 500, 22, 22);
    const QRect place = rect(anchor, size, screen);
    EXPECT_TRUE(screen.contains(place));
    EXPECT_FALSE(place.intersects(anchor));
}

TEST(PopoverPlace, absurdCoordinatesStayOnTheScreen)
{
    constexpr int far = std::numeric_limits<int>::max() - 1;
    constexpr int near = std::numeric_limits<int>::min() + 1;
    for (const int x : {near, -50000, 500, 50000, far}) {
        for (const int y : {near, -50000, 500, 50000, far}) {
            const QRect place = rect(QRect(x, y, 1, 1), size, screen);
            EXPECT_TRUE(screen.contains(place)) << x << " " << y;
            EXPECT_EQ(place.size(), size);
        }
    }
}

TEST(PopoverPlace, aWindowLargerThanTheScreenShowsItsUpperLeftEnd)
{
    const QRect small(100, 50, 320, 240);
    for (const std::optional<QRect>& anchor :
         {std::optional<QRect>(), std::optional(QRect(110, 50, 22, 22)),
          std::optional(QRect(400, 280, 22, 22))}) {
        const QRect place = rect(anchor, size, small);
        EXPECT_EQ(place.size(), size);
        EXPECT_LE(place.left() - small.left(), 8);
        EXPECT_GE(place.left(), small.left());
        EXPECT_LE(place.top() - small.top(), 8);
        EXPECT_GE(place.top(), small.top());
    }
}

} // namespace
} // namespace vellumor::popoverPlaceTest
