#include "platform/linux/tray/ItemLayout.h"

#include "platform/linux/tray/LabelTesting.h"

#include <gtest/gtest.h>

namespace vellumor::itemLayoutTest {
namespace {

using ItemLayout::Host;
using Scales = StatusLabel::Scales;

// The smallest rectangle around what is drawn.
QRect inkOf(const QImage& image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

void expectSize(const Scales& picture, int width, int height)
{
    for (int scale = 1; scale <= 3; ++scale) {
        const QImage& image = picture[static_cast<std::size_t>(scale) - 1];
        EXPECT_EQ(image.size(), QSize(width * scale, height * scale));
        EXPECT_EQ(image.devicePixelRatio(), scale);
    }
}

TEST(ItemLayout, emptyColumnsAreCutOffAtBothSides)
{
    const Scales picture = ItemLayout::cropped(test::picture(30, 4, 15));
    expectSize(picture, 11, 19);
    EXPECT_EQ(inkOf(picture[1]), QRect(0, 4, 22, 30));
}

TEST(ItemLayout, whatAnyScaleHasInkInStaysAtAll)
{
    Scales picture = test::picture(30, 4, 15);
    picture[2].setPixel(3 * 3 + 2, 20, 0xff000000); // the third of the three pixels of point 3
    picture[1].setPixel(15 * 2, 20, 0xff000000);    // the first of the two pixels of point 15
    expectSize(ItemLayout::cropped(picture), 13, 19);
}

TEST(ItemLayout, aPictureWithNothingOnItStaysAsItIs)
{
    expectSize(ItemLayout::cropped(test::picture(30, 0, 0)), 30, 19);
}

TEST(ItemLayout, whatFitsACellStandsInTheMiddleOfIt)
{
    struct Row {
        int width;
        std::array<QRect, 3> ink;
    };
    const Row rows[] = {
        {11, {QRect(5, 3, 11, 15), QRect(11, 7, 22, 30), QRect(16, 10, 33, 45)}},
        {22, {QRect(0, 3, 22, 15), QRect(0, 7, 44, 30), QRect(0, 10, 66, 45)}},
    };
    for (const auto& [width, ink] : rows) {
        SCOPED_TRACE(width);
        const auto items = ItemLayout::pictures(test::label(width, 4, "four"), Host::squareCells);
        ASSERT_EQ(items.size(), 1U);
        expectSize(items[0], 22, 22);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_EQ(inkOf(items[0][i]), ink[i]);
    }
}

TEST(ItemLayout, whatIsWiderBecomesOneItemAnAccountFromLeftToRight)
{
    const auto items = ItemLayout::pictures(test::label(23, 4, "four"), Host::squareCells);
    ASSERT_EQ(items.size(), 4U);
    for (int i = 0; i < 4; ++i) {
        const Scales& item = items[static_cast<std::size_t>(i)];
        expectSize(item, 22, 22);
        EXPECT_EQ(inkOf(item[1]).width(), 2 * (5 + i)); // as the parts differ
    }
}

TEST(ItemLayout, theWidthThatCountsIsThatOfTheInk)
{
    StatusLabel label = test::label(40, 2, "two");
    label.whole = test::picture(40, 9, 31);
    EXPECT_EQ(ItemLayout::pictures(label, Host::squareCells).size(), 1U);
    label.whole = test::picture(40, 9, 32);
    EXPECT_EQ(ItemLayout::pictures(label, Host::squareCells).size(), 2U);
}

TEST(ItemLayout, aPartThatFitsNoCellKeepsItsWidth)
{
    StatusLabel label = test::label(90, 0, "numbers");
    label.parts = {test::picture(40, 2, 37), test::picture(11, 0, 11)};
    const auto items = ItemLayout::pictures(label, Host::squareCells);
    ASSERT_EQ(items.size(), 2U);
    expectSize(items[0], 35, 22);
    EXPECT_EQ(inkOf(items[0][0]), QRect(0, 3, 35, 15));
    expectSize(items[1], 22, 22);
}

TEST(ItemLayout, onePictureAloneIsOneItemHoweverWide)
{
    const auto items = ItemLayout::pictures(test::label(65, 0, "wide"), Host::squareCells);
    ASSERT_EQ(items.size(), 1U);
    expectSize(items[0], 65, 22);
}

TEST(ItemLayout, aHostThatKeepsTheAspectGetsTheWholeAsItIs)
{
    const StatusLabel label = test::label(65, 4, "four");
    const auto items = ItemLayout::pictures(label, Host::waybar);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0], label.whole);
}

TEST(ItemLayout, aLabelWithoutAPictureIsAnEmptyCell)
{
    const auto items = ItemLayout::pictures(StatusLabel(), Host::squareCells);
    ASSERT_EQ(items.size(), 1U);
    expectSize(items[0], 22, 22);
    EXPECT_EQ(inkOf(items[0][0]), QRect());
}

TEST(ItemLayout, theHostIsKnownByTheNameOfItsProcess)
{
    const std::pair<const char*, Host> rows[] = {
        {"waybar", Host::waybar},           {".waybar-wrapped", Host::waybar},
        {"xfce4-panel", Host::squareCells}, {"wrapper-2.0", Host::squareCells},
        {"plasmashell", Host::squareCells}, {"", Host::squareCells},
    };
    for (const auto& [process, host] : rows) {
        SCOPED_TRACE(process);
        EXPECT_EQ(ItemLayout::hostOf(process), host);
    }
}

} // namespace
} // namespace vellumor::itemLayoutTest
