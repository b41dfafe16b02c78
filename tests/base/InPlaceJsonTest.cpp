#include "base/InPlaceJson.h"

#include "base/Json.h"

#include <gtest/gtest.h>

#include <string>

namespace vellumor::inPlaceJsonTest {
namespace {

using Found = std::optional<std::string_view>;

// The text under "a", or nothing.
std::optional<std::string> textUnderA(std::string bytes)
{
    const InPlaceJson json(bytes.data(), bytes.size());
    const auto* value = InPlaceJson::find(json.root(), "a");
    const Found text = value == nullptr ? std::nullopt : InPlaceJson::textOf(*value);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

TEST(InPlaceJson, aTextIsDecodedWhereItLies)
{
    std::string bytes = R"({"a": "x\ny\u00e9"})";
    const InPlaceJson json(bytes.data(), bytes.size());
    const auto text = InPlaceJson::textOf(*InPlaceJson::find(json.root(), "a"));
    EXPECT_EQ(text, "x\ny\u00e9");
    EXPECT_EQ(text->data(), bytes.data() + 7);
}

TEST(InPlaceJson, ofARepeatedKeyTheLastCounts)
{
    EXPECT_EQ(textUnderA(R"({"a": "1", "b": "2", "a": "3"})"), "3");
    EXPECT_EQ(textUnderA(R"({"a": "1", "a": null})"), std::nullopt);
    EXPECT_EQ(textUnderA(R"({"a": null, "a": "3"})"), "3");
}

TEST(InPlaceJson, whatIsNoTextAndWhatIsNoObjectGiveNothing)
{
    for (const char* const bytes :
         {"{}", R"({"a": 1})", R"({"a": ["x"]})", R"({"A": "x"})", R"(["a"])", "\"a\"", "null"}) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(textUnderA(bytes), std::nullopt);
    }
    EXPECT_EQ(InPlaceJson::find(nullptr, "a"), nullptr);
}

TEST(InPlaceJson, whatIsNotOneJsonValueHasNoRoot)
{
    const std::string rows[] = {"",
                                " ",
                                "{",
                                R"({"a": "x"} {})",
                                R"({"a": "x",})",
                                std::string("{}\0", 3),
                                "{\"a\": \"\xC3\"}",
                                "{\"a\": \"\xFF\"}",
                                R"({"a": "\uDE00"})",
                                "\xEF\xBB\xBF{}"};
    for (std::string bytes : rows) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(textUnderA(bytes), std::nullopt);
    }
}

TEST(InPlaceJson, halfASurrogatePairIsNoText)
{
    EXPECT_EQ(textUnderA(R"({"a": "\ud83d\ude00"})"), "\U0001F600");
    EXPECT_EQ(textUnderA(R"({"a": "\ud83d"})"), std::nullopt);
}

TEST(InPlaceJson, nestingBeyondTheLimitIsRefused)
{
    for (const int depth : {maxJsonDepth, maxJsonDepth + 1}) {
        const auto levels = static_cast<std::size_t>(depth - 1);
        std::string bytes = R"({"a": )" + std::string(levels, '[') + std::string(levels, ']') + "}";
        const InPlaceJson json(bytes.data(), bytes.size());
        EXPECT_EQ(json.root() != nullptr, depth == maxJsonDepth);
    }
}

TEST(InPlaceJson, aLargeFileIsDecodedToo)
{
    std::string bytes = R"({"many": [)";
    for (int i = 0; i < 100'000; ++i)
        bytes += "[1],";
    bytes += R"(0], "a": "x"})";
    EXPECT_EQ(textUnderA(std::move(bytes)), "x");
}

} // namespace
} // namespace vellumor::inPlaceJsonTest
