#include "platform/linux/tray/BusPicture.h"

#include <gtest/gtest.h>

namespace vellumor::busPictureTest {
namespace {

// Two pixels wide, one high: half of black, and nothing.
QImage halfAndNothing(QImage::Format format)
{
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, 0x80000000);
    image.setPixel(1, 0, 0x00000000);
    return image.convertToFormat(format);
}

TEST(BusPicture, theTintTakesThePlaceOfTheColourAndLeavesTheAlpha)
{
    for (const auto format : {QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied}) {
        const QImage image = tinted(halfAndNothing(format), QColor(0xee, 0xee, 0xec));
        EXPECT_EQ(image.pixel(0, 0), 0x80eeeeecU);
        EXPECT_EQ(qAlpha(image.pixel(1, 0)), 0);
    }
}

TEST(BusPicture, theBytesAreAlphaRedGreenBlueAndNotMultiplied)
{
    const QImage image = tinted(halfAndNothing(QImage::Format_ARGB32_Premultiplied), 0x2e3436);
    const BusPicture sent = busPicture(image.copy(0, 0, 1, 1));
    EXPECT_EQ(sent, (BusPicture{1, 1, QByteArray("\x80\x2e\x34\x36", 4)}));
}

TEST(BusPicture, theLinesFollowOneAnotherWithoutAGap)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    for (int i = 0; i < 6; ++i)
        image.setPixel(i % 3, i / 3, 0xff000000U + static_cast<QRgb>(i));
    QByteArray bytes;
    for (char i = 0; i < 6; ++i)
        bytes += QByteArray("\xff\0\0", 3) + i;
    EXPECT_EQ(busPicture(image), (BusPicture{3, 2, bytes}));
}

TEST(BusPicture, everyScaleThatIsThereIsSent)
{
    const QImage small(2, 1, QImage::Format_ARGB32);
    const QImage large(6, 3, QImage::Format_ARGB32);
    const auto sent = busPictures({small, QImage(), large}, Qt::white);
    ASSERT_EQ(sent.size(), 2);
    EXPECT_EQ(sent[0].width, 2);
    EXPECT_EQ(sent[1].width, 6);
    EXPECT_EQ(sent[1].bytes.size(), 6 * 3 * 4);
}

} // namespace
} // namespace vellumor::busPictureTest
