#pragma once

#include "base/Instant.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// Stagger: spreads the fetches of all accounts over the interval. Pure.
namespace vellumor::Stagger {

// The account whose turn it is: the one whose last attempt lies furthest back, never tried ones
// first, of equal ones the first. Nothing without ids.
[[nodiscard]] std::optional<std::string>
nextTarget(const std::vector<std::string>& ids, const std::map<std::string, Instant>& lastAttempt);

// "refreshing every ~3 min", where more accounts than the chosen interval has room for have raised
// it; nothing where they have not. Seconds.
[[nodiscard]] std::optional<std::string> cadenceNote(double effectiveInterval, double userInterval);

// The interval that is really kept, in seconds: a minute for each account that is polled, and never
// less than the chosen one.
[[nodiscard]] double effectiveInterval(double userInterval, std::size_t pollable);

} // namespace vellumor::Stagger
