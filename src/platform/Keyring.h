#pragma once

#include "base/SecretBytes.h"

#include <string>
#include <vector>

namespace vellumor {

// What reading one credential item gave: one set of numbers for both sources, the keyring and the
// file, so that one decoding step serves both.
struct RawCredential {
    static constexpr int found = 0;
    static constexpr int absent = 44;
    static constexpr int denied = 45;
    static constexpr int failed = -1;

    int status = absent; // one of the above, or another number: an error of the system
    SecretBytes secret;  // only when found
};

// The desktop's keyring. Every call may block for seconds, never asks the user anything, never
// unlocks, and may come from any thread but the main one.
class Keyring {
public:
    virtual ~Keyring() = default;

    // The `service` attributes of all items, in any order; besides, those of `expected` that have
    // an item, which a keyring that was never unlocked does not list. Never reads a secret.
    [[nodiscard]] virtual std::vector<std::string>
    services(const std::vector<std::string>& expected) = 0;

    // The secret of the item whose attribute `service` is this one. A locked item is `denied` at
    // once.
    [[nodiscard]] virtual RawCredential read(const std::string& service) = 0;
};

} // namespace vellumor
