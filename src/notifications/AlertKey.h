#pragma once

#include "base/Instant.h"

#include <initializer_list>
#include <string>
#include <string_view>

// AlertKey: what one alert is remembered by, so that it is raised once for one period of a window.
// Pure.
namespace vellumor::AlertKey {

// The parts and the whole seconds of `period`, cut off towards zero, with "|" between them:
// "k3f9qz|reset|session|1774785600".
[[nodiscard]] std::string of(std::initializer_list<std::string_view> parts, Instant period);

// Eight days after the period that it names. A key that ends in no number never is.
[[nodiscard]] bool isOutlived(std::string_view key, Instant now);

} // namespace vellumor::AlertKey
