#include "base/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace vellumor {

using namespace std::string_view_literals;

TEST(Text, onlyWellFormedUtf8IsValid)
{
    struct Row {
        std::string_view text;
        bool valid;
    };
    const Row rows[] = {
        {"", true},
        {"abc", true},
        {"\0"sv, true},
        {"\xC3\xA9", true},
        {"\xF0\x9F\x98\x80", true},
        {"\xEF\xBF\xBF", true}, // a noncharacter is a code point all the same
        {"\x80", false},
        {"\xC3", false},
        {"\xC3\x28", false},
        {"\xC0\xAF", false},
        {"\xE0\x80\x80", false},
        {"\xED\xA0\x80", false},
        {"\xF4\x90\x80\x80", false},
        {"\xF8\x88\x80\x80\x80", false},
        {"ok\xFF", false},
    };
    for (const auto& [text, valid] : rows) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_EQ(Text::isValidUtf8(text), valid);
    }
}

TEST(Text, decomposedTextIsComposed)
{
    EXPECT_EQ(Text::composed("jose\xCC\x81"), "jos\xC3\xA9");
    EXPECT_EQ(Text::composed("jos\xC3\xA9"), "jos\xC3\xA9");
    EXPECT_EQ(Text::composed("plain"), "plain");
    EXPECT_EQ(Text::composed(""), "");
    EXPECT_EQ(Text::composed("\xE2\x84\xAB"), "\xC3\x85");                 // the Angstrom sign
    EXPECT_EQ(Text::composed("\xE1\x84\x80\xE1\x85\xA1"), "\xEA\xB0\x80"); // a Hangul syllable
    EXPECT_EQ(Text::composed("q\xCC\x87\xCC\xA3"), "q\xCC\xA3\xCC\x87");   // marks in their order
}

TEST(Text, compatibilityFormsAreNotComposedAway)
{
    EXPECT_EQ(Text::composed("\xEF\xAC\x81"), "\xEF\xAC\x81"); // the ligature fi
}

TEST(Text, whatIsNotUtf8IsComposedToItself)
{
    EXPECT_EQ(Text::composed("e\xCC\x81\xFF"), "e\xCC\x81\xFF");
}

TEST(Text, whiteSpaceAndLineEndsGoAtBothEndsAndNowhereElse)
{
    struct Row {
        std::string_view text;
        std::string_view trimmed;
    };
    const Row rows[] = {
        {"", ""},
        {" ", ""},
        {"\t\r\n\v\f ", ""},
        {"a", "a"},
        {"  a b\n c \n", "a b\n c"},
        {"\xC2\xA0"
         "a\xC2\xA0",
         "a"},
        {"\xE2\x80\xA8"
         "a\xE2\x80\xA9",
         "a"},
        {"\xC2\x85"
         "a\xC2\x85",
         "a"},
        {"\xE3\x80\x80"
         "a",
         "a"},
        {"\0a"sv, "\0a"sv},
        {" \xFF ", "\xFF"},
        {"a\xC2\xA0\xC2", "a\xC2\xA0\xC2"}, // a cut character at the end
        {"a\x80\x80 ", "a\x80\x80"},
        {"\xE1\xC2\x85", "\xE1"},
        {"\x80", "\x80"},
    };
    for (const auto& [text, trimmed] : rows) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_EQ(Text::trimmed(text), trimmed);
    }
}

TEST(Text, aWordBeginsAtTheStartAndBehindWhatIsNeitherLetterNorDigit)
{
    struct Row {
        const char* text;
        const char* capitalised;
    };
    const Row rows[] = {
        {"", ""},
        {"work", "Work"},
        {"WORK", "Work"},
        {"side-project", "Side-Project"},
        {"my_team.eu", "My_Team.Eu"},
        {"o'neil", "O'Neil"},
        {"3rd place", "3rd Place"},
        {"a1b c", "A1b C"},
        {"élan VITAL", "Élan Vital"},
        {"жук-ОСА", "Жук-Оса"},
        {"--x", "--X"},
    };
    for (const auto& [text, capitalised] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Text::capitalised(text), capitalised);
    }
}

TEST(Text, onlyTheFirstCharacterIsPutInUpperCase)
{
    EXPECT_EQ(Text::withUpperFirst("max tier x"), "Max tier x");
    EXPECT_EQ(Text::withUpperFirst("oPUS"), "OPUS");
    EXPECT_EQ(Text::withUpperFirst("élan"), "Élan");
    EXPECT_EQ(Text::withUpperFirst("4x"), "4x");
    EXPECT_EQ(Text::withUpperFirst(""), "");
    EXPECT_EQ(Text::withUpperFirst("\xFFx"), "\xFFx");
}

TEST(Text, lengthCountsCodePointsAndBytesWhereTheTextIsBroken)
{
    EXPECT_EQ(Text::length(""), 0U);
    EXPECT_EQ(Text::length("abc"), 3U);
    EXPECT_EQ(Text::length("héé"), 3U);
    EXPECT_EQ(Text::length("\xF0\x9F\x98\x80"), 1U);
    EXPECT_EQ(Text::length("e\xCC\x81"), 2U);
    EXPECT_EQ(Text::length("a\xFF\xFE"), 3U);
}

TEST(Text, whatCouldMoveTheCursorIsReplaced)
{
    struct Row {
        std::string_view text;
        std::string_view printable;
    };
    const Row rows[] = {
        {"", ""},
        {"plain é 東京 😀", "plain é 東京 😀"},
        {"a\nb", "a\uFFFDb"},
        {"a\0b"sv, "a\uFFFDb"},
        {"\x1B[31m", "\uFFFD[31m"},
        {"\x7F", "\uFFFD"},
        {"\xC2\x9B", "\uFFFD"},
        {"\xE2\x80\xA8\xE2\x80\xA9", "\uFFFD\uFFFD"},
        {"\xE2\x80\xAA\xE2\x80\xAE", "\uFFFD\uFFFD"},
        {"\xE2\x81\xA6\xE2\x81\xA9", "\uFFFD\uFFFD"},
        {"\xFF\xC3", "\uFFFD\uFFFD"},
    };
    for (const auto& [text, printable] : rows) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_EQ(Text::printable(text), printable);
    }
}

TEST(Text, everyOccurrenceIsReplacedOnceFromTheFront)
{
    EXPECT_EQ(Text::replaced("a.b.c", ".", "--"), "a--b--c");
    EXPECT_EQ(Text::replaced("aaaa", "aa", "a"), "aa");
    EXPECT_EQ(Text::replaced("abc", "x", "y"), "abc");
    EXPECT_EQ(Text::replaced("abc", "", "y"), "abc");
    EXPECT_EQ(Text::replaced(".claude-", ".claude-", ""), "");
    EXPECT_EQ(Text::replaced("x", "x", "xx"), "xx");
}

} // namespace vellumor
