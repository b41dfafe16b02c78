#include "ui/HistoryDetailView.h"

#include "ui/Accessibility.h"
#include "ui/PlainText.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <algorithm>

namespace vellumor::historyDetailViewTest {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* chartName = "Seven-day history chart";
constexpr const char* stripName = "Coverage: watched versus dark time";
constexpr const char* tooLittle = "Not enough history yet — collecting";

HistoryChartContent chart(const std::string& title, bool hasLine = true)
{
    HistoryChartContent chart;
    chart.kind = chart.title = title;
    if (hasLine) {
        chart.segments = {{{0.2, 10}, {0.4, 90}}, {{0.6, 20}, {0.8, 50}}};
        chart.resetTicks = {0.6};
    }
    return chart;
}

HistoryContent fullContent()
{
    HistoryContent content;
    content.name = "ada";
    content.charts = {chart("Weekly"), chart("Weekly (Opus)", false)};
    content.dayBoundaries = {0.1, 0.5};
    content.strip = {{0.25, 0.75}};
    content.coverage = "Watched ~50% of the last 7 days";
    content.facts = {{"Session:", "Peak 93% · Fri 4:30 PM"}, {"Weekly:", "Peak 71% · Sat 1:05 AM"}};
    content.receipt = {
        "Last week · Nov 7 – Nov 14",
        "Watched ~87% of the week",
        {{"Session:", "Peak 99% · Sat 4:30 PM"}, {"Weekly:", "Peak 70% · Sun 4:30 PM"}},
        "Weekly peak 70% vs 22% the week before",
        "the whole summary"};
    return content;
}

HistoryContent emptyContent()
{
    HistoryContent content;
    content.name = "ada";
    content.charts = {chart("Weekly", false)};
    content.coverage = "Watched ~0% of the last 7 days";
    content.receipt.title = "No weekly receipt yet";
    return content;
}

struct HistoryDetailViewTest : testing::Test {
    Texts pressed;
    PopoverMetrics metrics = PopoverMetrics::of(QApplication::font());
    Theme theme = Theme::of(QApplication::palette());
    QWidget window;
    HistoryDetailView* view = new HistoryDetailView(
        metrics,
        {.back = [this] { pressed.emplace_back("back"); },
         .copy = [this](const std::string& text) { pressed.push_back("copy " + text); },
         .exportAs = [this](const std::string& kind) { pressed.push_back("export " + kind); }},
        &window);

    static void SetUpTestSuite() { Accessibility::install(); }

    HistoryDetailViewTest()
    {
        auto* const column = new QVBoxLayout(&window);
        column->setContentsMargins(0, 0, 0, 0);
        column->addWidget(view);
        window.setFixedWidth(metrics.contentWidth());
    }
    void show(const HistoryContent& content)
    {
        view->setContent(content, theme);
        window.show();
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
        window.resize(window.width(), window.heightForWidth(window.width()));
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
    }
    [[nodiscard]] QPoint placeOf(const QWidget* widget) const
    {
        return widget->mapTo(&window, QPoint());
    }
    // Those that are shown, from top to bottom and from left to right.
    template <typename Widget>
    [[nodiscard]] std::vector<Widget*> shown() const
    {
        std::vector<Widget*> found;
        for (auto* const widget : view->findChildren<Widget*>()) {
            if (widget->isVisible())
                found.push_back(widget);
        }
        std::ranges::stable_sort(found, {}, [this](const Widget* widget) {
            return std::pair(placeOf(widget).y(), placeOf(widget).x());
        });
        return found;
    }
    [[nodiscard]] Texts texts() const
    {
        Texts texts;
        for (const PlainText* text : shown<PlainText>())
            texts.push_back(text->text().toStdString());
        return texts;
    }
    [[nodiscard]] static std::string nameOf(QWidget* widget)
    {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString();
    }
    template <typename Widget>
    [[nodiscard]] Texts names() const
    {
        Texts names;
        for (Widget* widget : shown<Widget>())
            names.push_back(nameOf(widget));
        return names;
    }
    [[nodiscard]] std::vector<QWidget*> named(const char* name) const
    {
        std::vector<QWidget*> found = shown<QWidget>();
        std::erase_if(found, [&](QWidget* widget) { return nameOf(widget) != name; });
        return found;
    }
    void expectEverythingInside() const
    {
        EXPECT_EQ(view->width(), metrics.contentWidth());
        for (const QWidget* widget : shown<QWidget>()) {
            EXPECT_GE(placeOf(widget).x(), 0) << widget->metaObject()->className();
            EXPECT_LE(placeOf(widget).x() + widget->width(), window.width())
                << widget->metaObject()->className();
            EXPECT_GT(widget->width(), 0) << widget->metaObject()->className();
        }
    }
};

TEST_F(HistoryDetailViewTest, everythingStandsInItsOrder)
{
    show(fullContent());
    EXPECT_EQ(texts(),
              (Texts{"ada", "History", "Weekly", "Weekly (Opus)", tooLittle,
                     "Watched ~50% of the last 7 days", "Session:", "Peak 93% · Fri 4:30 PM",
                     "Weekly:", "Peak 71% · Sat 1:05 AM", "Last week · Nov 7 – Nov 14",
                     "Watched ~87% of the week", "Session:", "Peak 99% · Sat 4:30 PM", "Weekly:",
                     "Peak 70% · Sun 4:30 PM", "Weekly peak 70% vs 22% the week before"}));
    const auto y = [&](const char* name) { return placeOf(named(name).at(0)).y(); };
    EXPECT_LT(y("Weekly"), y(chartName));
    EXPECT_LT(y(chartName), y("Weekly (Opus)"));
    EXPECT_LT(y(tooLittle), y(stripName));
    EXPECT_LT(y(stripName), y("Watched ~50% of the last 7 days"));
}

TEST_F(HistoryDetailViewTest, whatIsDrawnHasANameAndAKind)
{
    show(fullContent());
    const auto charts = named(chartName);
    ASSERT_EQ(charts.size(), 1U);
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(charts[0]);
    EXPECT_EQ(seen->role(), QAccessible::Chart);
    EXPECT_EQ(seen->text(QAccessible::Description), "Weekly");
    EXPECT_EQ(charts[0]->height(), 56);
    const auto strips = named(stripName);
    ASSERT_EQ(strips.size(), 1U);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(strips[0])->role(), QAccessible::Graphic);
}

TEST_F(HistoryDetailViewTest, theStripIsFilledWhereItWasWatched)
{
    show(fullContent());
    QWidget* const strip = named(stripName).at(0);
    const QImage image = strip->grab().toImage();
    const auto at = [&](double x) {
        return image.pixelColor(static_cast<int>(x * image.width()), image.height() / 2);
    };
    EXPECT_NE(at(0.5), at(0.1));
    EXPECT_EQ(at(0.3), at(0.7));
    EXPECT_EQ(at(0.1), at(0.9));
}

// Each stretch is a line of its own.
TEST_F(HistoryDetailViewTest, whereNothingWasWatchedThereIsNoLine)
{
    HistoryContent content = fullContent();
    content.dayBoundaries.clear();
    show(content);
    const QImage image = named(chartName).at(0)->grab().toImage();
    const auto isEmptyAt = [&](double x) {
        const int column = static_cast<int>(x * image.width());
        const QColor ground = image.pixelColor(column, 4);
        for (int y = 4; y < image.height(); ++y) {
            if (image.pixelColor(column, y) != ground)
                return false;
        }
        return true;
    };
    EXPECT_FALSE(isEmptyAt(0.3));
    EXPECT_TRUE(isEmptyAt(0.5));
    EXPECT_FALSE(isEmptyAt(0.7));
    EXPECT_TRUE(isEmptyAt(0.1));
}

TEST_F(HistoryDetailViewTest, eachButtonSaysWhatWasPressed)
{
    show(fullContent());
    EXPECT_EQ(names<QAbstractButton>(),
              (Texts{"Back", "Copy summary", "Export CSV", "Export JSON"}));
    for (QAbstractButton* button : shown<QAbstractButton>())
        button->click();
    EXPECT_EQ(pressed, (Texts{"back", "copy the whole summary", "export csv", "export json"}));
    const auto buttons = shown<QAbstractButton>();
    EXPECT_TRUE(buttons[0]->toolTip().contains("Back to all accounts"));
    EXPECT_TRUE(buttons[1]->toolTip().contains("Copy this week's summary as text"));
}

TEST_F(HistoryDetailViewTest, theTabKeyGoesFromTopToBottom)
{
    show(fullContent());
    const auto shownNow = shown<QAbstractButton>();
    const std::vector<QWidget*> buttons(shownNow.begin(), shownNow.end());
    std::vector<QWidget*> chain;
    for (QWidget* next = view->nextInFocusChain(); next != view; next = next->nextInFocusChain()) {
        if (next->isVisible() && (next->focusPolicy() & Qt::TabFocus) != 0)
            chain.push_back(next);
    }
    EXPECT_EQ(chain, buttons);
}

TEST_F(HistoryDetailViewTest, anEmptyHistorySaysSoAndHasNothingToCopy)
{
    show(emptyContent());
    EXPECT_EQ(texts(), (Texts{"ada", "History", "Weekly", tooLittle,
                              "Watched ~0% of the last 7 days", "No weekly receipt yet"}));
    EXPECT_EQ(named(chartName).size(), 0U);
    EXPECT_EQ(named(stripName).size(), 1U);
    EXPECT_EQ(names<QAbstractButton>(), (Texts{"Back", "Export CSV", "Export JSON"}));
}

TEST_F(HistoryDetailViewTest, whatIsGoneIsNotShownAnyMore)
{
    show(emptyContent());
    const Texts before = texts();
    const int height = window.height();
    show(fullContent());
    EXPECT_GT(window.height(), height);
    show(emptyContent());
    EXPECT_EQ(texts(), before);
    EXPECT_EQ(window.height(), height);
}

TEST_F(HistoryDetailViewTest, longNamesStayInside)
{
    const std::string endless(300, 'm');
    HistoryContent content = fullContent();
    content.name = content.coverage = endless;
    content.charts = {chart(endless), chart(endless, false)};
    content.facts = {{endless, endless}, {"Weekly:", endless}, {endless, "Peak 93%"}};
    content.receipt = {endless, endless, {{endless, endless}}, endless, endless};
    show(content);
    expectEverythingInside();
    for (const PlainText* text : shown<PlainText>()) {
        if (text->text().toStdString() == endless) {
            EXPECT_TRUE(text->toolTip().contains("mmm"));
        }
    }
}

TEST_F(HistoryDetailViewTest, aUsualFactIsShownAsAWhole)
{
    HistoryContent content = fullContent();
    content.facts = {{"Weekly (Opus):", "Peak 100% · Wed 12:30 PM · At least 2 resets seen"}};
    content.receipt.rows.clear();
    show(content);
    int facts = 0;
    for (const PlainText* text : shown<PlainText>()) {
        if (!text->text().startsWith("Peak") && text->text() != "Weekly (Opus):")
            continue;
        ++facts;
        EXPECT_EQ(text->toolTip().toStdString(), "") << text->width(); // it has what is cut off
        EXPECT_EQ(text->height(), text->heightForWidth(text->width()));
    }
    EXPECT_EQ(facts, 2);
}

// They are read down as well as across.
TEST_F(HistoryDetailViewTest, theFactsOfBothBlocksBeginAtOnePlace)
{
    HistoryContent content = fullContent();
    content.facts[0].title = "Weekly (Sonnet):";
    for (const std::string& title : {std::string("Session:"), std::string(300, 'm')}) {
        content.receipt.rows[0].title = title;
        show(content);
        std::vector<int> places;
        for (const PlainText* text : shown<PlainText>()) {
            if (text->text().startsWith("Peak"))
                places.push_back(placeOf(text).x());
        }
        ASSERT_EQ(places.size(), 4U);
        EXPECT_EQ(std::ranges::count(places, places[0]), 4) << title;
        EXPECT_GT(places[0], 0);
    }
}

TEST_F(HistoryDetailViewTest, copyingBelongsToTheReceiptAndTheExportsStandAlone)
{
    show(fullContent());
    const auto box = [&](const char* name) {
        return QRect(placeOf(named(name).at(0)), named(name).at(0)->size());
    };
    EXPECT_GT(box("Copy summary").top(), box("Weekly peak 70% vs 22% the week before").bottom());
    EXPECT_GT(box("Export CSV").top(), box("Copy summary").bottom());
    EXPECT_EQ(box("Export CSV").top(), box("Export JSON").top());
    EXPECT_EQ(box("Export CSV").left(), box("Copy summary").left());
}

TEST_F(HistoryDetailViewTest, enterPressesAButtonToo)
{
    show(fullContent());
    for (QAbstractButton* button : shown<QAbstractButton>()) {
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &enter);
    }
    EXPECT_EQ(pressed, (Texts{"back", "copy the whole summary", "export csv", "export json"}));
}

TEST_F(HistoryDetailViewTest, markupInANameStaysText)
{
    HistoryContent content = emptyContent();
    content.name = "<b>ada</b>";
    content.charts = {chart("<i>" + std::string(60, 'x') + "</i>", false)};
    show(content);
    EXPECT_EQ(texts().at(0), "<b>ada</b>");
    EXPECT_TRUE(shown<PlainText>().at(2)->toolTip().contains("&lt;i&gt;xxx"));
}

} // namespace
} // namespace vellumor::historyDetailViewTest
