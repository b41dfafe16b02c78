#pragma once

#include "platform/Keyring.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace vellumor {

// The desktop's keyring, over the Secret Service of the session bus. It talks to a service that
// runs already and starts none; nothing is unlocked and no prompt is raised. With no bus or no
// service the keyring is empty; a service that does not answer in time has `failed`. Each call
// opens a connection of its own and waits in a loop of its own: calls may come from several threads
// at once, no main loop has to turn, and a bus that goes away takes nothing with it.
class SecretServiceKeyring final : public Keyring {
public:
    static constexpr std::chrono::milliseconds defaultTimeout{5000};
    // No credential is longer; whatever is, is not copied.
    static constexpr std::size_t maxSecretSize = std::size_t{8} * 1024 * 1024;

    // `busAddress` is the session bus's. It is never looked for anywhere else, and an entry that
    // would start a bus does not count. `timeout` holds for one whole call.
    explicit SecretServiceKeyring(std::string busAddress,
                                  std::chrono::milliseconds timeout = defaultTimeout)
        : m_busAddress(std::move(busAddress))
        , m_timeout(timeout)
    {
    }

    // After a time-out: those found until then.
    [[nodiscard]] std::vector<std::string>
    services(const std::vector<std::string>& expected) override;
    [[nodiscard]] RawCredential read(const std::string& service) override;

private:
    std::string m_busAddress;
    std::chrono::milliseconds m_timeout;
};

} // namespace vellumor
