#include "ui/PlainText.h"

#include "ui/Pictures.h"

#include <QAccessible>

#include <gtest/gtest.h>

namespace vellumor::plainTextTest {
namespace {

const std::string sentence = "Sign-in expired — sign in to this account in Claude Code";
const std::string endless(300, 'm');

int lineHeight(const PlainText& text)
{
    return QFontMetrics(text.font()).height();
}

// How many lines it takes at this width.
int linesAt(const PlainText& text, int width)
{
    return text.heightForWidth(width) / lineHeight(text);
}

QString tipAt(PlainText& text, int width)
{
    text.resize(width, text.hasHeightForWidth() ? text.heightForWidth(width) : lineHeight(text));
    (void)text.grab(); // a hidden widget learns of its new size when it is drawn
    return text.toolTip();
}

QImage drawn(PlainText& text, int width)
{
    (void)tipAt(text, width);
    QImage image(text.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    text.render(&image, {}, {}, QWidget::RenderFlags());
    return image;
}

TEST(PlainText, aTextThatFitsHasNoTooltip)
{
    PlainText text(nullptr);
    text.setPlainText("ada");
    EXPECT_EQ(tipAt(text, text.sizeHint().width()), "");
    EXPECT_EQ(tipAt(text, 4000), "");
    text.setPlainText("");
    EXPECT_EQ(tipAt(text, 10), "");
}

// "Peak 37% · Wed 18:51 ·" and "At least 1 reset seen", not "… At least 1 reset" and "seen".
TEST(PlainText, aLineEndsBetweenPartsRatherThanWithinOne)
{
    const std::string parts = "aaaa aaaa · bbbb bbbb";
    PlainText text(nullptr, 2);
    text.setPlainText(parts);
    PlainText first(nullptr);
    first.setPlainText("aaaa aaaa · bbbb");
    const int width = first.sizeHint().width() + 2; // one word more would not fit
    ASSERT_EQ(linesAt(text, width), 2);
    const QImage picture = drawn(text, width);
    text.setPlainText("aaaa aaaa · bbbbbbbb"); // breaks there in any case
    const QImage begin = drawn(text, width).copy(0, 0, width, lineHeight(text));
    EXPECT_EQ(picture.copy(0, 0, width, lineHeight(text)), begin);
    text.setPlainText(parts);
    EXPECT_EQ(text.text().toStdString(), parts);
}

// Four parts of which any two fit on a line take two lines, and three where whole parts take three.
TEST(PlainText, wholePartsCostNoWord)
{
    PlainText text(nullptr, 2);
    text.setPlainText("aaaa · bbbb bbbb bbbb · cccc cccc");
    PlainText half(nullptr);
    half.setPlainText("aaaa · bbbb bbbb bb");
    EXPECT_EQ(tipAt(text, half.sizeHint().width()), "");
}

TEST(PlainText, aTextThatIsCutOffIsWholeInItsTooltip)
{
    PlainText text(nullptr);
    text.setPlainText(sentence);
    const QString whole = QStringLiteral("<span>%1</span>").arg(QString::fromStdString(sentence));
    EXPECT_EQ(tipAt(text, 100), whole);
    EXPECT_EQ(tipAt(text, 4000), "");
    EXPECT_EQ(tipAt(text, 100), whole);
    text.setPlainText("ada");
    EXPECT_EQ(text.toolTip(), "");
    text.setPlainText(sentence);
    EXPECT_EQ(text.toolTip(), whole);
}

TEST(PlainText, whatIsCutOffEndsInAnEllipsis)
{
    PlainText cut(nullptr);
    cut.setPlainText(sentence);
    PlainText whole(nullptr);
    const int width = 120;
    const QString shown = QFontMetrics(cut.font()).elidedText(cut.text(), Qt::ElideRight, width);
    ASSERT_TRUE(shown.endsWith(QChar(0x2026)));
    whole.setPlainText(shown.toStdString());
    EXPECT_EQ(drawn(cut, width), drawn(whole, width));
    EXPECT_FALSE(test::inked(drawn(cut, width)).isNull());
}

TEST(PlainText, itBreaksIntoAsManyLinesAsItMayAndNoMore)
{
    const struct {
        int mostLines;
        int width;
        int lines;
        bool isCut;
    } rows[] = {
        {1, 4000, 1, false}, {1, 150, 1, true}, {3, 4000, 1, false},
        {3, 250, 2, false},  {3, 60, 3, true},  {2, 60, 2, true},
    };
    for (const auto& [mostLines, width, lines, isCut] : rows) {
        SCOPED_TRACE(testing::Message() << mostLines << " at " << width);
        PlainText text(nullptr, mostLines);
        text.setPlainText(sentence);
        EXPECT_EQ(linesAt(text, width), lines);
        EXPECT_EQ(!tipAt(text, width).isEmpty(), isCut);
    }
}

TEST(PlainText, aTextWithoutABlankBreaksToo)
{
    PlainText text(nullptr, 3);
    text.setPlainText(endless);
    EXPECT_EQ(linesAt(text, 322), 3);
    EXPECT_TRUE(tipAt(text, 322).contains(QString::fromStdString(endless)));
    EXPECT_EQ(linesAt(text, 30000), 1);
    PlainText one(nullptr);
    one.setPlainText(endless);
    EXPECT_EQ(one.minimumSizeHint().width(), 0); // its place is never widened
    EXPECT_EQ(one.sizeHint().height(), lineHeight(one));
    EXPECT_TRUE(tipAt(one, 322).contains(QString::fromStdString(endless)));
}

TEST(PlainText, eachLineThatItTakesIsDrawn)
{
    PlainText text(nullptr, 3);
    text.setPlainText(sentence);
    const int width = 250;
    ASSERT_EQ(linesAt(text, width), 2);
    const QImage image = drawn(text, width);
    const int line = lineHeight(text);
    EXPECT_FALSE(test::inked(image.copy(0, 0, width, line)).isNull());
    EXPECT_FALSE(test::inked(image.copy(0, line, width, line)).isNull());
}

TEST(PlainText, markupStaysText)
{
    for (const std::string& markup :
         {std::string("<b>bold</b>"), std::string("<img src='x'>"), std::string("a &amp; b"),
          std::string("<html><a href=\"http://example.org\">x</a>")}) {
        PlainText text(nullptr);
        text.setPlainText(markup);
        const QString whole = QString::fromStdString(markup);
        EXPECT_EQ(text.text(), whole);
        EXPECT_EQ(text.sizeHint().width(), QFontMetrics(text.font()).horizontalAdvance(whole) + 1);
        EXPECT_EQ(tipAt(text, 20), "<span>" + whole.toHtmlEscaped() + "</span>");
        EXPECT_EQ(text.textFormat(), Qt::PlainText);
    }
}

TEST(PlainText, lineFeedsAndTabsBecomeBlanks)
{
    PlainText text(nullptr, 3);
    text.setPlainText("one\ntwo\r\n\tthree\u2028four\n");
    EXPECT_EQ(text.text(), "one two three four");
    EXPECT_EQ(linesAt(text, 4000), 1);
}

TEST(PlainText, otherScriptsAndEmojiKeepToTheirPlace)
{
    std::string hebrew;
    std::string family;
    for (int i = 0; i < 40; ++i) {
        hebrew += "שלום ";
        family += "👩‍👩‍👧‍👦";
    }
    for (const std::string& each : {hebrew, family, std::string("\u202Eevil\u202C") + sentence}) {
        for (const int mostLines : {1, 3}) {
            PlainText text(nullptr, mostLines);
            text.setPlainText(each);
            EXPECT_LE(linesAt(text, 120), mostLines);
            EXPECT_GE(linesAt(text, 120), 1);
            const QString tip = tipAt(text, 120);
            EXPECT_TRUE(tip.contains(QString::fromStdString(each).simplified()));
            EXPECT_FALSE(drawn(text, 120).isNull());
        }
    }
}

TEST(PlainText, itsHeightGrowsWithItsLines)
{
    PlainText text(nullptr, 3);
    text.setPlainText(sentence);
    EXPECT_TRUE(text.hasHeightForWidth());
    int before = text.heightForWidth(4000);
    EXPECT_EQ(before, lineHeight(text));
    for (const int width : {300, 200, 100, 50, 10}) {
        EXPECT_GE(text.heightForWidth(width), before);
        before = text.heightForWidth(width);
    }
    EXPECT_EQ(before, 3 * lineHeight(text));
    EXPECT_FALSE(PlainText(nullptr).hasHeightForWidth());
    text.setPlainText("");
    EXPECT_EQ(text.heightForWidth(100), lineHeight(text));
}

TEST(PlainText, theColourIsTheOneSet)
{
    PlainText text(nullptr);
    text.setPlainText("████");
    text.setColour(QColor(200, 30, 90));
    const QImage image = drawn(text, 40);
    const QPoint middle = test::inked(image).center();
    EXPECT_EQ(image.pixelColor(middle), QColor(200, 30, 90));
}

TEST(PlainText, toAScreenReaderItIsALabelWithItsWholeText)
{
    PlainText text(nullptr);
    text.setPlainText(sentence);
    text.resize(50, 20);
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&text);
    ASSERT_NE(seen, nullptr);
    EXPECT_EQ(seen->role(), QAccessible::StaticText);
    EXPECT_EQ(seen->text(QAccessible::Name), QString::fromStdString(sentence));
}

} // namespace
} // namespace vellumor::plainTextTest
