#include "base/StrictReader.h"

#include "base/Format.h"
#include "base/Json.h"

#include <gtest/gtest.h>

namespace vellumor::strictReaderTest {

TEST(StrictReader, oneTypeIsNeverTakenForAnother)
{
    struct Row {
        const char* json;
        bool isBool;
        bool isInt;
        bool isDouble;
        bool isString;
    };
    const Row rows[] = {
        {"true", true, false, false, false}, {"1", false, true, true, false},
        {"0", false, true, true, false},     {"1.5", false, false, true, false},
        {"2.0", false, true, true, false},   {"\"1\"", false, false, false, true},
        {"\"\"", false, false, false, true}, {"null", false, false, false, false},
        {"[]", false, false, false, false},  {"{}", false, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.json);
        const Json json = Json::parse(row.json);
        EXPECT_EQ(asBool(json).has_value(), row.isBool);
        EXPECT_EQ(asInt(json).has_value(), row.isInt);
        EXPECT_EQ(asDouble(json).has_value(), row.isDouble);
        EXPECT_EQ(asString(json).has_value(), row.isString);
    }
}

TEST(StrictReader, aNumberServesAsAnIntegerWhenItIsIntegralAndFits)
{
    struct Row {
        const char* json;
        std::optional<int> number;
    };
    const Row rows[] = {
        {"2.0", 2},
        {"-7", -7},
        {"1e3", 1000},
        {"2147483647", 2147483647},
        {"2147483648", std::nullopt},
        {"-2147483648", -2147483647 - 1},
        {"-2147483649", std::nullopt},
        {"18446744073709551615", std::nullopt},
        {"18446744073709551614", std::nullopt},
        {"1e300", std::nullopt},
        {"2.5", std::nullopt},
        {"-0.0", 0},
    };
    for (const auto& [json, number] : rows) {
        SCOPED_TRACE(json);
        EXPECT_EQ(asInt(Json::parse(json)), number);
    }
}

TEST(StrictReader, aMissingRequiredKeyOrANullSpoilsTheObject)
{
    for (const char* text : {"{}", R"({"a":null})", R"({"A":1})", "[]", "null", "1"}) {
        SCOPED_TRACE(text);
        const Json json = Json::parse(text);
        StrictReader reader(json);
        int number = 5;
        reader.required("a", number);
        EXPECT_FALSE(reader.good());
        EXPECT_EQ(number, 5);
    }
}

TEST(StrictReader, anAbsentOptionalKeyOrANullLeavesTheDefault)
{
    for (const char* text : {"{}", R"({"a":null})"}) {
        SCOPED_TRACE(text);
        const Json json = Json::parse(text);
        StrictReader reader(json);
        std::string word = "default";
        std::optional<double> number;
        reader.optional("a", word);
        reader.optional("a", number);
        EXPECT_TRUE(reader.good());
        EXPECT_EQ(word, "default");
        EXPECT_EQ(number, std::nullopt);
    }
}

TEST(StrictReader, aWrongTypeSpoilsTheObjectForGood)
{
    const Json json = Json::parse(R"({"word":1,"flag":true})");
    StrictReader reader(json);
    std::string word = "default";
    reader.optional("word", word);
    EXPECT_FALSE(reader.good());
    EXPECT_EQ(word, "default");
    bool flag = false;
    reader.required("flag", flag);
    EXPECT_FALSE(reader.good());
}

TEST(StrictReader, everyTypeIsReadUnderItsKey)
{
    const Json json =
        Json::parse(R"({"b":true,"i":3.0,"d":2.5,"s":"x","t":"2026-03-01T09:30:00Z"})");
    StrictReader reader(json);
    bool flag = false;
    int whole = 0;
    double number = 0;
    std::string word;
    Instant instant{};
    std::optional<bool> maybeFlag;
    std::optional<int> maybeWhole;
    std::optional<double> maybeNumber;
    std::optional<std::string> maybeWord;
    std::optional<Instant> maybeInstant;
    reader.required("b", flag);
    reader.required("i", whole);
    reader.required("d", number);
    reader.required("s", word);
    reader.required("t", instant, Format::parseISO8601);
    reader.optional("b", maybeFlag);
    reader.optional("i", maybeWhole);
    reader.optional("d", maybeNumber);
    reader.optional("s", maybeWord);
    reader.optional("t", maybeInstant, Format::parseISO8601);
    EXPECT_TRUE(reader.good());
    EXPECT_TRUE(flag && whole == 3 && number == 2.5 && word == "x");
    EXPECT_EQ(Format::isoWholeSeconds(instant), "2026-03-01T09:30:00Z");
    EXPECT_TRUE(maybeFlag == true && maybeWhole == 3 && maybeNumber == 2.5 && maybeWord == "x");
    EXPECT_EQ(maybeInstant, instant);
}

TEST(StrictReader, aBadDateSpoilsTheObjectWhetherItIsRequiredOrNot)
{
    for (const char* text : {R"({"t":"yesterday"})", R"({"t":""})", R"({"t":1772357400})"}) {
        SCOPED_TRACE(text);
        const Json json = Json::parse(text);
        StrictReader required(json);
        Instant instant{};
        required.required("t", instant, Format::parseISO8601);
        EXPECT_FALSE(required.good());
        StrictReader optional(json);
        std::optional<Instant> maybe;
        optional.optional("t", maybe, Format::parseISO8601);
        EXPECT_FALSE(optional.good());
        EXPECT_EQ(maybe, std::nullopt);
    }
}

TEST(StrictReader, anAbsentDateIsNoFault)
{
    const Json json = Json::parse(R"({"t":null})");
    StrictReader reader(json);
    std::optional<Instant> maybe;
    reader.optional("t", maybe, Format::parseISO8601);
    EXPECT_TRUE(reader.good());
    Instant instant{};
    reader.required("t", instant, Format::parseISO8601);
    EXPECT_FALSE(reader.good());
}

} // namespace vellumor::strictReaderTest
