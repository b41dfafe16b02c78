#include "telemetry/TelemetryBuckets.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::telemetryBucketsTest {

using namespace std::chrono_literals;

TEST(TelemetryBuckets, theDayIsThatOfUtcWhateverTheZone)
{
    struct Row {
        const char* moment;
        const char* day;
    };
    const Row rows[] = {
        {"2026-03-01T00:00:00Z", "2026-03-01"},        {"2026-03-01T23:59:59.999Z", "2026-03-01"},
        {"2026-03-02T00:00:00Z", "2026-03-02"},        {"2026-03-01T04:30:00+05:30", "2026-02-28"},
        {"2026-12-31T22:00:00-05:00", "2027-01-01"},   {"2024-02-29T12:00:00Z", "2024-02-29"},
        {"1969-12-31T23:59:59.999999Z", "1969-12-31"}, {"0001-01-01T00:00:00Z", "0001-01-01"},
        {"9999-12-31T23:59:59Z", "9999-12-31"},
    };
    for (const auto& [moment, day] : rows) {
        SCOPED_TRACE(moment);
        EXPECT_EQ(TelemetryBuckets::utcDay(test::instant(moment)), day);
    }
}

TEST(TelemetryBuckets, countsAreNoneAFewSomeOrMany)
{
    const std::pair<int, const char*> rows[] = {{std::numeric_limits<int>::min(), "0"},
                                                {-1, "0"},
                                                {0, "0"},
                                                {1, "1-5"},
                                                {5, "1-5"},
                                                {6, "6-20"},
                                                {20, "6-20"},
                                                {21, "20+"},
                                                {22, "20+"},
                                                {std::numeric_limits<int>::max(), "20+"}};
    for (const auto& [count, bucket] : rows)
        EXPECT_EQ(TelemetryBuckets::count(count), bucket) << count;
}

TEST(TelemetryBuckets, accountsAreToldOneByOneUpToTwo)
{
    const std::pair<std::size_t, const char*> rows[] = {
        {0, "0"}, {1, "1"}, {2, "2"}, {3, "3-4"}, {4, "3-4"}, {5, "5+"}, {6, "5+"}, {1000, "5+"}};
    for (const auto& [count, bucket] : rows)
        EXPECT_EQ(TelemetryBuckets::accounts(count), bucket) << count;
}

TEST(TelemetryBuckets, theAgeCountsWholeDays)
{
    constexpr auto day = std::chrono::days(1);
    const std::pair<std::chrono::microseconds, const char*> rows[] = {
        {-400 * day, "new"},     {0us, "new"},       {day - 1us, "new"},        {day, "week"},
        {7 * day - 1us, "week"}, {7 * day, "month"}, {30 * day - 1us, "month"}, {30 * day, "older"},
        {4000 * day, "older"}};
    const Instant installed = test::instant("2026-03-01T09:30:00Z");
    for (const auto& [age, bucket] : rows)
        EXPECT_EQ(TelemetryBuckets::installAge(installed, installed + age), bucket) << age.count();
}

TEST(TelemetryBuckets, theDaysOfCountingAreOneAWeekOrMore)
{
    constexpr auto day = std::chrono::days(1);
    const std::pair<std::chrono::microseconds, const char*> rows[] = {
        {-day, "1"},      {0us, "1"},       {2 * day - 1us, "1"},
        {2 * day, "2-7"}, {7 * day, "2-7"}, {8 * day - 1us, "2-7"},
        {8 * day, "8+"},  {90 * day, "8+"}};
    const Instant since = test::instant("2026-03-01T09:30:00Z");
    for (const auto& [span, bucket] : rows)
        EXPECT_EQ(TelemetryBuckets::countingDays(since, since + span), bucket) << span.count();
}

TEST(TelemetryBuckets, theEndsOfTimeAreFarApartAndNothingOverflows)
{
    const Instant first = test::instant("0001-01-01T00:00:00Z");
    const Instant last = test::instant("9999-12-31T23:59:59Z");
    EXPECT_EQ(TelemetryBuckets::installAge(first, last), "older");
    EXPECT_EQ(TelemetryBuckets::installAge(last, first), "new");
    EXPECT_EQ(TelemetryBuckets::countingDays(first, last), "8+");
    EXPECT_EQ(TelemetryBuckets::countingDays(last, first), "1");
}

TEST(TelemetryBuckets, theWorstCategoryIsTheFirstOfTheListWhateverCameFirst)
{
    const std::vector<std::string> gravestFirst = {
        "no_service", "keychain_read_fail", "token_expired",  "usage_403",  "usage_401",
        "usage_429",  "usage_http_error",   "transport_fail", "parse_fail", "cache_write_fail"};
    std::vector<std::string> categories(gravestFirst.rbegin(), gravestFirst.rend());
    for (const std::string& worst : gravestFirst) {
        EXPECT_EQ(TelemetryBuckets::worstCategory(categories), worst);
        categories.pop_back();
    }
    EXPECT_EQ(TelemetryBuckets::worstCategory({}), "none");
    EXPECT_EQ(TelemetryBuckets::worstCategory({"usage_500", ""}), "none");
    EXPECT_EQ(TelemetryBuckets::worstCategory({"usage_500", "parse_fail"}), "parse_fail");
}

TEST(TelemetryBuckets, aSwitchIsYesOrNo)
{
    EXPECT_EQ(TelemetryBuckets::yesOrNo(true), "yes");
    EXPECT_EQ(TelemetryBuckets::yesOrNo(false), "no");
}

} // namespace vellumor::telemetryBucketsTest
