#include "ui/HistoryChartView.h"

#include "Pictures.h"

#include <gtest/gtest.h>

namespace vellumor::historyChartViewTest {
namespace {

constexpr int width = 100;
constexpr int height = 56;

// What a chart puts on a picture without a ground, one pixel a point.
struct HistoryChartViewTest : testing::Test {
    HistoryChartContent content;
    std::vector<double> days;
    Theme theme = Theme::of(QPalette(Qt::white));

    [[nodiscard]] QImage picture() const
    {
        HistoryChartView view(nullptr);
        view.resize(width, height);
        view.setContent(content, days, theme);
        QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        view.render(&image, {}, {}, QWidget::RenderFlags());
        return image;
    }
    static bool isOf(const QColor& colour, const QImage& image, int x, int y)
    {
        const QColor found = image.pixelColor(x, y);
        return found.alpha() > 100 && std::abs(found.red() - colour.red()) < 12 &&
               std::abs(found.green() - colour.green()) < 12 &&
               std::abs(found.blue() - colour.blue()) < 12;
    }
    // From top to bottom, where the line is in the column `x`.
    [[nodiscard]] std::vector<int> lineAt(const QImage& image, int x) const
    {
        std::vector<int> rows;
        for (int y = 0; y < height; ++y) {
            if (isOf(theme.text, image, x, y))
                rows.push_back(y);
        }
        return rows;
    }
};

TEST_F(HistoryChartViewTest, aPercentLiesBetweenAMarginOfOnePointAtTheTopAndTheBottom)
{
    const std::pair<double, std::vector<int>> rows[] = {
        {100, {0, 1}}, {50, {27, 28}}, {0, {54, 55}}}; // a line two points wide about its middle
    for (const auto& [percent, expected] : rows) {
        content.segments = {{{0, percent}, {1, percent}}};
        EXPECT_EQ(lineAt(picture(), width / 2), expected) << percent;
    }
}

TEST_F(HistoryChartViewTest, theAreaUnderTheLineFadesTowardsTheBottomAndEndsWithIt)
{
    content.segments = {{{0, 100}, {0.5, 100}}};
    const QImage image = picture();
    EXPECT_NEAR(test::alphaAt(image, 20, 4), 0.12 * 255 * (1 - 4.5 / height), 2);
    EXPECT_NEAR(test::alphaAt(image, 20, 28), 0.12 * 255 / 2, 2);
    EXPECT_LE(test::alphaAt(image, 20, height - 1), 2);
    EXPECT_EQ(test::alphaAt(image, 60, 28), 0); // where there is no line there is no area
}

TEST_F(HistoryChartViewTest, theFullLimitIsAFaintLineFromEdgeToEdge)
{
    const QImage image = picture();
    for (const int x : {0, width / 2, width - 1}) {
        const int strength = test::alphaAt(image, x, 0) + test::alphaAt(image, x, 1);
        EXPECT_NEAR(strength, 0.3 * 0.5 * theme.dimmed.alpha(), 4) << x;
        EXPECT_EQ(test::alphaAt(image, x, 2), 0) << x;
    }
}

TEST_F(HistoryChartViewTest, aDayIsAFainterLineOverTheWholePlot)
{
    days = {0.5};
    const QImage image = picture();
    const int strength = test::alphaAt(image, width / 2, 28);
    EXPECT_NEAR(strength, 0.12 * 0.5 * theme.dimmed.alpha(), 3);
    EXPECT_EQ(test::alphaAt(image, width / 2, height - 2), strength);
    EXPECT_EQ(test::alphaAt(image, width / 2, height - 1), 0);
    EXPECT_EQ(test::alphaAt(image, width / 2 + 2, 28), 0);
}

TEST_F(HistoryChartViewTest, aResetIsATickOfFivePointsAtTheBottom)
{
    content.resetTicks = {0.25};
    const QImage image = picture();
    for (int y = 2; y < height; ++y) {
        const bool isInTick = y >= height - 5;
        EXPECT_EQ(test::alphaAt(image, 25, y) > 100, isInTick) << y;
    }
}

} // namespace
} // namespace vellumor::historyChartViewTest
