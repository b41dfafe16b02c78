#include "telemetry/Telemetry.h"

#include "telemetry/TelemetryTesting.h"

#include <gtest/gtest.h>

namespace vellumor::telemetryTest {
namespace {

using Outcome = Telemetry::Outcome;

struct TelemetryTest : testing::Test, test::TelemetryWorld {
    Outcome captureDiagnostic(const std::string& category)
    {
        return telemetry.capture(TelemetryEvent::diagnostic(category, "endpoint"));
    }
};

TEST_F(TelemetryTest, anEventLeavesUnderItsNameForTheInstallationWithWhatIsAddedToEach)
{
    EXPECT_EQ(telemetry.capture(TelemetryEvent::crossPromoClicked("sibling")), Outcome::sent);
    ASSERT_EQ(outlet.given.size(), 1U);
    EXPECT_EQ(outlet.given[0].name, "cross_promo_clicked");
    EXPECT_EQ(outlet.given[0].distinctID, store.current().installID);
    EXPECT_EQ(outlet.given[0].properties, (TelemetryProperties{{"target", "sibling"},
                                                               {"source", "vellumor"},
                                                               {"version", "1.0.0"},
                                                               {"os", "debian 12"},
                                                               {"environment", "prod"}}));
}

TEST_F(TelemetryTest, theEnvironmentIsThatOfTheTransport)
{
    outlet.kind = TelemetryEnvironment::dev;
    telemetry.capture(TelemetryEvent::onboardingCompleted());
    EXPECT_EQ(outlet.given.at(0).properties.at("environment"), "dev");
}

TEST_F(TelemetryTest, whatIsAddedCannotBeTakenOver)
{
    telemetry.capture(TelemetryEvent::crashDetected({{"source", "x"}, {"version", "9"}}));
    EXPECT_EQ(outlet.given.at(0).properties.at("source"), "vellumor");
    EXPECT_EQ(outlet.given.at(0).properties.at("version"), "1.0.0");
}

TEST_F(TelemetryTest, eachSwitchRulesItsOwnEventsAlone)
{
    const TelemetryEvent diagnostics[] = {TelemetryEvent::diagnostic("usage_401", "endpoint"),
                                          TelemetryEvent::crashDetected({})};
    const TelemetryEvent product[] = {
        TelemetryEvent::dayActive({}), TelemetryEvent::crossPromoClicked("sibling"),
        TelemetryEvent::multiAccountReached(), TelemetryEvent::onboardingCompleted(),
        TelemetryEvent::switchToLocalOnly()};
    store.update([](TelemetryConfig& config) { config.diagnosticsEnabled = false; });
    for (const TelemetryEvent& event : diagnostics)
        EXPECT_EQ(telemetry.capture(event), Outcome::disabled) << event.name();
    for (const TelemetryEvent& event : product)
        EXPECT_EQ(telemetry.capture(event), Outcome::sent) << event.name();
    store.update([](TelemetryConfig& config) {
        config.diagnosticsEnabled = true;
        config.productAnalyticsEnabled = false;
    });
    outlet.given.clear();
    for (const TelemetryEvent& event : product)
        EXPECT_EQ(telemetry.capture(event), Outcome::disabled) << event.name();
    for (const TelemetryEvent& event : diagnostics)
        EXPECT_EQ(telemetry.capture(event), Outcome::sent) << event.name();
    EXPECT_EQ(outlet.names(), (std::vector<std::string>{"diagnostic", "crash_detected"}));
}

TEST_F(TelemetryTest, withBothSwitchesOffNoCapChangesAndNothingIsDropped)
{
    store.update([](TelemetryConfig& config) {
        config.diagnosticsEnabled = config.productAnalyticsEnabled = false;
        config.caps = {"2026-02-28", 50, 10, {"usage_401|endpoint"}, 3};
    });
    const TelemetryCaps before = caps();
    EXPECT_EQ(captureDiagnostic("usage_401"), Outcome::disabled);
    EXPECT_EQ(telemetry.capture(TelemetryEvent::dayActive({})), Outcome::disabled);
    EXPECT_EQ(caps(), before);
    EXPECT_TRUE(outlet.given.empty());
}

TEST_F(TelemetryTest, aRunForDevelopmentCountsNothing)
{
    outlet.isSending = false;
    EXPECT_EQ(captureDiagnostic("usage_401"), Outcome::disabled);
    EXPECT_EQ(telemetry.capture(TelemetryEvent::dayActive({})), Outcome::disabled);
    EXPECT_EQ(caps(), TelemetryCaps());
    EXPECT_TRUE(outlet.given.empty());
}

TEST_F(TelemetryTest, withoutAnyKeyTheCapsAreChargedAndTheEventsHandedOn)
{
    outlet.isKeyed = outlet.isSending = false;
    EXPECT_EQ(captureDiagnostic("usage_401"), Outcome::sent);
    EXPECT_EQ(captureDiagnostic("usage_401"), Outcome::duplicate);
    EXPECT_EQ(caps().total, 1);
    EXPECT_EQ(outlet.given.size(), 1U);
}

TEST_F(TelemetryTest, whatTheCapsRefuseIsNotHandedOn)
{
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(captureDiagnostic("c" + std::to_string(i)), Outcome::sent);
    EXPECT_EQ(captureDiagnostic("c10"), Outcome::capped);
    EXPECT_EQ(captureDiagnostic("c0"), Outcome::duplicate);
    EXPECT_EQ(outlet.given.size(), 10U);
    EXPECT_EQ(onDisk().caps, caps());
    EXPECT_EQ(caps().dropped, 1);
}

TEST_F(TelemetryTest, anEventLosesThePropertiesThatMustNotLeaveAndLeavesWithoutThem)
{
    auto withSecret = parts();
    withSecret.suppressed = test::secretWord;
    Telemetry scrubbing(withSecret);
    const TelemetryProperties bad = {
        {"a", "me@example.org"},  {"b", "/home/me"}, {"c", std::string(32, 'x')},
        {"d", "the secret_word"}, {"e", "\xff"},     {"f", "123e4567-e89b-12d3-a456-426614174000"}};
    EXPECT_EQ(scrubbing.capture(TelemetryEvent::dayActive(bad)), Outcome::sent);
    EXPECT_EQ(outlet.given.at(0).name, "day_active");
    EXPECT_EQ(outlet.given.at(0).properties, (TelemetryProperties{{"source", "vellumor"},
                                                                  {"version", "1.0.0"},
                                                                  {"os", "debian 12"},
                                                                  {"environment", "prod"}}));
}

TEST_F(TelemetryTest, whatMustNotLeaveIsNotKeptAmongTheSeenEither)
{
    EXPECT_EQ(captureDiagnostic("/home/me"), Outcome::sent);
    EXPECT_EQ(caps().seen, std::vector<std::string>{"?|endpoint"});
    EXPECT_EQ(captureDiagnostic("me@example.org"), Outcome::duplicate); // nothing tells it apart
}

TEST_F(TelemetryTest, aSystemOrVersionThatMustNotLeaveGoesToo)
{
    auto odd = parts();
    odd.os = "/etc/os-release";
    odd.version = "me@example.org";
    Telemetry(odd).capture(TelemetryEvent::onboardingCompleted());
    EXPECT_EQ(outlet.given.at(0).properties,
              (TelemetryProperties{{"source", "vellumor"}, {"environment", "prod"}}));
}

TEST_F(TelemetryTest, withoutSomebodyWhoChargesTheCapsAreLookedAtAndStay)
{
    auto unkept = parts();
    unkept.charge = nullptr;
    Telemetry telling(unkept);
    EXPECT_EQ(telling.capture(TelemetryEvent::dayActive({})), Outcome::sent);
    EXPECT_EQ(caps(), TelemetryCaps());
    store.update([](TelemetryConfig& config) {
        config.caps = {"2026-03-01", 49, 1, {"usage_401|endpoint"}, 0};
    });
    EXPECT_EQ(telling.capture(TelemetryEvent::diagnostic("usage_401", "endpoint")),
              Outcome::duplicate);
    store.update([](TelemetryConfig& config) { config.caps.total = 50; });
    EXPECT_EQ(telling.capture(TelemetryEvent::dayActive({})), Outcome::capped);
    EXPECT_EQ(caps().dropped, 0);
}

TEST_F(TelemetryTest, theReportsLineTellsTheSwitchesTheIdentityAndTheDay)
{
    TelemetryConfig config;
    config.installID = "inst_a";
    config.installedAt = test::instant("2026-03-01T09:30:00.125Z");
    config.productAnalyticsEnabled = false;
    EXPECT_EQ(Telemetry::diagnosticsLine(config),
              "diagnostics=on analytics=off id=inst_a since 2026-03-01T09:30:00Z");
    config.installID = "a\nb";
    EXPECT_EQ(Telemetry::diagnosticsLine(config).find('\n'), std::string::npos);
    EXPECT_EQ(telemetry.diagnosticsLine(), Telemetry::diagnosticsLine(store.current()));
}

} // namespace
} // namespace vellumor::telemetryTest
