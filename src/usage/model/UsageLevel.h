#pragma once

namespace vellumor {

// How near a limit is: calm below 75 percent, high from there, full from 90 on.
enum class UsageLevel { calm, high, full };
[[nodiscard]] UsageLevel usageLevel(double percent);
[[nodiscard]] const char* word(UsageLevel level); // "calm", "high", "full"

} // namespace vellumor
