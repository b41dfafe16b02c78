#pragma once

#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"
#include "support/private_bus/PrivateBus.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>

namespace vellumor::test {

// The real program on a session bus of the test's own, over which it says what it shows, and an
// endpoint that answers with one limit.
struct BusWorld {
    ProgramWorld world;
    PrivateBus bus{world.folder.makeFolder("bus")};
    int percent = 62;
    Reaction reaction; // in the place of an answer with `percent`, where it is not an empty answer
    LoopbackServer server{[this](const SeenRequest&) { return answer(); }};

    BusWorld()
    {
        world.environment["QT_QPA_PLATFORM"] = "offscreen";
        world.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.environment["VELLUMOR_API_BASE"] =
            "http://127.0.0.1:" + std::to_string(server.port());
    }

    // The program's clock runs so many times faster. It takes what it is preloaded for from here.
    void hasten(int times)
    {
        std::string& preloaded = world.environment["LD_PRELOAD"];
        preloaded = preloaded.empty() ? VELLUMOR_FAKETIME : VELLUMOR_FAKETIME ":" + preloaded;
        world.environment["FAKETIME"] = "+0 x" + std::to_string(times);
        world.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0"; // it is not the first
    }
    [[nodiscard]] Answer reading() const
    {
        return {200,
                {},
                R"({"limits":[{"kind":"session","group":"session","percent":)" +
                    std::to_string(percent) + "}]}"};
    }
    [[nodiscard]] std::size_t requests() const { return server.requests().size(); }
    // All that it tells of its accounts, as dbus-send prints it; empty without an answer.
    [[nodiscard]] std::string shown() const
    {
        return call("org.freedesktop.DBus.Properties.GetAll", {"string:dev.quorle.Vellumor1"})
            .value_or("");
    }
    [[nodiscard]] bool waitUntilShown(const std::string& text) const
    {
        return ProgramWorld::waitUntil(
            [&] { return shown().find('"' + text + '"') != std::string::npos; });
    }
    // Has every account fetched, as soon as the program lets anybody have that again.
    [[nodiscard]] bool refresh() const
    {
        bool isAdmitted = false;
        return ProgramWorld::waitUntil([&] {
            isAdmitted = isAdmitted || call("dev.quorle.Vellumor1.Refresh");
            return isAdmitted;
        });
    }

private:
    [[nodiscard]] Reaction answer() const
    {
        const auto* const plain = std::get_if<Answer>(&reaction);
        return plain != nullptr && plain->body.empty() ? Reaction(reading()) : reaction;
    }
    [[nodiscard]] std::optional<std::string>
    call(const std::string& member, const std::vector<std::string>& arguments = {}) const
    {
        try {
            return bus.call("dev.quorle.vellumor", "/dev/quorle/vellumor", member, arguments);
        } catch (const std::runtime_error&) {
            return std::nullopt;
        }
    }
};

} // namespace vellumor::test
