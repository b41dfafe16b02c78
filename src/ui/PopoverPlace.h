#pragma once

#include <QRect>

#include <optional>

// PopoverPlace: where the popover stands. Pure.
namespace vellumor::PopoverPlace {

// A window of `size` beside `anchor`: under it where it lies in the upper half of the screen, above
// it otherwise, in its middle, and always within `available`, the part of the screen that panels
// leave free. Without an anchor, or with one that lies on no screen, the upper right corner.
[[nodiscard]] QRect rect(const std::optional<QRect>& anchor, QSize size, const QRect& available);

} // namespace vellumor::PopoverPlace
