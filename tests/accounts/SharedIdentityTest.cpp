#include "accounts/SharedIdentity.h"
#include "base/Json.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::sharedIdentityTest {
namespace {

std::optional<SharedIdentity> read(const std::string& json)
{
    return SharedIdentity::fromJson(parseJson(json).value());
}

TEST(SharedIdentity, aWholeRecordIsReadAndForeignKeysAreIgnored)
{
    EXPECT_EQ(read(R"({"id": "abc123", "name": "Work", "order": 3, "serviceOverride": "Mine",
                       "colour": [1]})"),
              (SharedIdentity{"abc123", "Work", 3, "Mine"}));
}

TEST(SharedIdentity, withoutATextIdAndATextNameARecordIsMalformed)
{
    for (const char* json :
         {"null", "1", "\"a\"", "[]", "true", "{}", R"({"id": "a"})", R"({"name": "a"})",
          R"({"id": 1, "name": "a"})", R"({"id": "a", "name": null})",
          R"({"id": ["a"], "name": "a"})", R"([{"id": "a", "name": "a"}])"}) {
        SCOPED_TRACE(json);
        EXPECT_EQ(read(json), std::nullopt);
    }
    EXPECT_EQ(read(R"({"id": "", "name": ""})"), (SharedIdentity{"", "", 0, {}}));
}

TEST(SharedIdentity, anOrderThatIsNoNumberCountsAsZero)
{
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    const struct {
        const char* order;
        int read;
    } rows[] = {
        {R"("3")", 0},     {"null", 0},
        {"true", 0},       {"[3]", 0},
        {"{}", 0},         {"3", 3},
        {"3.0", 3},        {"-2", -2},
        {"3e0", 3},        {"2147483647", most},
        {"1e308", most},   {"18446744073709551615", most},
        {"-1e308", least}, {"-2147483648", least},
    };
    for (const auto& [order, value] : rows) {
        SCOPED_TRACE(order);
        const auto identity =
            read(std::string(R"({"id": "a", "name": "b", "order": )") + order + "}");
        ASSERT_TRUE(identity.has_value());
        EXPECT_EQ(identity->order, value);
    }
    EXPECT_EQ(read(R"({"id": "a", "name": "b"})")->order, 0);
}

TEST(SharedIdentity, aServiceOverrideThatIsNoTextCountsAsNone)
{
    for (const char* json : {"null", "1", "false", "[\"a\"]", "{}"}) {
        SCOPED_TRACE(json);
        EXPECT_EQ(read(std::string(R"({"id": "a", "name": "b", "serviceOverride": )") + json + "}"),
                  (SharedIdentity{"a", "b", 0, std::nullopt}));
    }
}

} // namespace
} // namespace vellumor::sharedIdentityTest
