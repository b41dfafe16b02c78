#pragma once

#include "app/state/AccountUsageState.h"

#include <optional>
#include <string>

// What is said of an account besides its numbers. Pure.
namespace vellumor {

namespace RevivalNote {
[[nodiscard]] std::string text(RevivalStatus revival);
}

namespace StatusNote {

// Why the numbers shown are not the latest; nothing for an account without a reading, with a
// revival, or of which all is well.
[[nodiscard]] std::optional<std::string> text(const AccountUsageState& state, bool isStale);

// Why there are no numbers; nothing when there are some, or nothing has gone wrong.
[[nodiscard]] std::optional<std::string> reason(const AccountUsageState& state);

// "Couldn’t update usage numbers", with the status of an answer.
[[nodiscard]] std::string couldNotUpdate(const UsageFetchError& error);

} // namespace StatusNote

} // namespace vellumor
