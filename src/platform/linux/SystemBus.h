#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace vellumor::SystemBus {

// How long a bus may take to answer a newcomer.
constexpr std::chrono::milliseconds patience{2000};

// A property of a service, by which it can be told whether the service answers.
struct Property {
    const char* service;
    const char* path;
    const char* interface;
    const char* name;
};

// Whether somebody listens at the system bus's address and says nothing, or the bus answers and the
// service of `property`, which runs, does not. Whoever joined such a bus, or asked such a service,
// would wait long or for good, so it is better left alone. A service that does not run is not
// started, and is no silence. Blocks for `limit` at most. `address` as DBUS_SYSTEM_BUS_ADDRESS has
// it; empty for the usual one.
[[nodiscard]] bool isSilent(const std::string& address,
                            const std::optional<Property>& property = std::nullopt,
                            std::chrono::milliseconds limit = patience);

} // namespace vellumor::SystemBus
