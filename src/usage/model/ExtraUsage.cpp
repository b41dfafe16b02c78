#include "usage/model/ExtraUsage.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

// No currency has more than 4; a hostile number must not fill the screen.
constexpr int mostPrintedPlaces = 12;

} // namespace

ExtraUsage::CreditDisplay ExtraUsage::display() const
{
    if (spendLimitReached == true)
        return CreditDisplay::exhausted;
    if (usedCredits && monthlyLimit && *usedCredits > 0 && *monthlyLimit > 0 &&
        *usedCredits >= *monthlyLimit)
        return CreditDisplay::exhausted;
    return isEnabled ? CreditDisplay::normal : CreditDisplay::hidden;
}

std::string ExtraUsage::currencySymbol() const
{
    if (!currency)
        return {};
    if (*currency == "EUR")
        return "€";
    if (*currency == "USD")
        return "$";
    if (*currency == "GBP")
        return "£";
    return *currency + " ";
}

std::string ExtraUsage::amountText(double minorUnits) const
{
    const int places = std::max(decimalPlaces.value_or(2), 0);
    return fmt::format("{:.{}f}", minorUnits / std::pow(10.0, places),
                       std::min(places, mostPrintedPlaces));
}

std::optional<std::string> ExtraUsage::creditsLine() const
{
    const CreditDisplay shown = display();
    if (shown == CreditDisplay::hidden)
        return std::nullopt;
    const std::string symbol = currencySymbol();
    std::string line = "Usage credits · " + symbol + amountText(usedCredits.value_or(0));
    if (monthlyLimit)
        line += " of " + symbol + amountText(*monthlyLimit);
    else
        line += " spent";
    if (shown == CreditDisplay::exhausted)
        line += " — limit reached";
    return line;
}

} // namespace vellumor
