#include "notifications/CreditBurn.h"

namespace vellumor::CreditBurn {

bool creditBurnCrossed(const Usage* previous, const Usage& current)
{
    if (previous == nullptr || !previous->extraUsage || !current.extraUsage)
        return false;
    const auto& before = previous->extraUsage->usedCredits;
    const auto& now = current.extraUsage->usedCredits;
    return before && now && *before <= 0.0 && *now > 0.0;
}

std::string body(const Usage& current, const std::string& accountName)
{
    std::string text = accountName + " · usage limit reached — now spending usage credits";
    if (!current.extraUsage || !current.extraUsage->usedCredits)
        return text;
    const ExtraUsage& credits = *current.extraUsage;
    const auto amount = [&](double minorUnits) {
        return credits.currencySymbol() + credits.amountText(minorUnits);
    };
    text += " (" + amount(*credits.usedCredits);
    return text + (credits.monthlyLimit ? " of " + amount(*credits.monthlyLimit) : " spent") + ")";
}

} // namespace vellumor::CreditBurn
