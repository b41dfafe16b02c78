#pragma once

#include "usage/model/LimitWindow.h"

#include <optional>
#include <string>

// ResetTooltip: when a limit resets, in words. Always in English. Pure, but for the time zone.
namespace vellumor::ResetTooltip {

// What the pointer over a row is told; nothing when there is nothing to tell. `estimatedReset`: as
// history/ResetAnchor.h works it out.
[[nodiscard]] std::optional<std::string> text(const LimitWindow& window,
                                              std::optional<Instant> estimatedReset, Instant now);

// "today at 3:05 PM", "tomorrow at …", "Friday at …" up to six days ahead, "Nov 28 at …" otherwise.
[[nodiscard]] std::string instant(Instant date, Instant now);

} // namespace vellumor::ResetTooltip
