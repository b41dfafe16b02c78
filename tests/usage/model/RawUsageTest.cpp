#include "usage/model/RawUsage.h"

#include "base/Json.h"

#include <gtest/gtest.h>

namespace vellumor::rawUsageTest {

namespace {

std::optional<std::string> scopeOf(const std::string& scope)
{
    const Json json = Json::parse(R"({"limits":[{"scope":)" + scope + "}]}");
    return RawUsage(json).limits().at(0).scope;
}

} // namespace

TEST(RawUsage, aRowHasEveryFieldOfItsType)
{
    const Json json = Json::parse(R"({"limits":[{"kind":"session","group":"g","percent":12.5,
        "severity":"warning","resets_at":"soon","is_active":true,"scope":"Opus","new":{}}]})");
    const auto limits = RawUsage(json).limits();
    ASSERT_EQ(limits.size(), 1U);
    EXPECT_EQ(limits[0].kind, "session");
    EXPECT_EQ(limits[0].group, "g");
    EXPECT_EQ(limits[0].percent, 12.5);
    EXPECT_EQ(limits[0].severity, "warning");
    EXPECT_EQ(limits[0].resetsAt, "soon");
    EXPECT_EQ(limits[0].isActive, true);
    EXPECT_EQ(limits[0].scope, "Opus");
}

TEST(RawUsage, aValueOfAWrongTypeCountsAsAbsentAndTheRowLives)
{
    struct Row {
        const char* fields;
        int present; // of the seven
    };
    const Row rows[] = {
        {R"("kind":1)", 0},
        {R"("kind":null,"group":null,"percent":null,"is_active":null,"scope":null)", 0},
        {R"("percent":"42")", 0},
        {R"("percent":true)", 0},
        {R"("percent":[42])", 0},
        {R"("percent":42)", 1},
        {R"("is_active":1)", 0},
        {R"("is_active":"true")", 0},
        {R"("is_active":false)", 1},
        {R"("resets_at":1772357400,"severity":{},"group":[])", 0},
        {R"("resets_at":"","severity":"","group":"","kind":"")", 4},
    };
    for (const auto& [fields, present] : rows) {
        SCOPED_TRACE(fields);
        const Json json = Json::parse(R"({"limits":[{)" + std::string(fields) + "}]}");
        const auto limits = RawUsage(json).limits();
        ASSERT_EQ(limits.size(), 1U);
        const RawUsage::Limit& limit = limits[0];
        EXPECT_EQ(limit.kind.has_value() + limit.group.has_value() + limit.percent.has_value() +
                      limit.severity.has_value() + limit.resetsAt.has_value() +
                      limit.scope.has_value() + limit.isActive.has_value(),
                  present);
    }
}

TEST(RawUsage, anElementThatIsNoObjectIsARowWithNothingInIt)
{
    const Json json = Json::parse(R"({"limits":[null,1,"session",[],true,{"kind":"session"}]})");
    const auto limits = RawUsage(json).limits();
    ASSERT_EQ(limits.size(), 6U);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(limits[i].kind, std::nullopt);
    EXPECT_EQ(limits[5].kind, "session");
}

TEST(RawUsage, limitsThatAreNoArrayAreNone)
{
    for (const char* text : {R"({})", R"({"limits":null})", R"({"limits":{"kind":"session"}})",
                             R"({"limits":"x"})", R"({"limits":[]})"}) {
        SCOPED_TRACE(text);
        const Json json = Json::parse(text);
        EXPECT_TRUE(RawUsage(json).limits().empty());
    }
}

TEST(RawUsage, aScopeIsABareNameElseTheModelElseTheSurface)
{
    struct Row {
        const char* scope;
        std::optional<std::string> name;
    };
    const Row rows[] = {
        {R"("Opus")", "Opus"},
        {R"("")", std::nullopt},
        {R"({"model":"Opus"})", "Opus"},
        {R"({"model":{"display_name":"Opus"}})", "Opus"},
        {R"({"model":{"display_name":"Opus"},"surface":"Desktop"})", "Opus"},
        {R"({"surface":"Desktop"})", "Desktop"},
        {R"({"surface":{"display_name":"Desktop"}})", "Desktop"},
        {R"({"model":{},"surface":"Desktop"})", "Desktop"},
        {R"({"model":null,"surface":"Desktop"})", "Desktop"},
        {R"({"model":7,"surface":"Desktop"})", "Desktop"},
        {R"({"model":[],"surface":"Desktop"})", "Desktop"},
        {R"({"model":{"display_name":7},"surface":"Desktop"})", "Desktop"},
        {R"({"model":{"display_name":""},"surface":"Desktop"})", std::nullopt},
        {R"({"model":"","surface":"Desktop"})", std::nullopt},
        {R"({"surface":""})", std::nullopt},
        {R"({"surface":{}})", std::nullopt},
        {R"({"name":"Opus"})", std::nullopt},
        {R"({})", std::nullopt},
        {R"(["Opus"])", std::nullopt},
        {R"(7)", std::nullopt},
        {R"(null)", std::nullopt},
    };
    for (const auto& [scope, name] : rows) {
        SCOPED_TRACE(scope);
        EXPECT_EQ(scopeOf(scope), name);
    }
}

TEST(RawUsage, aSlotIsAnObjectUnderItsKey)
{
    const Json json = Json::parse(R"({"five_hour":{"utilization":7,"resets_at":"soon"},
        "seven_day":{"utilization":"7","resets_at":7},"seven_day_opus":null,"x":[],"y":5})");
    const RawUsage raw(json);
    ASSERT_TRUE(raw.slot("five_hour"));
    EXPECT_EQ(raw.slot("five_hour")->utilization, 7);
    EXPECT_EQ(raw.slot("five_hour")->resetsAt, "soon");
    ASSERT_TRUE(raw.slot("seven_day"));
    EXPECT_EQ(raw.slot("seven_day")->utilization, std::nullopt);
    EXPECT_EQ(raw.slot("seven_day")->resetsAt, std::nullopt);
    for (const char* key : {"seven_day_opus", "x", "y", "missing"})
        EXPECT_FALSE(raw.slot(key)) << key;
}

TEST(RawUsage, theCreditsBlockIsReadFieldByField)
{
    const Json json = Json::parse(R"({"extra_usage":{"is_enabled":true,"used_credits":1250,
        "currency":"EUR","decimal_places":2.0,"monthly_limit":5000.5,"utilization":25,
        "user_disabled":false,"spend_limit_reached":true,"credits_ever_enabled":true}})");
    const auto extra = RawUsage(json).extraUsage();
    ASSERT_TRUE(extra);
    EXPECT_EQ(*extra, (ExtraUsage{true, 1250, "EUR", 2, 5000.5, 25, false, true, true}));
}

TEST(RawUsage, aFieldOfTheCreditsBlockWithAWrongTypeCountsAsAbsent)
{
    const Json json = Json::parse(R"({"extra_usage":{"is_enabled":1,"used_credits":"1250",
        "currency":7,"decimal_places":2.5,"monthly_limit":true,"utilization":[],
        "user_disabled":"no","spend_limit_reached":1,"credits_ever_enabled":null}})");
    EXPECT_EQ(RawUsage(json).extraUsage(), ExtraUsage());
}

TEST(RawUsage, aCreditsBlockThatIsNoObjectIsNone)
{
    for (const char* text :
         {R"({})", R"({"extra_usage":null})", R"({"extra_usage":[]})", R"({"extra_usage":true})"}) {
        SCOPED_TRACE(text);
        const Json json = Json::parse(text);
        EXPECT_EQ(RawUsage(json).extraUsage(), std::nullopt);
    }
    const Json empty = Json::parse(R"({"extra_usage":{}})");
    EXPECT_EQ(RawUsage(empty).extraUsage(), ExtraUsage());
}

} // namespace vellumor::rawUsageTest
