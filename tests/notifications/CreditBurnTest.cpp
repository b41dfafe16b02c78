#include "notifications/CreditBurn.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::creditBurnTest {
namespace {

Usage spent(std::optional<double> usedCredits)
{
    Usage usage;
    usage.extraUsage = ExtraUsage{};
    usage.extraUsage->usedCredits = usedCredits;
    return usage;
}

bool isCrossed(const Usage& before, const Usage& now)
{
    return CreditBurn::creditBurnCrossed(&before, now);
}

TEST(CreditBurn, beginsWhenNothingHadBeenSpentAndSomethingHasNow)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        std::optional<double> before;
        std::optional<double> now;
        bool isCrossed;
    };
    const Row rows[] = {
        {0, 0, false},       {0, 1.5, true},  {0, 5e-324, true}, {1.5, 2, false},
        {1.5, 0, false},     {-0.0, 1, true}, {-5, 1, true},     {-5, 0, false},
        {5e-324, 1, false},  {{}, 1, false},  {0, {}, false},    {{}, {}, false},
        {0, infinity, true}, {0, nan, false}, {nan, 1, false},   {-infinity, 1e300, true},
        {0, -1, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.before.value_or(-99)) + " to " +
                     std::to_string(row.now.value_or(-99)));
        EXPECT_EQ(isCrossed(spent(row.before), spent(row.now)), row.isCrossed);
    }
}

TEST(CreditBurn, withoutAReadingBeforeOrABlockOnEitherSideNothingBegins)
{
    EXPECT_FALSE(CreditBurn::creditBurnCrossed(nullptr, spent(1)));
    EXPECT_FALSE(isCrossed(Usage{}, spent(1)));
    EXPECT_FALSE(isCrossed(spent(0), Usage{}));
}

// A new month begins at zero.
TEST(CreditBurn, aFallToZeroArmsItAgain)
{
    const double stream[] = {0, 1.5, 2, 0, 0.5, 0.7};
    int begun = 0;
    for (std::size_t i = 1; i < std::size(stream); ++i)
        begun += isCrossed(spent(stream[i - 1]), spent(stream[i])) ? 1 : 0;
    EXPECT_EQ(begun, 2);
}

struct AmountRow {
    std::optional<double> used;
    std::optional<double> limit;
    std::optional<std::string> currency;
    std::optional<int> places;
    const char* expected; // behind the words that are always there
};

TEST(CreditBurn, theWordsTellWhatHasBeenSpent)
{
    const AmountRow rows[] = {
        {50, 2000, "EUR", {}, " (€0.50 of €20.00)"},
        {150, {}, "USD", {}, " ($1.50 spent)"},
        {150, {}, {}, {}, " (1.50 spent)"},
        {150, 5000, {}, 2, " (1.50 of 50.00)"},
        {150, {}, "GBP", 0, " (£150 spent)"},
        {150, 9000, "JPY", 0, " (JPY 150 of JPY 9000)"},
        {1234, {}, "KWD", 3, " (KWD 1.234 spent)"},
        {150, {}, "eur", 2, " (eur 1.50 spent)"},
        {150, {}, "", 2, " ( 1.50 spent)"},
        {1, 0, "EUR", 2, " (€0.01 of €0.00)"},
        {0, {}, "EUR", 2, " (€0.00 spent)"},
        {{}, 2000, "EUR", 2, ""},
        {123456789, {}, "USD", 2, " ($1234567.89 spent)"},
    };
    for (const AmountRow& row : rows) {
        Usage usage = spent(row.used);
        usage.extraUsage->monthlyLimit = row.limit;
        usage.extraUsage->currency = row.currency;
        usage.extraUsage->decimalPlaces = row.places;
        EXPECT_EQ(CreditBurn::body(usage, "Work"),
                  std::string("Work · usage limit reached — now spending usage credits") +
                      row.expected);
    }
    EXPECT_EQ(CreditBurn::body(Usage{}, "Work"),
              "Work · usage limit reached — now spending usage credits");
}

TEST(CreditBurn, numbersOfDecimalsThatNoCurrencyHasFillNoScreen)
{
    for (const int places : {-2147483647 - 1, -1, 13, 1000, 2147483647}) {
        Usage usage = spent(150);
        usage.extraUsage->decimalPlaces = places;
        EXPECT_LT(CreditBurn::body(usage, "Work").size(), 100) << places;
    }
}

} // namespace
} // namespace vellumor::creditBurnTest
