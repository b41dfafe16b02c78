#include "ui/Symbols.h"

#include "ui/Pictures.h"

#include <QIcon>

#include <gtest/gtest.h>

namespace vellumor::symbolsTest {
namespace {

using Symbols::Symbol;

constexpr Symbol every[] = {Symbol::history, Symbol::refresh, Symbol::settings, Symbol::dismiss,
                            Symbol::warning, Symbol::menuBar, Symbol::about};

// Without an icon theme.
struct SymbolsTest : testing::Test {
    SymbolsTest()
    {
        QIcon::setThemeSearchPaths({});
        QIcon::setFallbackSearchPaths({});
        QIcon::setThemeName(QStringLiteral("none-such"));
        QIcon::setFallbackThemeName(QStringLiteral("none-such"));
    }
};

TEST_F(SymbolsTest, eachIsDrawnInItsSizeAtEveryScale)
{
    for (const Symbol symbol : every) {
        for (const int points : {14, 16, 20}) {
            for (const double scale : {1.0, 1.25, 2.0, 3.0}) {
                SCOPED_TRACE(testing::Message() << static_cast<int>(symbol) << " at " << scale);
                const QPixmap pixmap = Symbols::pixmap(symbol, points, Qt::black, scale);
                EXPECT_EQ(pixmap.width(), qRound(points * scale));
                EXPECT_EQ(pixmap.height(), qRound(points * scale));
                EXPECT_EQ(pixmap.devicePixelRatio(), scale);
                const QRect inked = test::inked(pixmap.toImage());
                EXPECT_GE(inked.width(), pixmap.width() / 2);
                EXPECT_GE(inked.height(), pixmap.height() / 2);
            }
        }
    }
}

TEST_F(SymbolsTest, eachIsOfOneColour)
{
    const QColor colour(200, 30, 90);
    for (const Symbol symbol : every) {
        const QImage image = Symbols::pixmap(symbol, 16, colour, 3).toImage();
        EXPECT_GT(test::mostAlpha(image), 200);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.alpha() < 128)
                    continue; // few bits are left of its colour
                EXPECT_NEAR(pixel.red(), colour.red(), 2);
                EXPECT_NEAR(pixel.green(), colour.green(), 2);
                EXPECT_NEAR(pixel.blue(), colour.blue(), 2);
            }
        }
    }
}

TEST_F(SymbolsTest, noTwoAreAlike)
{
    for (const Symbol a : every) {
        for (const Symbol b : every) {
            const bool areAlike = Symbols::pixmap(a, 16, Qt::black, 2).toImage() ==
                                  Symbols::pixmap(b, 16, Qt::black, 2).toImage();
            EXPECT_EQ(areAlike, a == b);
        }
    }
}

} // namespace
} // namespace vellumor::symbolsTest
