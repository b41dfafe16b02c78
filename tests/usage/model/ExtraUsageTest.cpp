#include "usage/model/ExtraUsage.h"

#include <gtest/gtest.h>

namespace vellumor::extraUsageTest {

namespace {

using Display = ExtraUsage::CreditDisplay;

ExtraUsage enabled()
{
    ExtraUsage extra;
    extra.isEnabled = true;
    return extra;
}

} // namespace

TEST(ExtraUsage, theCreditsAreExhaustedWhenTheServerSaysSoOrTheLimitIsSpent)
{
    struct Row {
        bool isEnabled;
        std::optional<bool> reached;
        std::optional<double> used;
        std::optional<double> limit;
        Display display;
    };
    const Row rows[] = {
        {false, {}, {}, {}, Display::hidden},        {true, {}, {}, {}, Display::normal},
        {false, true, {}, {}, Display::exhausted},   {true, true, 0, 5000, Display::exhausted},
        {false, false, {}, {}, Display::hidden},     {true, false, 5000, 5000, Display::exhausted},
        {false, {}, 5000, 5000, Display::exhausted}, {false, {}, 5001, 5000, Display::exhausted},
        {true, {}, 4999.99, 5000, Display::normal},  {false, {}, 4999.99, 5000, Display::hidden},
        {true, {}, 0, 0, Display::normal},           {true, {}, 10, 0, Display::normal},
        {true, {}, 10, -5, Display::normal},         {true, {}, 0, -5, Display::normal},
        {true, {}, -5, -10, Display::normal},        {true, {}, 5000, {}, Display::normal},
        {true, {}, {}, 5000, Display::normal},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(&row - rows);
        ExtraUsage extra;
        extra.isEnabled = row.isEnabled;
        extra.spendLimitReached = row.reached;
        extra.usedCredits = row.used;
        extra.monthlyLimit = row.limit;
        EXPECT_EQ(extra.display(), row.display);
        EXPECT_EQ(extra.creditsLine().has_value(), row.display != Display::hidden);
    }
}

TEST(ExtraUsage, threeCurrenciesHaveASymbolAndAnyOtherItsCodeAndABlank)
{
    ExtraUsage extra;
    EXPECT_EQ(extra.currencySymbol(), "");
    for (const auto& [code, symbol] :
         {std::pair("EUR", "€"), std::pair("USD", "$"), std::pair("GBP", "£"),
          std::pair("CHF", "CHF "), std::pair("eur", "eur "), std::pair("", " ")}) {
        extra.currency = code;
        EXPECT_EQ(extra.currencySymbol(), symbol);
    }
}

TEST(ExtraUsage, anAmountHasTheDecimalsOfItsCurrencyAndTwoWithoutAnyWord)
{
    struct Row {
        std::optional<int> places;
        double minorUnits;
        const char* text;
    };
    const Row rows[] = {
        {{}, 1250, "12.50"},
        {2, 1250, "12.50"},
        {0, 1250, "1250"},
        {3, 1250, "1.250"},
        {2, 0, "0.00"},
        {2, 5, "0.05"},
        {2, 1234.5, "12.35"},
        {4, 1, "0.0001"},
        {-1, 1250, "1250"},
        {-2147483647, 7, "7"},
        {12, 1, "0.000000000001"},
        {13, 5e12, "0.500000000000"},
        {13, 1, "0.000000000000"},
        {1000, 1, "0.000000000000"},
        {2, 123456789012, "1234567890.12"},
    };
    for (const auto& [places, minorUnits, text] : rows) {
        SCOPED_TRACE(text);
        ExtraUsage extra;
        extra.decimalPlaces = places;
        EXPECT_EQ(extra.amountText(minorUnits), text);
    }
}

TEST(ExtraUsage, theLineTellsWhatIsUsedOfTheLimit)
{
    ExtraUsage extra = enabled();
    extra.usedCredits = 1250;
    extra.currency = "EUR";
    extra.monthlyLimit = 5000;
    EXPECT_EQ(extra.creditsLine(), "Usage credits · €12.50 of €50.00");
    extra.currency = "CHF";
    EXPECT_EQ(extra.creditsLine(), "Usage credits · CHF 12.50 of CHF 50.00");
    extra.currency = "JPY";
    extra.decimalPlaces = 0;
    EXPECT_EQ(extra.creditsLine(), "Usage credits · JPY 1250 of JPY 5000");
}

TEST(ExtraUsage, theLineTellsWhatIsSpentWhenThereIsNoLimit)
{
    EXPECT_EQ(enabled().creditsLine(), "Usage credits · 0.00 spent");
    ExtraUsage extra = enabled();
    extra.usedCredits = 99;
    extra.currency = "USD";
    EXPECT_EQ(extra.creditsLine(), "Usage credits · $0.99 spent");
}

TEST(ExtraUsage, theLineOfASpentLimitSaysSoEvenWhenTheBlockIsSwitchedOff)
{
    ExtraUsage extra;
    extra.usedCredits = 5000;
    extra.monthlyLimit = 5000;
    extra.currency = "EUR";
    EXPECT_EQ(extra.creditsLine(), "Usage credits · €50.00 of €50.00 — limit reached");
}

TEST(ExtraUsage, aSpendLimitThatIsReachedIsToldWithoutAnyAmount)
{
    ExtraUsage extra;
    extra.spendLimitReached = true;
    EXPECT_EQ(extra.creditsLine(), "Usage credits · 0.00 spent — limit reached");
}

} // namespace vellumor::extraUsageTest
