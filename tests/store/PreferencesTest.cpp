#include "store/Preferences.h"

#include "base/Json.h"

#include <gtest/gtest.h>

namespace vellumor::preferencesTest {

namespace {

Json toJson(const Preferences& preferences)
{
    return Json::parse(preferences.encode().value());
}

// Settings of which every one differs from its default.
Preferences allChanged()
{
    Preferences changed;
    changed.menuBarMode = MenuBarMode::numbers;
    changed.menuBarDualBars = true;
    changed.userInterval = 300.5;
    changed.localCacheOnly = true;
    changed.tokenRevivalEnabled = false;
    changed.claudeBinaryPath = "/opt/claude/bin/claude";
    changed.notificationsEnabled = true;
    changed.notifySession50 = true;
    changed.notifySession90 = false;
    changed.notifyWeekly50 = true;
    changed.notifyWeekly90 = false;
    changed.notifySessionLimit = false;
    changed.notifyWeeklyLimit = false;
    changed.notifyQuotaReset = true;
    changed.notifyProjectedWeekly = true;
    changed.notifyProjectedSession = true;
    changed.notifyCreditBurn = false;
    changed.notifySessionClosing = true;
    changed.sessionClosingLeadMinutes = 45;
    changed.customThresholds = {{"abc123", 75.5}, {"def456", 10}};
    changed.crossPromoDismissed = true;
    return changed;
}

} // namespace

TEST(Preferences, anEmptyObjectIsAllDefaults)
{
    const auto decoded = Preferences::decode("{}");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, Preferences());
    EXPECT_TRUE(decoded->notifySession90);
    EXPECT_FALSE(decoded->notificationsEnabled);
}

TEST(Preferences, theFileIsPrettyWithSortedKeys)
{
    EXPECT_EQ(Preferences().encode(), R"({
  "claudeBinaryPath": "",
  "crossPromoDismissed": false,
  "customThresholds": {},
  "localCacheOnly": false,
  "menuBarDualBars": false,
  "menuBarMode": "bars",
  "notificationsEnabled": false,
  "notifyCreditBurn": true,
  "notifyProjectedSession": false,
  "notifyProjectedWeekly": false,
  "notifyQuotaReset": false,
  "notifySession50": false,
  "notifySession90": true,
  "notifySessionClosing": false,
  "notifySessionLimit": true,
  "notifyWeekly50": false,
  "notifyWeekly90": true,
  "notifyWeeklyLimit": true,
  "schemaVersion": 1,
  "sessionClosingLeadMinutes": 30,
  "tokenRevivalEnabled": true,
  "userInterval": 120
})");
}

TEST(Preferences, whatIsWrittenIsReadBack)
{
    EXPECT_EQ(Preferences::decode(allChanged().encode().value()), allChanged());
    EXPECT_NE(allChanged().encode()->find("\"\\/opt\\/claude\\/bin\\/claude\""), std::string::npos);
}

TEST(Preferences, everySettingOfTheChangedOnesDiffersFromItsDefault)
{
    const Json changed = toJson(allChanged());
    const Json defaults = toJson(Preferences());
    ASSERT_EQ(changed.size(), 22U);
    for (const auto& [key, value] : defaults.items()) {
        EXPECT_EQ(changed[key] == value, key == "schemaVersion") << key;
    }
}

TEST(Preferences, aMissingKeyOrANullTakesItsDefaultAndLeavesTheOthers)
{
    const Json defaults = toJson(Preferences());
    for (const auto& [key, value] : defaults.items()) {
        SCOPED_TRACE(key);
        Json expected = toJson(allChanged());
        Json missing = expected;
        Json null = expected;
        expected[key] = value;
        missing.erase(key);
        null[key] = nullptr;
        for (const Json& file : {missing, null}) {
            const auto decoded = Preferences::decode(file.dump());
            ASSERT_TRUE(decoded);
            EXPECT_EQ(toJson(*decoded), expected);
        }
    }
}

TEST(Preferences, aWrongTypeUnderAnyKeySpoilsTheWholeFile)
{
    const Json defaults = toJson(Preferences());
    for (const auto& [key, value] : defaults.items()) {
        for (const Json& wrong : {Json::array(), Json("120"), Json(1.5), Json(true), Json(7),
                                  Json{{"a", "b"}}, Json{{"a", nullptr}}}) {
            const bool isSameType = wrong.type() == value.type() && !wrong.is_object();
            const bool isNumberForNumber = key == "userInterval" && wrong.is_number();
            const bool isMode = key == "menuBarMode"; // which knows two texts alone
            const bool isWhole = wrong == Json(7) && value.is_number();
            if (!isMode && (isSameType || isNumberForNumber || isWhole))
                continue;
            SCOPED_TRACE(key + " " + wrong.dump());
            Json file = toJson(allChanged());
            file[key] = wrong;
            EXPECT_EQ(Preferences::decode(file.dump()), std::nullopt);
        }
    }
}

TEST(Preferences, aFileThatIsNoJsonObjectIsNotDecoded)
{
    for (const char* bytes : {"", "[]", "null", "{", "1", "{\"userInterval\":\"\xFF\"}"}) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(Preferences::decode(bytes), std::nullopt);
    }
}

TEST(Preferences, aNewerVersionIsNotDecodedAndAnOlderOneIs)
{
    struct Row {
        const char* version;
        bool decoded;
    };
    const Row rows[] = {
        {"-1", true}, {"0", true},  {"1", true},    {"1.0", true},
        {"2", false}, {"3", false}, {"1e9", false}, {"18446744073709551615", false}};
    for (const auto& [version, decoded] : rows) {
        SCOPED_TRACE(version);
        EXPECT_EQ(
            Preferences::decode("{\"schemaVersion\":" + std::string(version) + "}").has_value(),
            decoded);
    }
}

TEST(Preferences, anIntegralNumberServesAsAnInteger)
{
    const auto decoded = Preferences::decode(R"({"sessionClosingLeadMinutes":45.0})");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->sessionClosingLeadMinutes, 45);
}

TEST(Preferences, boundedSettingsAreHeldToTheirBoundsEndsIncluded)
{
    struct Row {
        double given;
        double held;
    };
    const Row intervals[] = {{59, 60},     {60, 60},     {60.5, 60.5}, {0, 60},
                             {-1e300, 60}, {1800, 1800}, {1801, 1800}, {1e300, 1800}};
    const Row minutes[] = {{4, 5}, {5, 5}, {6, 6}, {-2147483648.0, 5}, {120, 120}, {121, 120}};
    const Row thresholds[] = {{0, 1},   {0.99, 1},   {1, 1},    {50.5, 50.5},
                              {99, 99}, {99.01, 99}, {100, 99}, {-5, 1}};
    for (const auto& [given, held] : intervals) {
        Preferences preferences;
        preferences.userInterval = given;
        EXPECT_EQ(preferences.clamped().userInterval, held) << given;
    }
    for (const auto& [given, held] : minutes) {
        Preferences preferences;
        preferences.sessionClosingLeadMinutes = static_cast<int>(given);
        EXPECT_EQ(preferences.clamped().sessionClosingLeadMinutes, static_cast<int>(held)) << given;
    }
    for (const auto& [given, held] : thresholds) {
        Preferences preferences;
        preferences.customThresholds["a"] = given;
        EXPECT_EQ(preferences.clamped().customThresholds.at("a"), held) << given;
        EXPECT_EQ(preferences.customThreshold("a"), held) << given; // also where nobody has clamped
    }
}

TEST(Preferences, clampingChangesNothingElse)
{
    EXPECT_EQ(allChanged().clamped(), allChanged());
    Preferences odd;
    odd.claudeBinaryPath = "not a path";
    odd.schemaVersion = 7;
    EXPECT_EQ(odd.clamped(), odd);
}

TEST(Preferences, anAccountWithoutAThresholdOfItsOwnHasNone)
{
    EXPECT_EQ(allChanged().customThreshold("abc123"), 75.5);
    EXPECT_EQ(allChanged().customThreshold("ABC123"), std::nullopt);
    EXPECT_EQ(Preferences().customThreshold(""), std::nullopt);
}

// A zero in a key once made the lookup miss its own entry, and the whole file count as broken.
TEST(Preferences, aThresholdUnderAnyTextIsRead)
{
    const auto decoded = Preferences::decode(R"({"customThresholds":{"a":5,"a\u0000b":50,"":9}})");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->customThresholds,
              (std::map<std::string, double>{{"", 9}, {"a", 5}, {std::string("a\0b", 3), 50}}));
}

TEST(Preferences, textThatIsNotUtf8IsNotEncoded)
{
    Preferences preferences;
    preferences.claudeBinaryPath = "/opt/\xFF";
    EXPECT_EQ(preferences.encode(), std::nullopt);
}

} // namespace vellumor::preferencesTest
