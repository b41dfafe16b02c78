#pragma once

#include "base/Environment.h"
#include "platform/linux/GioCall.h"
#include "status/StatusReport.h"

#include <optional>

namespace vellumor {

// The running program, by the session bus. Starts neither a bus nor the program.
class BusClient {
public:
    static constexpr const char* name = "dev.quorle.vellumor";
    static constexpr const char* path = "/dev/quorle/vellumor";
    static constexpr const char* interface = "dev.quorle.Vellumor1";

    // Joins the bus; blocks for some seconds at most.
    explicit BusClient(const Environment& environment);

    // Null pointer where there is no bus.
    [[nodiscard]] GDBusConnection* connection() const { return m_connection.get(); }
    // What the program tells now; nothing where none runs that could. Blocks for some seconds at
    // most.
    [[nodiscard]] std::optional<StatusReport> report() const;

private:
    Object<GDBusConnection> m_connection;
};

} // namespace vellumor
