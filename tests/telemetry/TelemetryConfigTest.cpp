#include "telemetry/TelemetryConfig.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <regex>

namespace vellumor::telemetryConfigTest {
namespace {

using test::instant;

const Instant now = instant("2026-03-01T09:30:00.125Z");

TelemetryConfig rich()
{
    TelemetryConfig config = TelemetryConfig::fresh(now);
    config.installID = "inst_0123456789abcdef0123456789abcdef";
    config.diagnosticsEnabled = false;
    config.lastEmittedDay = "2026-02-28";
    config.countersSince = instant("2026-02-28T00:00:01Z");
    config.counters = {1, 2, 3, 4};
    config.failureCategories = {"usage_401", "parse_fail"};
    config.servedBy = {{"cli", 1}, {"endpoint", 12}};
    config.caps = {"2026-03-01", 9, 2, {"usage_401|endpoint", "parse_fail|endpoint"}, 5};
    config.multiAccountReached = true;
    return config;
}

std::string fileWith(const std::string& fields)
{
    return R"({"schemaVersion":2,"installID":"inst_a")" + fields + "}";
}

std::optional<TelemetryConfig> decode(const std::string& bytes)
{
    return TelemetryConfig::decode(bytes, now);
}

TEST(TelemetryConfig, aFreshOneAllowsAllHasCountedNothingAndBeginsNow)
{
    const TelemetryConfig config = TelemetryConfig::fresh(now);
    TelemetryConfig expected;
    expected.installID = config.installID;
    expected.installedAt = expected.countersSince = now;
    EXPECT_EQ(config, expected);
    EXPECT_EQ(config.schemaVersion, 2);
    EXPECT_TRUE(config.diagnosticsEnabled);
    EXPECT_TRUE(config.productAnalyticsEnabled);
    EXPECT_FALSE(config.multiAccountReached);
    EXPECT_EQ(config.lastEmittedDay, "");
    EXPECT_EQ(config.caps, TelemetryCaps());
}

TEST(TelemetryConfig, anIdentityIsAUuidInLowerCaseWithoutHyphensAndEachTimeAnother)
{
    const std::string id = TelemetryConfig::fresh(now).installID;
    // The version and the variant of a random UUID stand at their places.
    EXPECT_TRUE(std::regex_match(id, std::regex("inst_[0-9a-f]{12}4[0-9a-f]{3}[89ab][0-9a-f]{15}")))
        << id;
    EXPECT_NE(TelemetryConfig::fresh(now).installID, id);
}

TEST(TelemetryConfig, isWrittenPrettyWithSortedKeysAndDatesAsSecondsSince2001)
{
    EXPECT_EQ(rich().encode(), R"({
  "caps": {
    "day": "2026-03-01",
    "diagnostics": 2,
    "dropped": 5,
    "seen": [
      "usage_401|endpoint",
      "parse_fail|endpoint"
    ],
    "total": 9
  },
  "counters": {
    "failures": 2,
    "notifications": 4,
    "popoverOpens": 1,
    "reviveUnavailable": 3
  },
  "countersSince": 793929601,
  "diagnosticsEnabled": false,
  "failureCategories": [
    "usage_401",
    "parse_fail"
  ],
  "installID": "inst_0123456789abcdef0123456789abcdef",
  "installedAt": 794050200.125,
  "lastEmittedDay": "2026-02-28",
  "multiAccountReached": true,
  "productAnalyticsEnabled": true,
  "schemaVersion": 2,
  "servedBy": {
    "cli": 1,
    "endpoint": 12
  }
})");
}

TEST(TelemetryConfig, readsBackWhatItWrote)
{
    const std::string bytes = rich().encode().value();
    EXPECT_EQ(decode(bytes), rich());
    const TelemetryConfig fresh = TelemetryConfig::fresh(now);
    EXPECT_EQ(decode(fresh.encode().value()), fresh);
}

TEST(TelemetryConfig, whatAnOlderFileLacksTakesItsDefault)
{
    TelemetryConfig expected;
    expected.schemaVersion = 1;
    expected.installID = "inst_a";
    expected.installedAt = expected.countersSince = now;
    EXPECT_EQ(decode(R"({"schemaVersion":1,"installID":"inst_a"})"), expected);
    expected.diagnosticsEnabled = false;
    expected.counters.failures = 3;
    expected.caps.dropped = 2;
    EXPECT_EQ(decode(R"({"schemaVersion":1,"installID":"inst_a","diagnosticsEnabled":false,
                         "counters":{"failures":3},"caps":{"dropped":2},"x":1,
                         "servedBy":null,"installedAt":null})"),
              expected);
}

TEST(TelemetryConfig, aFileWithoutAVersionOrIdentityOrOfANewerVersionIsNone)
{
    for (const char* bytes :
         {"", "{", "[]", "null", "{}", R"({"schemaVersion":2})", R"({"installID":"inst_a"})",
          R"({"schemaVersion":2,"installID":""})", R"({"schemaVersion":3,"installID":"inst_a"})",
          R"({"schemaVersion":2147483647,"installID":"inst_a"})",
          R"({"schemaVersion":"2","installID":"inst_a"})", R"({"schemaVersion":2,"installID":7})",
          R"({"schemaVersion":2,"installID":null})"}) {
        EXPECT_EQ(decode(bytes), std::nullopt) << bytes;
    }
    EXPECT_TRUE(decode(R"({"schemaVersion":2,"installID":"inst_a"})"));
    EXPECT_TRUE(decode(R"({"schemaVersion":0,"installID":"inst_a"})"));
}

TEST(TelemetryConfig, oneWrongTypeSpoilsTheFile)
{
    for (const char* field : {R"("diagnosticsEnabled":1)",
                              R"("productAnalyticsEnabled":"no")",
                              R"("installedAt":"2026-03-01T00:00:00Z")",
                              R"("lastEmittedDay":20260301)",
                              R"("countersSince":true)",
                              R"("counters":[])",
                              R"("counters":{"failures":"2"})",
                              R"("counters":{"popoverOpens":1.5})",
                              R"("counters":{"notifications":3000000000})",
                              R"("counters":{"reviveUnavailable":[]})",
                              R"("failureCategories":{})",
                              R"("failureCategories":[1])",
                              R"("failureCategories":[null])",
                              R"("servedBy":[])",
                              R"("servedBy":{"cli":"1"})",
                              R"("servedBy":{"cli":null})",
                              R"("caps":7)",
                              R"("caps":{"day":1})",
                              R"("caps":{"total":"1"})",
                              R"("caps":{"diagnostics":true})",
                              R"("caps":{"seen":"x"})",
                              R"("caps":{"seen":[1]})",
                              R"("caps":{"dropped":{}})",
                              R"("multiAccountReached":"yes")"}) {
        EXPECT_EQ(decode(fileWith("," + std::string(field))), std::nullopt) << field;
    }
}

TEST(TelemetryConfig, anAbsurdDateIsTheNearerEndOfTime)
{
    const std::pair<const char*, const char*> rows[] = {
        {"0", "2001-01-01T00:00:00Z"},
        {"-978307200", "1970-01-01T00:00:00Z"},
        {"1e300", "9999-12-31T23:59:59Z"},
        {"-1e300", "0001-01-01T00:00:00Z"},
        {"99999999999999999999", "9999-12-31T23:59:59Z"},
        {"252425291599.5", "9999-12-31T23:59:59Z"},
    };
    for (const auto& [number, moment] : rows) {
        SCOPED_TRACE(number);
        const auto config = decode(
            fileWith(R"(,"installedAt":)" + std::string(number) + R"(,"countersSince":)" + number));
        ASSERT_TRUE(config);
        EXPECT_EQ(config->installedAt, instant(moment));
        EXPECT_EQ(config->countersSince, instant(moment));
        EXPECT_EQ(decode(config->encode().value()), config);
    }
    EXPECT_EQ(decode(fileWith(R"(,"installedAt":1e999)")), std::nullopt); // is no number at all
}

TEST(TelemetryConfig, aNegativeCountIsNone)
{
    const auto config = decode(fileWith(R"(,"counters":{"failures":-1},"servedBy":{"cli":-7},
        "caps":{"day":"2026-03-01","total":-2147483648,"diagnostics":-1,"dropped":-9})"));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->counters.failures, 0);
    EXPECT_EQ(config->servedBy.at("cli"), 0);
    EXPECT_EQ(config->caps, (TelemetryCaps{"2026-03-01", 0, 0, {}, 0}));
}

TEST(TelemetryConfig, aNewPeriodForgetsWhatWasCountedAndNothingElse)
{
    TelemetryConfig config = rich();
    const Instant later = instant("2026-03-02T00:00:00Z");
    config.startPeriod(later, "2026-03-02");
    TelemetryConfig expected = rich();
    expected.lastEmittedDay = "2026-03-02";
    expected.countersSince = later;
    expected.counters = {};
    expected.failureCategories = {};
    expected.servedBy = {};
    EXPECT_EQ(config, expected);
}

TEST(TelemetryConfig, aFailureCategoryIsNotedOnce)
{
    TelemetryConfig config;
    for (const char* category : {"usage_401", "parse_fail", "usage_401"})
        config.noteFailureCategory(category);
    EXPECT_EQ(config.failureCategories, (std::vector<std::string>{"usage_401", "parse_fail"}));
}

TEST(TelemetryConfig, whatIsNotUtf8CannotBeWritten)
{
    TelemetryConfig config = rich();
    config.servedBy["\xff"] = 1;
    EXPECT_EQ(config.encode(), std::nullopt);
}

} // namespace
} // namespace vellumor::telemetryConfigTest
