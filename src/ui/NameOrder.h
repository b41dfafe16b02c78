#pragma once

#include <string>

namespace vellumor {

// Whether the name `a` comes before `b` for the user: by the rules of the locale, upper and lower
// case alike.
[[nodiscard]] bool namesInOrder(const std::string& a, const std::string& b);

} // namespace vellumor
