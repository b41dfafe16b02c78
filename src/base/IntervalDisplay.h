#pragma once

#include <string>

namespace vellumor::IntervalDisplay {

// A refresh interval for people: "45s", "2 min", "1 min 30s". Rounded to whole seconds.
[[nodiscard]] std::string shortText(double seconds);

} // namespace vellumor::IntervalDisplay
