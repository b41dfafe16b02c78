#include "ui/DesktopPalette.h"

#include "ui/Theme.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace vellumor::desktopPaletteTest {
namespace {

struct DesktopPaletteTest : testing::Test {
    const QPalette before = QApplication::palette();

    ~DesktopPaletteTest() override { QApplication::setPalette(before); }

    static QColor window() { return QApplication::palette().color(QPalette::Window); }
    static bool isDark() { return Theme::of(QApplication::palette()).isDark(); }
};

TEST_F(DesktopPaletteTest, aLightDesktopTurnsDarkOnlyByTheUsersWish)
{
    ASSERT_FALSE(isDark());
    const QColor own = window();
    DesktopPalette palette;
    EXPECT_EQ(window(), own);
    palette.adopt(std::nullopt);
    EXPECT_EQ(window(), own);
    palette.adopt(true);
    EXPECT_TRUE(isDark());
    EXPECT_EQ(window(), DesktopPalette::dark().color(QPalette::Window));
    palette.adopt(true);
    EXPECT_TRUE(isDark());
    palette.adopt(false);
    EXPECT_EQ(window(), own);
    palette.adopt(true);
    palette.adopt(std::nullopt);
    EXPECT_EQ(window(), own);
}

TEST_F(DesktopPaletteTest, coloursThatAreDarkAlreadyStay)
{
    QPalette own = DesktopPalette::dark();
    own.setColor(QPalette::Window, QColor(0x10, 0x20, 0x30));
    QApplication::setPalette(own);
    DesktopPalette palette;
    for (const std::optional<bool> wish : {std::optional(true), std::optional(false), {}}) {
        palette.adopt(wish);
        EXPECT_EQ(window(), QColor(0x10, 0x20, 0x30));
    }
}

TEST_F(DesktopPaletteTest, everyTextOfTheDarkOneIsReadable)
{
    const QPalette dark = DesktopPalette::dark();
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> rows[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::ToolTipText, QPalette::ToolTipBase},
        {QPalette::Link, QPalette::Base},
        {QPalette::Link, QPalette::Window},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::PlaceholderText, QPalette::Base},
    };
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto& [text, under] : rows) {
            EXPECT_GE(Contrast::ratio(dark.color(group, text), dark.color(group, under)), 4.5)
                << text << " on " << under;
        }
    }
}

} // namespace
} // namespace vellumor::desktopPaletteTest
