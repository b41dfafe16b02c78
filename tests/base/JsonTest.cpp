#include "base/Json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace vellumor::jsonTest {

using namespace std::string_view_literals;

namespace {

std::string nested(int depth, char open, char close)
{
    return std::string(static_cast<std::size_t>(depth), open) +
           std::string(static_cast<std::size_t>(depth), close);
}

} // namespace

TEST(Json, oneValueInValidUtf8IsReadAndAnythingElseIsNot)
{
    struct Row {
        std::string_view bytes;
        bool good;
    };
    const Row rows[] = {
        {"{}", true},
        {" [1, 2] \n", true},
        {"null", true},
        {"\"h\xC3\xA9\"", true},
        {"\"\\ud83d\\ude00\"", true},
        {"", false},
        {" ", false},
        {"{} {}", false},
        {"{}x", false},
        {"{\"a\":1,}", false},
        {"{'a':1}", false},
        {"{\"a\":1", false},
        {"[1,]", false},
        {"// note\n{}", false},
        {"NaN", false},
        {"01", false},
        {"+1", false},
        {".5", false},
        {"1e999", false},
        {"\"\xFF\"", false},
        {"\"\xC3\"", false},
        {"\"\xED\xA0\x80\"", false}, // half of a pair, coded on its own
        {"\"\xC0\xAF\"", false},     // a slash in two bytes
        {"\"\\ud83d\"", false},
        {"\"a\nb\"", false},
        {"{}\xFF", false},
    };
    for (const auto& [bytes, good] : rows) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(parseJson(bytes).has_value(), good);
    }
}

// The parser once took a zero byte for the end of the text, and so half a damaged file for a whole
// one.
TEST(Json, aZeroByteIsNotTheEndOfTheText)
{
    EXPECT_FALSE(parseJson("{}\0"sv));
    EXPECT_FALSE(parseJson("{\"a\":1}\0{\"b\":2}"sv));
    EXPECT_FALSE(parseJson("\"\0\""sv));
    EXPECT_TRUE(parseJson("\"\\u0000\""));
}

TEST(Json, onlyAnObjectIsReadAsAnObject)
{
    EXPECT_TRUE(parseJsonObject("{}"));
    for (const char* bytes : {"[]", "null", "1", "\"{}\"", "true", "{"}) {
        SCOPED_TRACE(bytes);
        EXPECT_FALSE(parseJsonObject(bytes));
    }
}

TEST(Json, sixtyFourLevelsAreReadAndSixtyFiveAreNot)
{
    EXPECT_TRUE(parseJson(nested(64, '[', ']')));
    EXPECT_FALSE(parseJson(nested(65, '[', ']')));
    std::string objects = "1";
    for (int depth = 1; depth <= 65; ++depth) {
        objects.insert(0, "{\"a\":").append("}");
        SCOPED_TRACE(depth);
        EXPECT_EQ(parseJson(objects).has_value(), depth <= 64);
    }
}

TEST(Json, bracesInStringsAreNoLevels)
{
    EXPECT_TRUE(isNestedWithin("[\"[[[{{{\"]", 1));
    EXPECT_TRUE(isNestedWithin("[\"\\\"[[[\"]", 1));
    EXPECT_TRUE(isNestedWithin("[\"\\\\\"]", 1));
    EXPECT_FALSE(isNestedWithin("[\"\\\\\",[]]", 1));
    EXPECT_TRUE(isNestedWithin(R"(["\\\"[[","[[\\\\"])", 1));
    EXPECT_FALSE(isNestedWithin(R"(["\\\\",["[["]])", 1));
    EXPECT_TRUE(isNestedWithin("[\"[[[", 1)); // a string without an end
    EXPECT_TRUE(isNestedWithin("\"", 0));
    EXPECT_TRUE(isNestedWithin("[[],[],[]]", 2));
    EXPECT_FALSE(isNestedWithin("[[],[[]]]", 2));
}

// A tree of many small values takes dozens of times the memory of their bytes.
TEST(Json, aMillionValuesAreReadAndMoreAreNot)
{
    const auto list = [](std::size_t commas) {
        std::string text = "[0";
        for (std::size_t i = 0; i < commas; ++i)
            text += ",0";
        return text + "]";
    };
    EXPECT_TRUE(parseJson(list(maxJsonValues - 1)));
    EXPECT_FALSE(parseJson(list(maxJsonValues)));
    EXPECT_TRUE(hasAtMostValues("[{},1]", 3));
    EXPECT_FALSE(hasAtMostValues("[{},1]", 2));
}

TEST(Json, megabytesOfOpenBracketsAreRefusedWithoutParsing)
{
    EXPECT_FALSE(parseJson(std::string(8U * 1024 * 1024, '[')));
    EXPECT_FALSE(parseJson(std::string(8U * 1024 * 1024, ']') + std::string(1024 * 1024, '[')));
}

TEST(Json, numbersAreWrittenAsShortAsTheyReadBack)
{
    struct Row {
        Json number;
        const char* text;
    };
    const Row rows[] = {
        {42.0, "42"},
        {-42.0, "-42"},
        {0.0, "0"},
        {-0.0, "-0.0"},
        {0.1, "0.1"},
        {42.5, "42.5"},
        {0.1 + 0.2, "0.30000000000000004"},
        {120.0, "120"},
        {1e15, "1000000000000000"},
        {9007199254740992.0, "9007199254740992"},
        {9007199254740994.0, "9.007199254740994e+15"},
        {1e20, "1e+20"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {std::numeric_limits<std::int64_t>::max(), "9223372036854775807"},
    };
    for (const auto& [number, text] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(writeJson(number, JsonLayout::compact), text);
        const auto again = parseJson(text);
        ASSERT_TRUE(again);
        EXPECT_EQ(*again, number);
        EXPECT_EQ(again->get<double>(), number.get<double>());
    }
    EXPECT_TRUE(std::signbit(parseJson("-0.0")->get<double>()));
}

TEST(Json, integersOf64BitsKeepEveryBit)
{
    const std::string text = "[18446744073709551615,18446744073709551614,-9223372036854775808]";
    const auto json = parseJson(text);
    ASSERT_TRUE(json);
    EXPECT_EQ((*json)[0].get<std::uint64_t>(), 18446744073709551615U);
    EXPECT_EQ((*json)[1].get<std::uint64_t>(), 18446744073709551614U);
    EXPECT_EQ(writeJson(*json, JsonLayout::compact), text);
}

TEST(Json, aPrettyFileHasSortedKeysTwoBlanksALevelAndEscapedSlashes)
{
    const Json json = {{"z", 1},
                       {"a", {{"path", "/home/a"}, {"Empty", Json::object()}}},
                       {"B", {1.0, 2.5, nullptr, true}},
                       {"none", Json::array()}};
    EXPECT_EQ(writeJson(json, JsonLayout::pretty), "{\n"
                                                   "  \"B\": [\n"
                                                   "    1,\n"
                                                   "    2.5,\n"
                                                   "    null,\n"
                                                   "    true\n"
                                                   "  ],\n"
                                                   "  \"a\": {\n"
                                                   "    \"Empty\": {},\n"
                                                   "    \"path\": \"\\/home\\/a\"\n"
                                                   "  },\n"
                                                   "  \"none\": [],\n"
                                                   "  \"z\": 1\n"
                                                   "}");
}

TEST(Json, aCompactFileHasNoBlanks)
{
    EXPECT_EQ(writeJson({{"b", {1, 2}}, {"a", "x y"}}, JsonLayout::compact),
              "{\"a\":\"x y\",\"b\":[1,2]}");
}

TEST(Json, slashesAreEscapedInKeysAndValuesUnlessToldOtherwise)
{
    const Json json = {{"/k", "a//b/"}};
    EXPECT_EQ(writeJson(json, JsonLayout::compact), "{\"\\/k\":\"a\\/\\/b\\/\"}");
    EXPECT_EQ(writeJson(json, JsonLayout::compact, JsonSlashes::plain), "{\"/k\":\"a//b/\"}");
    EXPECT_EQ(parseJson(*writeJson(json, JsonLayout::compact)), json);
}

TEST(Json, aBackslashBeforeASlashReadsBackAsItWas)
{
    const Json json = {"\\/", "\\\\/", "\"/\\"};
    EXPECT_EQ(parseJson(*writeJson(json, JsonLayout::compact)), json);
}

TEST(Json, textBeyondAsciiIsWrittenAsItIs)
{
    EXPECT_EQ(writeJson("h\xC3\xA9 \xE2\x82\xAC", JsonLayout::compact),
              "\"h\xC3\xA9 \xE2\x82\xAC\"");
    EXPECT_EQ(writeJson("a\n\x01\"", JsonLayout::compact), "\"a\\n\\u0001\\\"\"");
}

TEST(Json, textThatIsNotUtf8IsNotWritten)
{
    EXPECT_EQ(writeJson({{"a", "\xFF"}}, JsonLayout::pretty), std::nullopt);
    EXPECT_EQ(writeJson(Json{{"\xC3", 1}}, JsonLayout::compact), std::nullopt);
}

} // namespace vellumor::jsonTest
