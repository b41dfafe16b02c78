#pragma once

#include "base/Instant.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// TelemetryBuckets: the coarse values that stand for exact ones. Pure.
namespace vellumor::TelemetryBuckets {

// The Gregorian day in UTC: "2026-03-01".
[[nodiscard]] std::string utcDay(Instant instant);

// "0", "1-5", "6-20" or "20+".
[[nodiscard]] std::string_view count(int count);

// "0", "1", "2", "3-4" or "5+".
[[nodiscard]] std::string_view accounts(std::size_t count);

// By whole days from the installation to now: "new", "week", "month" or "older". One that lies
// ahead is new.
[[nodiscard]] std::string_view installAge(Instant installedAt, Instant now);

// By whole days from the start of counting to now: "1", "2-7" or "8+".
[[nodiscard]] std::string_view countingDays(Instant since, Instant now);

// The gravest category of failures among them; "none" when none is known.
[[nodiscard]] std::string_view worstCategory(const std::vector<std::string>& categories);

[[nodiscard]] std::string_view yesOrNo(bool value);

} // namespace vellumor::TelemetryBuckets
