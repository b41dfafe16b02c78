#pragma once

#include <optional>
#include <string>

namespace vellumor {

// The usage-credits block of a reading. Amounts are in the currency's minor units.
struct ExtraUsage {
    enum class CreditDisplay { hidden, normal, exhausted };

    bool isEnabled = false;
    std::optional<double> usedCredits;
    std::optional<std::string> currency; // ISO 4217
    std::optional<int> decimalPlaces;    // of the currency; 2 when absent
    std::optional<double> monthlyLimit;
    std::optional<double> utilization; // as the server tells it
    std::optional<bool> userDisabled;
    std::optional<bool> spendLimitReached;
    std::optional<bool> creditsEverEnabled;

    bool operator==(const ExtraUsage&) const = default;

    // A block that is switched off can still be exhausted.
    [[nodiscard]] CreditDisplay display() const;
    // What stands before an amount: "€", "CHF ", or nothing without a currency.
    [[nodiscard]] std::string currencySymbol() const;
    // An amount in minor units with its decimals: 1250 gives "12.50".
    [[nodiscard]] std::string amountText(double minorUnits) const;
    // "Usage credits · €12.50 of €50.00", or nothing when hidden.
    [[nodiscard]] std::optional<std::string> creditsLine() const;
};

} // namespace vellumor
