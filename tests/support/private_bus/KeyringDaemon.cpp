#include "support/private_bus/KeyringDaemon.h"

#include <utility>

namespace vellumor::test {

KeyringDaemon::KeyringDaemon(const PrivateBus& bus, Start start)
    : m_bus(bus)
{
    auto command = bus.command({"gnome-keyring-daemon", "--foreground", "--components=secrets",
                                "--control-directory=" + bus.file("run/keyring")},
                               "keyring.log");
    if (start == Start::unlocked) {
        command.arguments.emplace_back("--unlock");
        command.input = "\n"; // the password; a first start makes the keyring with it
    }
    m_daemon = std::make_unique<ChildProcess>(command);
    bus.waitFor("org.freedesktop.secrets");
}

void KeyringDaemon::store(const std::string& service, const std::string& secret) const
{
    auto command = m_bus.command({"secret-tool", "store", "--label=" + service, "service", service},
                                 "store.log");
    command.input = secret;
    runToEnd(command);
}

void KeyringDaemon::lock() const
{
    m_bus.call("org.freedesktop.secrets", "/org/freedesktop/secrets",
               "org.freedesktop.Secret.Service.Lock",
               {"array:objpath:/org/freedesktop/secrets/collection/login"});
}

} // namespace vellumor::test
