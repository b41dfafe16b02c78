#include "base/Format.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

namespace vellumor::formatDateTest {

namespace {

constexpr long long nineThirty = 1772357400000000; // 2026-03-01T09:30:00Z in microseconds

struct Row {
    const char* text;
    std::optional<long long> microseconds;
};

template <std::size_t count>
void expectParsed(const Row (&rows)[count])
{
    for (const auto& [text, microseconds] : rows) {
        SCOPED_TRACE(text);
        std::optional<long long> parsed;
        if (const auto instant = Format::parseISO8601(text))
            parsed = instant->time_since_epoch().count();
        EXPECT_EQ(parsed, microseconds);
    }
}

} // namespace

TEST(FormatDate, threeAndSixDigitsOfFractionAreKeptAndAnyOtherCountIsDropped)
{
    expectParsed({
        {"2026-03-01T09:30:00Z", nineThirty},
        {"2026-03-01T09:30:00.Z", nineThirty},
        {"2026-03-01T09:30:00.1Z", nineThirty},
        {"2026-03-01T09:30:00.12Z", nineThirty},
        {"2026-03-01T09:30:00.123Z", nineThirty + 123000},
        {"2026-03-01T09:30:00.1234Z", nineThirty},
        {"2026-03-01T09:30:00.12345Z", nineThirty},
        {"2026-03-01T09:30:00.123456Z", nineThirty + 123456},
        {"2026-03-01T09:30:00.1234567Z", nineThirty},
        {"2026-03-01T09:30:00.12345678Z", nineThirty},
        {"2026-03-01T09:30:00.123456789Z", nineThirty},
        {"2026-03-01T09:30:00.000001Z", nineThirty + 1},
        {"2026-03-01T09:30:00.999999+00:00", nineThirty + 999999},
    });
}

TEST(FormatDate, sevenDigitsOfFractionLoseTheFractionAndKeepTheOffset)
{
    expectParsed({
        {"2026-03-01T11:30:00.1234567+02:00", nineThirty},
        {"2026-03-01T04:00:00.1234567-05:30", nineThirty},
    });
}

// Whatever stands between the full stop and the zone goes, however many digits are in it.
TEST(FormatDate, aFractionThatIsNotDigitsAloneIsDroppedLikeAnyOther)
{
    expectParsed({
        {"2026-03-01T09:30:00.xZ", nineThirty},
        {"2026-03-01T09:30:00.12x+00:00", nineThirty},
        {"2026-03-01T09:30:00.123x+00:00", nineThirty},
        {"2026-03-01T09:30:00.123456xZ", nineThirty},
        {"2026-03-01T11:30:00.123 +02:00", nineThirty},
        {"2026-03-01T09:30:00.123x", std::nullopt},
        {"2026-03-01T09:30:00.123xz", std::nullopt},
        {"2026-03-01T09:30:00.123x+0200", std::nullopt},
    });
}

TEST(FormatDate, aDateWithoutAZoneIsRefusedWithAndWithoutAFraction)
{
    expectParsed({
        {"2026-03-01T09:30:00.125", std::nullopt},
        {"2026-03-01T09:30:00.1234567", std::nullopt},
        {"2026-03-01T09:30:00", std::nullopt},
    });
}

TEST(FormatDate, anOffsetIsTakenOffAndMayCrossADayOrAYear)
{
    expectParsed({
        {"2026-03-01T15:00:00+05:30", nineThirty},
        {"2026-02-28T21:30:00-12:00", nineThirty},
        {"2026-03-01T23:30:00+14:00", nineThirty},
        {"2026-03-01T09:30:00-00:00", nineThirty},
        {"2026-03-02T08:30:00.500+23:00", nineThirty + 500000},
        {"2026-01-01T00:30:00+01:00", 1767223800000000},
        {"2024-02-29T23:59:59-00:01", 1709251259000000},
    });
}

TEST(FormatDate, anOffsetHasASignTwoDigitsAColonAndTwoDigits)
{
    expectParsed({
        {"2026-03-01T09:30:00+0200", std::nullopt},
        {"2026-03-01T09:30:00+02", std::nullopt},
        {"2026-03-01T09:30:00+2:00", std::nullopt},
        {"2026-03-01T09:30:00+02:0", std::nullopt},
        {"2026-03-01T09:30:00+02:00:00", std::nullopt},
        {"2026-03-01T09:30:00+24:00", std::nullopt},
        {"2026-03-01T09:30:00+01:60", std::nullopt},
        {"2026-03-01T09:30:00 02:00", std::nullopt},
        {"2026-03-01T09:30:00UTC", std::nullopt},
        {"2026-03-01T09:30:00ZZ", std::nullopt},
        {"2026-03-01T09:30:00Z+02:00", std::nullopt},
        {"2026-03-01T09:30:00.125Z ", std::nullopt},
        {"2026-03-01T09:30:00.1234+0200", std::nullopt},
    });
}

TEST(FormatDate, lowerCaseLettersAreRefused)
{
    expectParsed({
        {"2026-03-01t09:30:00Z", std::nullopt},
        {"2026-03-01T09:30:00z", std::nullopt},
        {"2026-03-01T09:30:00.125z", std::nullopt},
        {"2026-03-01 09:30:00Z", std::nullopt},
    });
}

TEST(FormatDate, aDayOrTimeThatDoesNotExistIsRefused)
{
    expectParsed({
        {"2026-00-01T09:30:00Z", std::nullopt},
        {"2026-13-01T09:30:00Z", std::nullopt},
        {"2026-03-00T09:30:00Z", std::nullopt},
        {"2026-03-32T09:30:00Z", std::nullopt},
        {"2026-02-30T09:30:00Z", std::nullopt},
        {"2026-04-31T09:30:00Z", std::nullopt},
        {"2026-02-29T09:30:00Z", std::nullopt},
        {"2100-02-29T09:30:00Z", std::nullopt},
        {"2026-03-01T24:00:00Z", std::nullopt},
        {"2026-03-01T09:60:00Z", std::nullopt},
        {"2026-03-01T09:30:61Z", std::nullopt},
        {"2024-02-29T00:00:00Z", 1709164800000000},
        {"2000-02-29T00:00:00Z", 951782400000000},
    });
}

TEST(FormatDate, aLeapSecondIsRefused)
{
    expectParsed({
        {"2016-12-31T23:59:60Z", std::nullopt},
        {"2016-12-31T23:59:60.500Z", std::nullopt},
        {"2016-12-31T23:59:59Z", 1483228799000000},
    });
}

TEST(FormatDate, fieldsHaveTheirFullWidthAndNothingButDigits)
{
    expectParsed({
        {"", std::nullopt},
        {".", std::nullopt},
        {"Z", std::nullopt},
        {"2026-3-01T09:30:00Z", std::nullopt},
        {"26-03-01T09:30:00Z", std::nullopt},
        {"02026-03-01T09:30:00Z", std::nullopt},
        {"-026-03-01T09:30:00Z", std::nullopt},
        {"+2026-03-01T09:30:00Z", std::nullopt},
        {"2026-03-01T09:30Z", std::nullopt},
        {"2026-03-01", std::nullopt},
        {"20260301T093000Z", std::nullopt},
        {"2026-W09-7T09:30:00Z", std::nullopt},
        {"2026-03-01T09:30:0xZ", std::nullopt},
        {"2026-03-01T 9:30:00Z", std::nullopt},
        {"2026-03-01T09:30:-1Z", std::nullopt},
        {"2026-03-01T09:30:00,125Z", std::nullopt},
        {" 2026-03-01T09:30:00Z", std::nullopt},
        {"2026-03-01T09:30:00Z\n", std::nullopt},
        {"\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA6-03-01T09:30:00Z", std::nullopt},
    });
}

TEST(FormatDate, onlyMomentsInTheYears1To9999OfUtcAreTaken)
{
    expectParsed({
        {"0001-01-01T00:00:00Z", -62135596800000000},
        {"0000-12-31T23:59:59Z", std::nullopt},
        {"0001-01-01T00:00:00+00:01", std::nullopt},
        {"0001-01-01T00:00:00-00:01", -62135596740000000},
        {"9999-12-31T23:59:59.999999Z", 253402300799999999},
        {"9999-12-31T23:59:59-00:01", std::nullopt},
        {"9999-12-31T23:59:59+00:01", 253402300739000000},
    });
}

TEST(FormatDate, wholeSecondsAreReadWithoutAnyFraction)
{
    const auto parsed = Format::parseISO8601WholeSeconds("2026-03-01T11:30:00+02:00");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->time_since_epoch().count(), nineThirty);
    for (const char* text :
         {"2026-03-01T09:30:00.000Z", "2026-03-01T09:30:00.Z", "2026-03-01T09:30:00", ""}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Format::parseISO8601WholeSeconds(text), std::nullopt);
    }
}

TEST(FormatDate, whatIsWrittenIsReadBackToTheMillisecond)
{
    std::mt19937_64 random(20260301);
    std::uniform_int_distribution<long long> microseconds(-62135596800000000, 253402300799999999);
    for (int i = 0; i < 5000; ++i) {
        const Instant instant{std::chrono::microseconds(microseconds(random))};
        const std::string text = Format::isoFractional(instant);
        SCOPED_TRACE(text);
        const auto parsed = Format::parseISO8601(text);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(*parsed, std::chrono::floor<std::chrono::milliseconds>(instant));
        EXPECT_EQ(Format::parseISO8601WholeSeconds(Format::isoWholeSeconds(instant)),
                  std::chrono::floor<std::chrono::seconds>(instant));
    }
}

} // namespace vellumor::formatDateTest
