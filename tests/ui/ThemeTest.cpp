#include "ui/Theme.h"

#include "ui/DesktopPalette.h"

#include <gtest/gtest.h>

#include <string>

namespace vellumor::themeTest {
namespace {

constexpr double leastContrast = 4.5;

QPalette light()
{
    QPalette palette(Qt::black, QColor(0xef, 0xef, 0xef));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x8c, 0xc6));
    palette.setColor(QPalette::Link, QColor(0x00, 0x00, 0xff));
    return palette;
}

QPalette of(const char* text, const char* base)
{
    QPalette palette = light();
    palette.setColor(QPalette::Base, QColor(base));
    palette.setColor(QPalette::Text, QColor(text));
    return palette;
}

TEST(Contrast, theRatioIsThatOfTheGuidelines)
{
    const struct {
        const char* a;
        const char* b;
        double ratio;
    } rows[] = {
        {"#000000", "#ffffff", 21},   {"#ffffff", "#ffffff", 1},    {"#767676", "#ffffff", 4.54},
        {"#777777", "#ffffff", 4.48}, {"#ff0000", "#ffffff", 4.00}, {"#0000ff", "#ffffff", 8.59},
        {"#00ff00", "#ffffff", 1.37}, {"#808080", "#000000", 5.32}, {"#0a0a0a", "#000000", 1.06},
    };
    for (const auto& [a, b, ratio] : rows) {
        EXPECT_NEAR(Contrast::ratio(QColor(a), QColor(b)), ratio, 0.01) << a << " " << b;
        EXPECT_NEAR(Contrast::ratio(QColor(b), QColor(a)), ratio, 0.01) << a << " " << b;
    }
}

TEST(Contrast, blendingLaysOneColourOnAnother)
{
    EXPECT_EQ(Contrast::blended(Qt::black, Qt::white, 0).rgba(), QColor(Qt::white).rgba());
    EXPECT_EQ(Contrast::blended(Qt::black, Qt::white, 1).rgba(), QColor(Qt::black).rgba());
    EXPECT_EQ(Contrast::blended(Qt::black, Qt::white, 0.6).rgba(), QColor(0x66, 0x66, 0x66).rgba());
    EXPECT_EQ(Contrast::blended(QColor(255, 0, 0), QColor(0, 0, 255), 0.2).rgba(),
              QColor(51, 0, 204).rgba());
}

TEST(Contrast, aFaintTextStaysReadableIfTheWholeOneIs)
{
    for (const char* const under : {"#ffffff", "#000000", "#24272e", "#fdf6e3", "#cccccc"}) {
        for (const double alpha : {0.0, 0.3, 0.55, 0.6, 0.9}) {
            for (const char* const over : {"#000000", "#ffffff", "#0000ff", "#c62828"}) {
                const QColor faint = Contrast::readable(QColor(over), QColor(under), alpha);
                const double whole = Contrast::ratio(QColor(over), QColor(under));
                EXPECT_GE(Contrast::ratio(faint, QColor(under)),
                          std::min(whole, leastContrast) - 0.03)
                    << over << " on " << under;
            }
        }
    }
    // No more than it takes.
    EXPECT_EQ(Contrast::readable(Qt::black, Qt::white, 0.6).rgba(),
              QColor(0x66, 0x66, 0x66).rgba());
}

TEST(Theme, everyTextIsReadableInLightAndDark)
{
    const std::pair<const char*, QPalette> palettes[] = {
        {"light", light()},
        {"dark", DesktopPalette::dark()},
        {"a light desktop's", of("#2e3436", "#fafafa")},
        {"a dark desktop's", of("#eeeeec", "#2d2d2d")},
        {"black", of("#ffffff", "#000000")},
    };
    for (const auto& [name, palette] : palettes) {
        SCOPED_TRACE(name);
        const Theme theme = Theme::of(palette);
        const std::pair<const char*, QColor> texts[] = {{"text", theme.text},
                                                        {"dimmed", theme.dimmed},
                                                        {"full", theme.full},
                                                        {"stale text", theme.stale(theme.text)},
                                                        {"stale dimmed", theme.stale(theme.dimmed)},
                                                        {"stale full", theme.stale(theme.full)}};
        for (const auto& [text, colour] : texts)
            EXPECT_GE(Contrast::ratio(colour, theme.background), leastContrast) << text;
    }
    for (const QPalette& palette : {light(), DesktopPalette::dark()}) {
        const Theme theme = Theme::of(palette);
        EXPECT_GE(Contrast::ratio(theme.link, theme.background), leastContrast);
    }
}

TEST(Theme, theColoursAreThePalettesAndSharesOfItsText)
{
    const Theme theme = Theme::of(light());
    EXPECT_EQ(theme.background, QColor(Qt::white));
    EXPECT_EQ(theme.text, QColor(Qt::black));
    EXPECT_EQ(theme.accent, QColor(0x30, 0x8c, 0xc6));
    EXPECT_EQ(theme.link, QColor(0x00, 0x00, 0xff));
    EXPECT_EQ(theme.dimmed.rgba(), QColor(0x66, 0x66, 0x66).rgba());           // 60 %
    EXPECT_EQ(theme.hairline.rgba(), QColor(0xeb, 0xeb, 0xeb).rgba());         // 8 %
    EXPECT_EQ(theme.track.rgba(), QColor(0xe0, 0xe0, 0xe0).rgba());            // 12 %
    EXPECT_EQ(theme.stale(Qt::black).rgba(), QColor(0x73, 0x73, 0x73).rgba()); // 55 %
    EXPECT_FALSE(theme.isDark());
    EXPECT_TRUE(Theme::of(DesktopPalette::dark()).isDark());
}

TEST(Theme, dangerHasItsOwnColours)
{
    for (const QPalette& palette : {light(), DesktopPalette::dark()}) {
        const Theme theme = Theme::of(palette);
        EXPECT_EQ(theme.fill(UsageLevel::calm), theme.accent);
        EXPECT_EQ(theme.fill(UsageLevel::high), theme.high);
        EXPECT_EQ(theme.fill(UsageLevel::full), theme.full);
        const int amber = theme.high.hsvHue();
        const int red = theme.full.hsvHue();
        EXPECT_TRUE(amber > 25 && amber < 50) << amber;
        EXPECT_TRUE(red < 12 || red > 348) << red;
        for (const UsageLevel level : {UsageLevel::calm, UsageLevel::high, UsageLevel::full})
            EXPECT_GE(Contrast::ratio(theme.fill(level), theme.track), 2)
                << static_cast<int>(level);
    }
}

} // namespace
} // namespace vellumor::themeTest
