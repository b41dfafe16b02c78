#pragma once

#include <chrono>
#include <string>

namespace vellumor::SystemBus {

// How long a bus may take to answer a newcomer.
constexpr std::chrono::milliseconds patience{2000};

// Whether somebody listens at the system bus's address and says nothing. Whoever joined such a bus
// would wait for good, so it is better left alone. Blocks for `limit` at most. `address` as
// DBUS_SYSTEM_BUS_ADDRESS has it; empty for the usual one.
[[nodiscard]] bool isSilent(const std::string& address, std::chrono::milliseconds limit = patience);

} // namespace vellumor::SystemBus
