#pragma once

#include "base/Environment.h"

#include <string>

namespace vellumor::SessionBus {

// The address to use: DBUS_SESSION_BUS_ADDRESS if set, else the user's own bus under
// XDG_RUNTIME_DIR if it is there, else one that cannot be reached. Without it the bus libraries
// would start a bus of their own.
[[nodiscard]] std::string address(const Environment& environment);

// Puts that address into the process environment. Before any thread is started.
void pinAddress(const Environment& environment);

} // namespace vellumor::SessionBus
