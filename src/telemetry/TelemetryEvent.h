#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

using TelemetryProperties = std::map<std::string, std::string, std::less<>>;

// One thing that happened and that the maker may learn of.
class TelemetryEvent {
public:
    enum class Kind {
        dayActive,
        crossPromoClicked,
        diagnostic,
        crashDetected,
        multiAccountReached,
        onboardingCompleted,
        switchToLocalOnly,
    };

    // Once a day, with the properties that TelemetrySpine makes.
    [[nodiscard]] static TelemetryEvent dayActive(TelemetryProperties spine);
    // The user followed the note on the sibling application.
    [[nodiscard]] static TelemetryEvent crossPromoClicked(std::string target);
    // A fetch failed; what is missing is left out.
    [[nodiscard]] static TelemetryEvent diagnostic(std::optional<std::string> category,
                                                   std::optional<std::string> layer);
    // The sweep has found a new crash report; `summary` is what its digest tells.
    [[nodiscard]] static TelemetryEvent crashDetected(TelemetryProperties summary);
    // Two accounts are known for the first time.
    [[nodiscard]] static TelemetryEvent multiAccountReached();
    [[nodiscard]] static TelemetryEvent onboardingCompleted();
    [[nodiscard]] static TelemetryEvent switchToLocalOnly();

    [[nodiscard]] Kind kind() const { return m_kind; }
    // "day_active"
    [[nodiscard]] std::string_view name() const;
    // True for what the user allows as diagnostics, false for product analytics.
    [[nodiscard]] bool isDiagnostics() const;
    [[nodiscard]] const TelemetryProperties& properties() const { return m_properties; }

    bool operator==(const TelemetryEvent&) const = default;

private:
    explicit TelemetryEvent(Kind kind, TelemetryProperties properties = {});

    Kind m_kind;
    TelemetryProperties m_properties;
};

} // namespace vellumor
