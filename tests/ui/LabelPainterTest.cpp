#include "ui/LabelPainter.h"

#include "ui/Pictures.h"

#include <QFontDatabase>
#include <QFontMetricsF>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vellumor::labelPainterTest {
namespace {

using MenuBarLabel::Dash;
using MenuBarLabel::Ellipsis;
using MenuBarLabel::Group;
using MenuBarLabel::Slot;
using test::alphaAt;

constexpr int scales[] = {1, 2, 3};
constexpr double endless = std::numeric_limits<double>::infinity();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

Slot slot(MenuBarLabel::Fill fill, bool dimmed = false, bool wide = false)
{
    return {fill, dimmed, wide};
}

int alpha(double share)
{
    return static_cast<int>(std::lround(share * 255));
}

const LabelPainter& painter()
{
    static const LabelPainter painter;
    return painter;
}

QImage bars(const std::vector<Group>& groups, int scale)
{
    return painter().image(groups, MenuBarMode::bars, false, scale);
}

QImage numbers(const std::vector<Group>& groups, int scale, bool dual = false)
{
    return painter().image(groups, MenuBarMode::numbers, dual, scale);
}

// The width of a text in the label's font, in points.
double widthOf(const QString& text, int pixels)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(pixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    return QFontMetricsF(font).horizontalAdvance(text);
}

// How high the first bar is filled over its track, in points.
double filledHeight(const QImage& image, int scale)
{
    const int x = 3 * scale / 2;
    const double track = alphaAt(bars({{slot(0.0)}}, scale), x, 9 * scale) / 255.0;
    double sum = 0;
    for (int y = 2 * scale; y < 17 * scale; ++y)
        sum += (alphaAt(image, x, y) / 255.0 - track) / (1 - track);
    return sum / scale;
}

TEST(LabelPainter, aPictureIsNineteenPointsHighAndAsWideAsItsBars)
{
    const Group pair = {slot(10.0), slot(20.0, false, true)};
    const struct {
        std::vector<Group> groups;
        int width;
    } rows[] = {
        {{{slot(10.0)}}, 3},
        {{{slot(10.0)}, {slot(10.0)}}, 9},
        {{pair}, 11},
        {{pair, pair}, 29},
        {{{slot(Dash{})}, pair}, 21},
        {{pair, {}}, 18},
        {{pair, pair, pair, pair}, 65},
    };
    for (const auto& [groups, width] : rows) {
        for (const int scale : scales) {
            const QImage image = bars(groups, scale);
            EXPECT_EQ(image.size(), QSize(width * scale, 19 * scale));
            EXPECT_EQ(image.devicePixelRatio(), scale);
        }
    }
}

TEST(LabelPainter, theTrackIsFainterWhereItIsDimmedOrNothingIsKnown)
{
    const std::pair<Slot, double> rows[] = {
        {slot(0.0), 0.3},           {slot(0.0, true), 0.18},  {slot(Dash{}), 0.3},
        {slot(Dash{}, true), 0.18}, {slot(Ellipsis{}), 0.18}, {slot(Ellipsis{}, true), 0.18},
    };
    for (const auto& [only, share] : rows) {
        for (const int scale : scales) {
            const QImage image = bars({{only}}, scale);
            for (const int y : {3 * scale, 9 * scale, 16 * scale - 1})
                EXPECT_NEAR(alphaAt(image, 3 * scale / 2, y), alpha(share), 1);
        }
    }
}

TEST(LabelPainter, theFillIsBlackAndADimmedOneLiesOverItsTrack)
{
    for (const int scale : scales) {
        EXPECT_EQ(alphaAt(bars({{slot(100.0)}}, scale), scale, 9 * scale), 255);
        EXPECT_NEAR(alphaAt(bars({{slot(100.0, true)}}, scale), scale, 9 * scale),
                    alpha(0.4 + 0.6 * 0.18), 1);
    }
}

TEST(LabelPainter, theFillIsAsHighAsThePercent)
{
    const std::pair<double, double> rows[] = {
        {0, 0},    {-5, 0},     {noNumber, 0}, {-endless, 0}, {0.4, 0.06},
        {1, 0.15}, {50, 7.5},   {62, 9.3},     {99.6, 14.94}, {100, 15},
        {150, 15}, {1e300, 15}, {endless, 15},
    };
    for (const auto& [percent, height] : rows) {
        for (const int scale : scales)
            EXPECT_NEAR(filledHeight(bars({{slot(percent)}}, scale), scale), height, 0.02)
                << percent;
    }
    // From the bottom.
    const QImage half = bars({{slot(50.0)}}, 2);
    EXPECT_EQ(alphaAt(half, 3, 33), 255);
    EXPECT_EQ(alphaAt(half, 3, 19), 255);
    EXPECT_NEAR(alphaAt(half, 3, 18), alpha(0.3), 1);
}

TEST(LabelPainter, theBarsStandOnThePixelsOfTheirPlaces)
{
    const std::vector<Group> groups = {{slot(0.0), slot(0.0, false, true)}, {slot(0.0)}};
    const std::pair<int, int> places[] = {{0, 3}, {6, 11}, {18, 21}}; // from, to
    for (const int scale : scales) {
        const QImage image = bars(groups, scale);
        for (int x = 0; x < image.width(); ++x) {
            bool isInside = false;
            for (const auto& [from, to] : places)
                isInside = isInside || (x >= from * scale && x < to * scale);
            EXPECT_NEAR(alphaAt(image, x, 9 * scale), isInside ? alpha(0.3) : 0, 1) << x;
        }
        EXPECT_EQ(test::inked(image), QRect(0, 2 * scale, 21 * scale, 15 * scale));
    }
}

TEST(LabelPainter, theCornersOfTrackAndFillAreRounded)
{
    for (const int scale : scales) {
        for (const double percent : {0.0, 100.0}) {
            const QImage image = bars({{slot(percent)}}, scale);
            const int whole = alphaAt(image, 3 * scale / 2, 9 * scale);
            const int corner = alphaAt(image, 0, 2 * scale);
            EXPECT_LT(corner, whole);
            EXPECT_GT(corner, whole / 3);
            EXPECT_NEAR(alphaAt(image, 3 * scale - 1, 2 * scale), corner, 2);
            EXPECT_NEAR(alphaAt(image, 0, 17 * scale - 1), corner, 2);
            EXPECT_NEAR(alphaAt(image, 3 * scale - 1, 17 * scale - 1), corner, 2);
        }
    }
}

TEST(LabelPainter, everythingIsBlackWithAlphaAlone)
{
    const std::vector<Group> groups = {{slot(62.0), slot(41.0, true, true)},
                                       {slot(Dash{}, true)},
                                       {slot(Ellipsis{})},
                                       {slot(8.0, true)}};
    for (const int scale : scales) {
        EXPECT_TRUE(test::isBlack(bars(groups, scale)));
        EXPECT_TRUE(test::isBlack(numbers(groups, scale)));
        EXPECT_TRUE(test::isBlack(numbers(groups, scale, true)));
        EXPECT_TRUE(test::isBlack(bars({}, scale)));
    }
}

TEST(LabelPainter, aRowOfNumbersIsAsWideAsItsTextsTheirGapsAndTwoPoints)
{
    const struct {
        std::vector<Group> groups;
        std::vector<QString> texts;
    } rows[] = {
        {{{slot(7.0)}}, {"7"}},
        {{{slot(100.0)}}, {"100"}},
        {{{slot(62.0)}, {slot(8.4)}}, {"62", "8"}},
        {{{slot(62.0), slot(41.0, false, true)}, {slot(3.0)}}, {"62", "41", "3"}},
        {{{slot(Dash{})}, {slot(Ellipsis{})}}, {"–", "…"}},
        {{{slot(62.0)}, {}, {slot(5.0)}}, {"62", "5"}},
    };
    for (const auto& [groups, texts] : rows) {
        double width = 2 + 5.0 * static_cast<double>(texts.size() - 1);
        for (const QString& text : texts)
            width += widthOf(text, 12);
        for (const int scale : scales) {
            EXPECT_EQ(numbers(groups, scale).size(),
                      QSize(static_cast<int>(std::ceil(width)) * scale, 19 * scale))
                << texts[0].toStdString();
        }
    }
}

TEST(LabelPainter, stackedNumbersAreSmallerInColumnsSevenPointsApart)
{
    const std::vector<Group> groups = {{slot(7.0), slot(100.0, false, true)}, {slot(62.0)}};
    const double width = 2 + 7 + widthOf("100", 9) + widthOf("62", 9);
    for (const int scale : scales) {
        EXPECT_EQ(numbers(groups, scale, true).size(),
                  QSize(static_cast<int>(std::ceil(width)) * scale, 19 * scale));
    }
    EXPECT_EQ(numbers({{slot(7.0), slot(9.0)}}, 1, true).width(), std::ceil(2 + widthOf("7", 9)));
}

TEST(LabelPainter, theSessionsNumberStandsOverTheSecondAndALoneOneInTheMiddle)
{
    const int scale = 3;
    const int middle = 19 * scale / 2;
    const QImage over = numbers({{slot(8.0), slot(Dash{})}}, scale, true);
    const QImage under = numbers({{slot(Dash{}), slot(8.0)}}, scale, true);
    const QRect upper = test::inked(over.copy(0, 0, over.width(), middle));
    const QRect lower = test::inked(under.copy(0, middle, under.width(), middle + 1));
    EXPECT_GT(upper.height(), 5 * scale); // the eight; a dash is flat
    EXPECT_GT(lower.height(), 5 * scale);
    const QRect alone = test::inked(numbers({{slot(8.0)}}, scale, true));
    EXPECT_NEAR(alone.center().y(), middle, scale);
    EXPECT_EQ(alone.height(), upper.height());
}

TEST(LabelPainter, aRowOfNumbersStandsInTheMiddleWithItsGaps)
{
    const int scale = 3;
    const QImage image = numbers({{slot(8.0)}, {slot(8.0)}}, scale);
    EXPECT_NEAR(test::inked(image).center().y(), 19 * scale / 2, scale);
    const double digit = widthOf("8", 12);
    const QRect first = test::inked(image.copy(0, 0, image.width() / 2, image.height()));
    EXPECT_GE(first.left(), scale);
    EXPECT_LE(first.right(), (1 + digit) * scale);
    const QRect second =
        test::inked(image.copy(image.width() / 2, 0, image.width() / 2 + 1, image.height()))
            .translated(image.width() / 2, 0);
    EXPECT_NEAR(second.left() - first.left(), (digit + 5) * scale, 1);
}

TEST(LabelPainter, theNextFigureStandsWhereItDidWhateverStandsBeforeIt)
{
    const int scale = 3;
    const QImage one = numbers({{slot(18.0)}}, scale);
    for (int tens = 2; tens < 10; ++tens) {
        const QImage other = numbers({{slot(tens * 10.0 + 8)}}, scale);
        ASSERT_EQ(other.size(), one.size());
        const int from = static_cast<int>(std::floor((1 + widthOf("8", 12)) * scale)) + 1;
        const QRect rest(from, 0, one.width() - from, one.height());
        EXPECT_EQ(other.copy(rest), one.copy(rest)) << tens;
    }
}

TEST(LabelPainter, aDimmedNumberIsFaint)
{
    for (const bool dual : {false, true}) {
        EXPECT_EQ(test::mostAlpha(numbers({{slot(Dash{}, true)}}, 3, dual)), alpha(0.4));
        EXPECT_EQ(test::mostAlpha(numbers({{slot(Dash{})}}, 3, dual)), 255);
    }
    const QImage both = numbers({{slot(88.0)}, {slot(88.0, true)}}, 3);
    EXPECT_EQ(test::mostAlpha(both.copy(0, 0, both.width() / 2, both.height())), 255);
    EXPECT_EQ(
        test::mostAlpha(both.copy(both.width() / 2 + 1, 0, both.width() / 2 - 1, both.height())),
        alpha(0.4));
}

TEST(LabelPainter, anAbsurdNumberStaysNarrow)
{
    for (const double percent : {1e300, 1e6, -1e300, endless}) {
        EXPECT_LE(numbers({{slot(percent)}}, 1).width(), std::ceil(2 + 6 * widthOf("8", 12)));
        EXPECT_LE(numbers({{slot(percent)}}, 1, true).width(), std::ceil(2 + 6 * widthOf("8", 9)));
    }
    EXPECT_EQ(numbers({{slot(1000.0)}}, 1).width(), std::ceil(2 + widthOf("1000", 12)));
}

TEST(LabelPainter, withoutASlotTheProgramsOwnSymbolStandsThere)
{
    for (const std::vector<Group>& groups : {std::vector<Group>(), {{}}, {{}, {}}}) {
        for (const MenuBarMode mode : {MenuBarMode::bars, MenuBarMode::numbers}) {
            const StatusLabel label = painter().label(groups, mode, true);
            EXPECT_TRUE(label.parts.empty());
            EXPECT_EQ(label.iconName, "dev.quorle.vellumor-symbolic");
            for (std::size_t i = 0; i < 3; ++i) {
                const int scale = static_cast<int>(i) + 1;
                EXPECT_EQ(label.whole[i].height(), 19 * scale);
                EXPECT_GT(test::mostAlpha(label.whole[i]), 128);
                EXPECT_TRUE(
                    QRect(QPoint(), label.whole[i].size()).contains(test::inked(label.whole[i])));
            }
        }
    }
}

// Without a plugin that reads it the picture is as good as missing.
TEST(LabelPainter, aSymbolThatCannotBeReadIsAGauge)
{
    for (const int scale : scales) {
        const QImage gauge = LabelPainter::symbol(":/icons/no-such-picture", scale);
        EXPECT_EQ(gauge.height(), 19 * scale);
        EXPECT_EQ(gauge.devicePixelRatio(), scale);
        EXPECT_TRUE(test::isBlack(gauge));
        EXPECT_EQ(test::inked(gauge), QRect(0, 2 * scale, gauge.width(), 15 * scale));
        for (const int bar : {0, 6, 12}) {
            const int middle = bar * scale + 3 * scale / 2;
            EXPECT_EQ(alphaAt(gauge, middle, 15 * scale), 255);
            EXPECT_NEAR(alphaAt(gauge, middle, 3 * scale), alpha(0.3), 1);
        }
    }
}

TEST(LabelPainter, aLabelHasAPictureOfAllAndOneOfEachAtEveryScale)
{
    const std::vector<Group> groups = {{slot(62.0), slot(41.0, false, true)}, {slot(5.0)}};
    const struct {
        MenuBarMode mode;
        bool dual;
    } rows[] = {{MenuBarMode::bars, false},
                {MenuBarMode::bars, true},
                {MenuBarMode::numbers, false},
                {MenuBarMode::numbers, true}};
    for (const auto& [mode, dual] : rows) {
        const StatusLabel label = painter().label(groups, mode, dual);
        EXPECT_EQ(label.iconName, "");
        ASSERT_EQ(label.parts.size(), 2U);
        for (std::size_t i = 0; i < 3; ++i) {
            const int scale = static_cast<int>(i) + 1;
            EXPECT_EQ(label.whole[i].devicePixelRatio(), scale);
            EXPECT_EQ(label.whole[i], painter().image(groups, mode, dual, scale));
            EXPECT_EQ(label.parts[0][i], painter().image({groups[0]}, mode, dual, scale));
            EXPECT_EQ(label.parts[1][i], painter().image({groups[1]}, mode, dual, scale));
        }
    }
}

} // namespace
} // namespace vellumor::labelPainterTest
