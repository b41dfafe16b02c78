#include "usage/model/Usage.h"

#include "base/Json.h"
#include "base/Sha256.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::usageTest {

using test::instant;

namespace {

const Instant now = instant("2026-03-01T09:30:00Z");

Usage decoded(std::string_view bytes,
              SuppressedKinds::Digests suppressed = SharedLists::suppressedKindHashes)
{
    const auto result = Usage::decode(bytes, now, suppressed);
    const auto* usage = std::get_if<Usage>(&result);
    if (usage != nullptr)
        return *usage;
    ADD_FAILURE() << std::get<Usage::DecodeError>(result).description;
    return {};
}

std::vector<std::string> kindsOf(const std::vector<LimitWindow>& windows)
{
    std::vector<std::string> kinds;
    for (const LimitWindow& window : windows)
        kinds.push_back(window.kind);
    return kinds;
}

using Kinds = std::vector<std::string>;

} // namespace

TEST(Usage, anEmptyObjectIsAReadingWithoutWindows)
{
    const Usage usage = decoded("{}");
    EXPECT_TRUE(usage.windows.empty());
    EXPECT_EQ(usage.extraUsage, std::nullopt);
    EXPECT_EQ(usage.fetchedAt, now);
}

TEST(Usage, onlyABodyThatIsNoJsonObjectIsAnErrorWhichDoesNotQuoteIt)
{
    for (const char* bytes : {"[]", "null", "", "1", "\"private\"", "<html>private</html>",
                              "{\"limits\":[}", "{} private", "{\"limits\":\"\xFF\"}"}) {
        SCOPED_TRACE(bytes);
        const auto result = Usage::decode(bytes, now);
        const auto* error = std::get_if<Usage::DecodeError>(&result);
        ASSERT_NE(error, nullptr);
        EXPECT_FALSE(error->description.empty());
        EXPECT_EQ(error->description.find("private"), std::string::npos);
    }
}

TEST(Usage, sixtyFourLevelsAreReadAndSixtyFiveAreAnError)
{
    const auto body = [](std::size_t levels) {
        return "{\"x\":" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
    };
    EXPECT_TRUE(std::holds_alternative<Usage>(Usage::decode(body(64), now)));
    EXPECT_TRUE(std::holds_alternative<Usage::DecodeError>(Usage::decode(body(65), now)));
}

TEST(Usage, aRowOfThePresentShapeIsKeptAsItIs)
{
    const Usage usage = decoded(R"({"limits":[{"kind":"weekly_scoped","group":"weekly",
        "percent":137.25,"severity":"critical","resets_at":"2026-03-04T10:00:00.123456+00:00",
        "is_active":true,"scope":{"model":{"display_name":"Opus"}}}]})");
    ASSERT_EQ(usage.windows.size(), 1U);
    EXPECT_EQ(usage.windows[0],
              (LimitWindow{"weekly_scoped", "weekly", 137.25, "critical",
                           instant("2026-03-04T10:00:00.123456Z"), true, "Opus"}));
}

TEST(Usage, aRowWithNothingInItHasDefaults)
{
    const Usage usage = decoded(R"({"limits":[{},7]})");
    const LimitWindow nothing{"unknown", "", 0, "normal", std::nullopt, false, std::nullopt};
    EXPECT_EQ(usage.windows, (std::vector<LimitWindow>{nothing, nothing}));
}

TEST(Usage, aPercentThatIsATextIsZeroAndTheRowLives)
{
    const Usage usage = decoded(R"({"limits":[{"kind":"session","percent":"42"}]})");
    ASSERT_EQ(usage.windows.size(), 1U);
    EXPECT_EQ(usage.windows[0].percent, 0);
}

TEST(Usage, aNumberThatNoDoubleHoldsCountsAsAbsentWhereverItStands)
{
    const Usage usage = decoded(R"({"x":1e999,"limits":[{"kind":"session","percent":-1.5E+400},
        {"kind":"a \"1e999","percent":42.5,"severity":"1e999"},{"kind":1e309,"percent":7}],
        "extra_usage":{"is_enabled":true,"used_credits":)" +
                                std::string(400, '9') + R"(,"monthly_limit":5000}})");
    ASSERT_EQ(kindsOf(usage.windows), (Kinds{"session", "a \"1e999", "unknown"}));
    EXPECT_EQ(usage.windows[0].percent, 0);
    EXPECT_EQ(usage.windows[1].percent, 42.5);
    EXPECT_EQ(usage.windows[1].severity, "1e999");
    EXPECT_EQ(usage.windows[2].percent, 7);
    EXPECT_EQ(usage.extraUsage->usedCredits, std::nullopt);
    EXPECT_EQ(usage.extraUsage->monthlyLimit, 5000);
}

TEST(Usage, aLargeNumberMakesNothingReadableThatIsNoJson)
{
    for (const char* bytes :
         {"1e999", "[1e999]", R"({"x":01e999})", R"({"x":.1e999})", R"({"x":-.1e999})",
          R"({"x":1.e999})", R"({"x":+1e999})", R"({"x":1e999)", R"({"x":1e999,})",
          R"({"x":1e999-})", R"({"x":1e999true})", R"({"x":true1e999})", R"({"x":1e999,"y":")",
          R"({"x":1e999,"y":"\)"}) {
        SCOPED_TRACE(bytes);
        EXPECT_TRUE(std::holds_alternative<Usage::DecodeError>(Usage::decode(bytes, now)));
    }
}

TEST(Usage, aWindowIsActiveAsToldElseWhenItHasAReset)
{
    struct Row {
        const char* fields;
        bool hasReset;
        bool isActive;
    };
    const Row rows[] = {
        {R"("resets_at":"2026-03-04T10:00:00Z")", true, true},
        {R"("resets_at":"2026-03-04T10:00:00Z","is_active":false)", true, false},
        {R"("resets_at":"soon")", false, false},
        {R"("resets_at":"soon","is_active":true)", false, true},
        {R"("resets_at":null)", false, false},
        {R"("resets_at":"2026-03-04T10:00:00Z","is_active":"no")", true, true},
        {R"("percent":1)", false, false},
    };
    for (const auto& [fields, hasReset, isActive] : rows) {
        SCOPED_TRACE(fields);
        const Usage usage = decoded(R"({"limits":[{)" + std::string(fields) + "}]}");
        ASSERT_EQ(usage.windows.size(), 1U);
        EXPECT_EQ(usage.windows[0].resetsAt.has_value(), hasReset);
        EXPECT_EQ(usage.windows[0].isActive, isActive);
    }
}

TEST(Usage, theOlderShapeGivesTheSameWindowsInAFixedOrder)
{
    const Usage usage = decoded(R"({"seven_day_cowork":{},"seven_day_oauth_apps":{},
        "seven_day_sonnet":{"utilization":3},"seven_day_opus":{"utilization":"x"},
        "seven_day":{"utilization":12,"resets_at":"2026-03-04T10:00:00Z"},
        "five_hour":{"utilization":101.5,"resets_at":"2026-03-01T12:00:00.1234567+02:00"},
        "seven_day_unknown":{"utilization":9}})");
    EXPECT_EQ(kindsOf(usage.windows),
              (Kinds{"session", "weekly_all", "seven_day_opus", "seven_day_sonnet",
                     "seven_day_oauth_apps", "seven_day_cowork"}));
    EXPECT_EQ(
        usage.windows[0],
        (LimitWindow{
            "session", "session", 101.5, "normal", instant("2026-03-01T10:00:00Z"), true, {}}));
    EXPECT_EQ(
        usage.windows[1],
        (LimitWindow{
            "weekly_all", "weekly", 12, "normal", instant("2026-03-04T10:00:00Z"), true, {}}));
    EXPECT_EQ(usage.windows[2],
              (LimitWindow{"seven_day_opus", "weekly", 0, "normal", {}, false, {}}));
    EXPECT_EQ(usage.windows[5].group, "weekly");
}

TEST(Usage, anOlderObjectIsLeftOutWhenARowOfItsKindIsThere)
{
    const Usage usage = decoded(R"({"five_hour":{"utilization":1},"seven_day":{"utilization":2},
        "seven_day_opus":{"utilization":3},"limits":[{"kind":"seven_day_opus","percent":30},
        {"kind":"session","percent":10}]})");
    EXPECT_EQ(kindsOf(usage.windows), (Kinds{"seven_day_opus", "session", "weekly_all"}));
    EXPECT_EQ(usage.windows[1].percent, 10);
}

TEST(Usage, twoRowsOfOneKindBothStay)
{
    EXPECT_EQ(kindsOf(decoded(R"({"limits":[{"kind":"a"},{},{"kind":"a"},{"kind":7}]})").windows),
              (Kinds{"a", "unknown", "a", "unknown"}));
}

TEST(Usage, aSuppressedKindIsLeftOutOfBothShapes)
{
    const std::string row = Sha256::hex("hidden_kind");
    const std::string slot = Sha256::hex("seven_day_opus");
    const std::string unknown = Sha256::hex("unknown");
    const std::string_view suppressed[] = {row, slot, unknown};
    const Usage usage = decoded(R"({"limits":[{"kind":"hidden_kind","percent":99},{},
        {"kind":"session"},{"kind":"seven_day_opus"}],"seven_day_opus":{"utilization":5}})",
                                suppressed);
    // A row without a kind is not asked about: it has no name that could be a secret.
    EXPECT_EQ(kindsOf(usage.windows), (Kinds{"unknown", "session"}));
}

TEST(Usage, theCreditsBlockComesAlongWhenThereIsOne)
{
    EXPECT_EQ(decoded(R"({"extra_usage":{"is_enabled":true}})").extraUsage->isEnabled, true);
    EXPECT_EQ(decoded(R"({"extra_usage":{"used_credits":5}})").extraUsage->isEnabled, false);
    EXPECT_EQ(decoded(R"({"extra_usage":7})").extraUsage, std::nullopt);
}

TEST(Usage, theSessionIsTheFirstWindowOfThatKindAndTheOthersKeepTheirOrder)
{
    const Usage usage = decoded(R"({"limits":[{"kind":"a","percent":1},
        {"kind":"session","percent":2},{"kind":"session","percent":3},{"kind":"b"}]})");
    ASSERT_NE(usage.sessionWindow(), nullptr);
    EXPECT_EQ(usage.sessionWindow()->percent, 2);
    EXPECT_EQ(kindsOf(usage.nonSessionWindows()), (Kinds{"a", "b"}));
    EXPECT_EQ(Usage().sessionWindow(), nullptr);
    EXPECT_TRUE(Usage().nonSessionWindows().empty());
}

TEST(Usage, theWorstOfTheOthersIsTheFullestAndOfEqualOnesTheFirst)
{
    const Usage usage = decoded(R"({"limits":[{"kind":"session","percent":100},
        {"kind":"a","percent":40},{"kind":"b","percent":50},{"kind":"c","percent":50}]})");
    ASSERT_NE(usage.worstNonSession(), nullptr);
    EXPECT_EQ(usage.worstNonSession()->kind, "b");
    const Usage empties = decoded(R"({"limits":[{"kind":"a"},{"kind":"b","percent":-1}]})");
    EXPECT_EQ(empties.worstNonSession()->kind, "a");
    EXPECT_EQ(decoded(R"({"limits":[{"kind":"session"}]})").worstNonSession(), nullptr);
}

TEST(Usage, tenThousandRowsAreReadInOrder)
{
    Json body = {{"limits", Json::array()}};
    for (int i = 0; i < 10000; ++i)
        body["limits"].push_back({{"kind", "k" + std::to_string(i)}, {"percent", i}});
    const Usage usage = decoded(body.dump());
    ASSERT_EQ(usage.windows.size(), 10000U);
    EXPECT_EQ(usage.windows[9999].kind, "k9999");
}

} // namespace vellumor::usageTest
