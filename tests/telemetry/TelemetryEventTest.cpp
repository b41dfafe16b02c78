#include "telemetry/TelemetryEvent.h"

#include <gtest/gtest.h>

namespace vellumor::telemetryEventTest {

namespace {

using Kind = TelemetryEvent::Kind;
struct Row {
    TelemetryEvent event;
    Kind kind;
    const char* name;
    bool isDiagnostics;
    TelemetryProperties properties;
};
const Row eventRows[] = {
    {TelemetryEvent::dayActive({{"a", "b"}}), Kind::dayActive, "day_active", false, {{"a", "b"}}},
    {TelemetryEvent::crossPromoClicked("sibling"),
     Kind::crossPromoClicked,
     "cross_promo_clicked",
     false,
     {{"target", "sibling"}}},
    {TelemetryEvent::diagnostic("usage_401", "endpoint"),
     Kind::diagnostic,
     "diagnostic",
     true,
     {{"category", "usage_401"}, {"layer", "endpoint"}}},
    {TelemetryEvent::diagnostic({}, "endpoint"),
     Kind::diagnostic,
     "diagnostic",
     true,
     {{"layer", "endpoint"}}},
    {TelemetryEvent::diagnostic("usage_401", {}),
     Kind::diagnostic,
     "diagnostic",
     true,
     {{"category", "usage_401"}}},
    {TelemetryEvent::crashDetected({{"area", "ui"}}),
     Kind::crashDetected,
     "crash_detected",
     true,
     {{"area", "ui"}}},
    {TelemetryEvent::multiAccountReached(),
     Kind::multiAccountReached,
     "multi_account_reached",
     false,
     {}},
    {TelemetryEvent::onboardingCompleted(),
     Kind::onboardingCompleted,
     "onboarding_completed",
     false,
     {}},
    {TelemetryEvent::switchToLocalOnly(),
     Kind::switchToLocalOnly,
     "switch_to_local_only",
     false,
     {}},
};

} // namespace

TEST(TelemetryEvent, eachHasItsNameClassAndProperties)
{
    for (const auto& [event, kind, name, isDiagnostics, properties] : eventRows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(event.kind(), kind);
        EXPECT_EQ(event.name(), name);
        EXPECT_EQ(event.isDiagnostics(), isDiagnostics);
        EXPECT_EQ(event.properties(), properties);
    }
}

} // namespace vellumor::telemetryEventTest
