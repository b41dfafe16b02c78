#pragma once

#include "base/Environment.h"

#include <string>
#include <string_view>

namespace vellumor::SessionBus {

// `address` without those entries that would start a bus where there is none. Entries stand apart
// by semicolons.
[[nodiscard]] std::string reachable(std::string_view address);

// The address to use: DBUS_SESSION_BUS_ADDRESS if set, else the user's own bus under
// XDG_RUNTIME_DIR if it is there, else one that cannot be reached. Without it the bus libraries
// would start a bus of their own; an entry that asks for that is left out.
[[nodiscard]] std::string address(const Environment& environment);

// Puts that address into the process environment. Before any thread is started.
void pinAddress(const Environment& environment);

} // namespace vellumor::SessionBus
