#include "platform/linux/tray/RootPosition.h"

#include <gtest/gtest.h>

#include <vector>

namespace vellumor::rootPositionTest {
namespace {

using RootPosition::Screen;

TEST(RootPosition, aPixelOfTheRootWindowIsAPointOfTheScreenThatHoldsIt)
{
    // 1280 by 800 pixels, and to the right of them 3840 by 2160 with two pixels a point.
    const std::vector<Screen> screens{{QRect(0, 0, 1280, 800), 1.0},
                                      {QRect(1280, 0, 1920, 1080), 2.0}};
    const std::pair<QPoint, std::optional<QPoint>> rows[] = {
        {{0, 0}, QPoint(0, 0)},
        {{1279, 799}, QPoint(1279, 799)},
        {{1280, 0}, QPoint(1280, 0)},
        {{1281, 3}, QPoint(1280, 1)},
        {{1280 + 3839, 2159}, QPoint(1280 + 1919, 1079)},
        {{1280 + 3840, 0}, std::nullopt},
        {{5, 800}, std::nullopt},
        {{-1, 5}, std::nullopt},
        {{999999, -5}, std::nullopt},
        {{-2147483647, 2147483647}, std::nullopt},
    };
    for (const auto& [pixel, point] : rows) {
        SCOPED_TRACE(testing::Message() << pixel.x() << ", " << pixel.y());
        EXPECT_EQ(RootPosition::inPoints(pixel, screens), point);
    }
    EXPECT_EQ(RootPosition::inPoints({0, 0}, {}), std::nullopt);
}

TEST(RootPosition, ofPixelsAndPointsTheOneAtThePointerIsMeant)
{
    const Screen screen{QRect(0, 0, 1280, 800), 2.0};
    const std::tuple<QPoint, QPoint, std::optional<QPoint>> rows[] = {
        {{1144, 14}, {1144, 14}, QPoint(1144, 14)}, // points
        {{1144, 14}, {572, 7}, QPoint(572, 7)},     // pixels
        {{2288, 28}, {3, 790}, QPoint(1144, 14)},   // beyond all points
        {{2561, 28}, {3, 790}, std::nullopt},       {{-5, 3}, {0, 0}, std::nullopt},
    };
    for (const auto& [told, pointer, expected] : rows)
        EXPECT_EQ(RootPosition::nearest(told, {&screen, 1}, pointer), expected) << told.x();
}

TEST(RootPosition, aRatioThatIsNoWholeNumberKeepsTheScreensLastPixelInside)
{
    const Screen screen{QRect(0, 0, 1024, 640), 1.25};
    EXPECT_EQ(RootPosition::inPoints({1279, 799}, {&screen, 1}), QPoint(1023, 639));
    EXPECT_EQ(RootPosition::inPoints({1280, 799}, {&screen, 1}), std::nullopt);
}

} // namespace
} // namespace vellumor::rootPositionTest
