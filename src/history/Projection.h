#pragma once

#include <optional>
#include <string_view>

// Projection: what the present pace of a limit leads to. Pure: no clock, no files, no state;
// callable from any thread.
namespace vellumor::Projection {

// How long a window runs, in seconds: 18000 for the session family, 604800 for the weekly family,
// nothing for a window of neither.
[[nodiscard]] std::optional<double> windowLength(std::string_view kind, std::string_view group);

} // namespace vellumor::Projection
