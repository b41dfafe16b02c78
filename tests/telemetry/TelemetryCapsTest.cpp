#include "telemetry/TelemetryCaps.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::telemetryCapsTest {
namespace {

using Charge = TelemetryCaps::Charge;
using Kind = TelemetryEvent::Kind;

const std::string today = "2026-03-01";

Charge chargeDiagnostic(TelemetryCaps& caps, const std::string& category,
                        const std::string& day = today)
{
    return caps.charge(Kind::diagnostic, {{"category", category}, {"layer", "endpoint"}}, day);
}

TelemetryCaps capsOfToday(int total, int diagnostics = 0, int dropped = 0)
{
    TelemetryCaps caps;
    caps.day = today;
    caps.total = total;
    caps.diagnostics = diagnostics;
    caps.dropped = dropped;
    return caps;
}

TEST(TelemetryCaps, anOrdinaryEventCountsInTheTotalAlone)
{
    for (const Kind kind : {Kind::dayActive, Kind::crossPromoClicked, Kind::multiAccountReached,
                            Kind::onboardingCompleted, Kind::switchToLocalOnly}) {
        TelemetryCaps caps = capsOfToday(3, 2, 1);
        EXPECT_EQ(caps.charge(kind, {}, today), Charge::accepted);
        EXPECT_EQ(caps, capsOfToday(4, 2, 1));
    }
}

TEST(TelemetryCaps, aDiagnosticLeavesItsKeyAndACrashNone)
{
    TelemetryCaps caps = capsOfToday(0);
    EXPECT_EQ(chargeDiagnostic(caps, "usage_401"), Charge::accepted);
    EXPECT_EQ(caps.charge(Kind::crashDetected, {{"category", "usage_429"}}, today),
              Charge::accepted);
    EXPECT_EQ(caps.seen, std::vector<std::string>{"usage_401|endpoint"});
    EXPECT_EQ(caps.diagnostics, 2);
    EXPECT_EQ(caps.total, 2);
}

TEST(TelemetryCaps, whatADiagnosticLacksIsAQuestionMarkInItsKey)
{
    TelemetryCaps caps = capsOfToday(0);
    EXPECT_EQ(caps.charge(Kind::diagnostic, {{"category", "x"}}, today), Charge::accepted);
    EXPECT_EQ(caps.charge(Kind::diagnostic, {{"layer", "y"}}, today), Charge::accepted);
    EXPECT_EQ(caps.charge(Kind::diagnostic, {}, today), Charge::accepted);
    EXPECT_EQ(caps.charge(Kind::diagnostic, {}, today), Charge::duplicate);
    EXPECT_EQ(caps.seen, (std::vector<std::string>{"x|?", "?|y", "?|?"}));
}

TEST(TelemetryCaps, theSameCategoryOfAnotherLayerIsAnotherDiagnostic)
{
    TelemetryCaps caps = capsOfToday(0);
    EXPECT_EQ(chargeDiagnostic(caps, "usage_401"), Charge::accepted);
    EXPECT_EQ(
        caps.charge(Kind::diagnostic, {{"category", "usage_401"}, {"layer", "keychain"}}, today),
        Charge::accepted);
}

TEST(TelemetryCaps, theEleventhDistinctDiagnosticIsDroppedAndCountedARepeatOfTheFirstIsNot)
{
    TelemetryCaps caps = capsOfToday(0);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(chargeDiagnostic(caps, "c" + std::to_string(i)), Charge::accepted);
    EXPECT_EQ(chargeDiagnostic(caps, "c10"), Charge::capped);
    EXPECT_EQ(caps.dropped, 1);
    EXPECT_EQ(chargeDiagnostic(caps, "c0"), Charge::duplicate);
    EXPECT_EQ(caps.dropped, 1);
    EXPECT_EQ(caps.total, 10);
    EXPECT_EQ(caps.diagnostics, 10);
    EXPECT_EQ(caps.seen.size(), 10U);
}

TEST(TelemetryCaps, crashesAndDiagnosticsShareTheirTen)
{
    TelemetryCaps caps = capsOfToday(0);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(caps.charge(Kind::crashDetected, {}, today), Charge::accepted);
    EXPECT_EQ(chargeDiagnostic(caps, "usage_401"), Charge::accepted);
    EXPECT_EQ(caps.charge(Kind::crashDetected, {}, today), Charge::capped);
    EXPECT_EQ(chargeDiagnostic(caps, "usage_429"), Charge::capped);
    EXPECT_EQ(caps.dropped, 2);
    EXPECT_EQ(caps.charge(Kind::dayActive, {}, today), Charge::accepted);
    EXPECT_EQ(caps.total, 11);
}

TEST(TelemetryCaps, theFiftiethEventLeavesAndTheFiftyFirstIsDropped)
{
    TelemetryCaps caps = capsOfToday(49);
    EXPECT_EQ(caps.charge(Kind::dayActive, {}, today), Charge::accepted);
    EXPECT_EQ(caps.charge(Kind::dayActive, {}, today), Charge::capped);
    EXPECT_EQ(caps, capsOfToday(50, 0, 1));
}

TEST(TelemetryCaps, fiftyRefuseEvenADiagnosticThatWasSeenAndCountIt)
{
    TelemetryCaps caps = capsOfToday(50, 1);
    caps.seen = {"usage_401|endpoint"};
    EXPECT_EQ(chargeDiagnostic(caps, "usage_401"), Charge::capped);
    EXPECT_EQ(caps.dropped, 1);
    EXPECT_EQ(caps.total, 50);
}

TEST(TelemetryCaps, theFirstChargeOfAnotherDayBeginsAnewAndWhatWasDroppedStays)
{
    TelemetryCaps caps = capsOfToday(50, 10, 7);
    caps.seen = {"usage_401|endpoint"};
    EXPECT_EQ(chargeDiagnostic(caps, "usage_401", "2026-03-02"), Charge::accepted);
    TelemetryCaps expected = capsOfToday(1, 1, 7);
    expected.day = "2026-03-02";
    expected.seen = {"usage_401|endpoint"};
    EXPECT_EQ(caps, expected);
}

TEST(TelemetryCaps, aDayBeforeIsAnotherDayToo)
{
    TelemetryCaps caps = capsOfToday(50);
    EXPECT_EQ(caps.charge(Kind::dayActive, {}, "2026-02-28"), Charge::accepted);
    EXPECT_EQ(caps.day, "2026-02-28");
}

TEST(TelemetryCaps, theCountOfTheDroppedEndsAtWhatItCanHold)
{
    TelemetryCaps caps = capsOfToday(50, 0, std::numeric_limits<int>::max());
    EXPECT_EQ(caps.charge(Kind::dayActive, {}, today), Charge::capped);
    EXPECT_EQ(caps.dropped, std::numeric_limits<int>::max());
}

} // namespace
} // namespace vellumor::telemetryCapsTest
