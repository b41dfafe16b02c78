#include "history/HistoryFacts.h"

#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <gtest/gtest.h>

#include <clocale>

namespace vellumor::historyFactsTest {

using test::instant;
using test::ScopedZone;

namespace {

std::string fixedTime(Instant)
{
    return "4:30\u202FPM";
}

} // namespace

TEST(HistoryFacts, coverageIsAWholePercent)
{
    const std::pair<double, const char*> rows[] = {
        {0, "Watched ~0% of the week"},       {-0.0, "Watched ~0% of the week"},
        {0.004, "Watched ~0% of the week"},   {0.005, "Watched ~1% of the week"},
        {0.125, "Watched ~13% of the week"},  {0.87, "Watched ~87% of the week"},
        {0.8749, "Watched ~87% of the week"}, {0.875, "Watched ~88% of the week"},
        {0.995, "Watched ~100% of the week"}, {1, "Watched ~100% of the week"},
    };
    for (const auto& [fraction, text] : rows)
        EXPECT_EQ(HistoryFacts::coverageLine(fraction, "the week"), text);
    EXPECT_EQ(HistoryFacts::coverageLine(0.5, "the last 7 days"),
              "Watched ~50% of the last 7 days");
}

TEST(HistoryFacts, aPeakNamesItsWholePercentAndItsMoment)
{
    const ScopedZone utc("UTC");
    const Instant friday = instant("2026-11-20T16:30:00Z");
    const std::pair<double, const char*> rows[] = {
        {93, "Peak 93% · Fri 4:30\u202FPM"},      {92.5, "Peak 93% · Fri 4:30\u202FPM"},
        {92.4999, "Peak 92% · Fri 4:30\u202FPM"}, {0, "Peak 0% · Fri 4:30\u202FPM"},
        {-0.4, "Peak 0% · Fri 4:30\u202FPM"},     {-0.5, "Peak -1% · Fri 4:30\u202FPM"},
        {112.7, "Peak 113% · Fri 4:30\u202FPM"},
    };
    for (const auto& [percent, text] : rows)
        EXPECT_EQ(HistoryFacts::peakPhrase(percent, friday, fixedTime), text);
}

TEST(HistoryFacts, resetsAreALowerLimitAndNoneAreNotSpokenOf)
{
    EXPECT_EQ(HistoryFacts::resetsPhrase(-1), std::nullopt);
    EXPECT_EQ(HistoryFacts::resetsPhrase(0), std::nullopt);
    EXPECT_EQ(HistoryFacts::resetsPhrase(1), "At least 1 reset seen");
    EXPECT_EQ(HistoryFacts::resetsPhrase(2), "At least 2 resets seen");
    EXPECT_EQ(HistoryFacts::resetsPhrase(21), "At least 21 resets seen");
}

TEST(HistoryFacts, theWeekdayIsThatOfTheZoneAndInEnglish)
{
    const struct {
        const char* zone;
        const char* moment;
        const char* text;
    } rows[] = {
        {"UTC", "2026-11-15T12:00:00Z", "Sun 4:30\u202FPM"},
        {"UTC", "2026-11-16T12:00:00Z", "Mon 4:30\u202FPM"},
        {"UTC", "2026-11-17T12:00:00Z", "Tue 4:30\u202FPM"},
        {"UTC", "2026-11-18T12:00:00Z", "Wed 4:30\u202FPM"},
        {"UTC", "2026-11-19T12:00:00Z", "Thu 4:30\u202FPM"},
        {"UTC", "2026-11-20T12:00:00Z", "Fri 4:30\u202FPM"},
        {"UTC", "2026-11-21T23:59:59Z", "Sat 4:30\u202FPM"},
        {"Asia/Kolkata", "2026-11-21T18:29:59Z", "Sat 4:30\u202FPM"},
        {"Asia/Kolkata", "2026-11-21T18:30:00Z", "Sun 4:30\u202FPM"},
        {"America/New_York", "2026-11-21T04:59:59Z", "Fri 4:30\u202FPM"},
        {"America/New_York", "2026-11-21T05:00:00Z", "Sat 4:30\u202FPM"},
        {"Europe/Berlin", "2026-03-28T22:59:59Z", "Sat 4:30\u202FPM"},
        {"Europe/Berlin", "2026-03-28T23:00:00Z", "Sun 4:30\u202FPM"},
        {"Europe/Berlin", "2026-03-29T21:59:59Z", "Sun 4:30\u202FPM"}, // a day of 23 hours
        {"Europe/Berlin", "2026-03-29T22:00:00Z", "Mon 4:30\u202FPM"},
        {"Europe/Berlin", "2026-10-25T22:59:59Z", "Sun 4:30\u202FPM"}, // and one of 25
        {"Europe/Berlin", "2026-10-25T23:00:00Z", "Mon 4:30\u202FPM"},
    };
    for (const auto& [zone, moment, text] : rows) {
        SCOPED_TRACE(std::string(zone) + " " + moment);
        const ScopedZone scoped(zone);
        EXPECT_EQ(HistoryFacts::weekdayTime(instant(moment), fixedTime), text);
    }
}

TEST(HistoryFacts, theTimeIsThatOfTheMoment)
{
    const ScopedZone utc("UTC");
    const Instant moment = instant("2026-11-20T16:30:00.125Z");
    const auto asIso = [](Instant at) { return Format::isoFractional(at); };
    EXPECT_EQ(HistoryFacts::weekdayTime(moment, asIso), "Fri 2026-11-20T16:30:00.125Z");
    EXPECT_EQ(HistoryFacts::peakPhrase(7, moment, asIso), "Peak 7% · Fri 2026-11-20T16:30:00.125Z");
}

TEST(HistoryFacts, aWeekGoesFromDayToDayOfTheZone)
{
    const struct {
        const char* zone;
        const char* start;
        const char* end;
        const char* text;
    } rows[] = {
        {"UTC", "2026-11-14T09:00:00Z", "2026-11-21T09:00:00Z", "Nov 14 – Nov 21"},
        {"UTC", "2026-12-28T09:00:00Z", "2027-01-04T09:00:00Z", "Dec 28 – Jan 4"},
        {"UTC", "2026-02-25T00:00:00Z", "2026-03-04T00:00:00Z", "Feb 25 – Mar 4"},
        {"UTC", "2028-02-25T00:00:00Z", "2028-03-03T00:00:00Z", "Feb 25 – Mar 3"},
        {"Asia/Kolkata", "2026-11-14T18:29:59Z", "2026-11-21T18:29:59Z", "Nov 14 – Nov 21"},
        {"Asia/Kolkata", "2026-11-14T18:30:00Z", "2026-11-21T18:30:00Z", "Nov 15 – Nov 22"},
        // The clocks move within the week, so that it ends an hour later or earlier by them.
        {"Europe/Berlin", "2026-03-24T22:30:00Z", "2026-03-31T22:30:00Z", "Mar 24 – Apr 1"},
        {"Europe/Berlin", "2026-10-21T22:30:00Z", "2026-10-28T22:30:00Z", "Oct 22 – Oct 28"},
        {"America/New_York", "2026-03-05T04:30:00Z", "2026-03-12T04:30:00Z", "Mar 4 – Mar 12"},
    };
    for (const auto& [zone, start, end, text] : rows) {
        SCOPED_TRACE(std::string(zone) + " " + start);
        const ScopedZone scoped(zone);
        EXPECT_EQ(HistoryFacts::weekSpan(instant(start), instant(end)), text);
    }
}

} // namespace vellumor::historyFactsTest
