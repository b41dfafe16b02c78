#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vellumor::NewAccountNotice {

// The popover's line about accounts that a scan has found for the first time; nothing for none.
[[nodiscard]] std::optional<std::string> text(const std::vector<std::string>& names);

} // namespace vellumor::NewAccountNotice
