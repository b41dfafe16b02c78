#pragma once

#include "support/private_bus/ChildProcess.h"

#include <memory>
#include <string>
#include <vector>

namespace vellumor::test {

// A session bus of the test's own, on a socket in a folder of the test's. It starts no service but
// those that it is told of, and ends with this object.
class PrivateBus {
public:
    // A program that the bus starts when the name is called and has no owner.
    struct Activatable {
        std::string name;
        std::string command;
    };
    enum class Services { own, system };
    struct Options {
        std::vector<Activatable> activatable = {};
        Services services = Services::own; // system: the installed ones may be started, too
        Environment environment = {};      // added to, or in the place of, the one made here
    };

    // Everything lies in `folder`, which outlives the bus. Throws std::runtime_error when the bus
    // does not start.
    explicit PrivateBus(const std::string& folder);
    PrivateBus(const std::string& folder, const Options& options);

    // Waits until the name has an owner; throws std::runtime_error after 20 seconds.
    void waitFor(const std::string& name) const;
    // Calls a method and gives the printed reply; throws std::runtime_error when the reply is an
    // error. `member` has the interface's name before it; the arguments have the form of dbus-send.
    // May start an activatable service.
    std::string call(const std::string& destination, const std::string& path,
                     const std::string& member,
                     const std::vector<std::string>& arguments = {}) const;
    void stop() { m_daemon.reset(); }
    // Ends it without a word to those who are on it.
    void kill() const;
    // Stops the bus from answering, without closing anything.
    void freeze() const;
    void thaw() const; // it goes on

    [[nodiscard]] const std::string& address() const { return m_address; }
    // For programs that run on this bus: home and all folders of the user below `folder`.
    [[nodiscard]] const Environment& environment() const { return m_environment; }
    // A program on this bus, whose output goes to the file `logName` in the folder.
    [[nodiscard]] ChildProcess::Command command(std::vector<std::string> arguments,
                                                const std::string& logName) const;
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder + "/" + name; }

private:
    std::string m_folder;
    std::string m_address;
    Environment m_environment;
    std::unique_ptr<ChildProcess> m_daemon;
};

} // namespace vellumor::test
