#include "app/state/NewAccountNotice.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vellumor {

std::optional<std::string> NewAccountNotice::text(const std::vector<std::string>& names)
{
    if (names.empty())
        return std::nullopt;
    if (names.size() == 1)
        return "New account discovered · " + names[0];
    return fmt::format("{} new accounts discovered · {}", names.size(), fmt::join(names, ", "));
}

} // namespace vellumor
