#pragma once

#include "accounts/DiscoveredFacts.h"
#include "accounts/KeychainServiceResolver.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

class KeychainReader;
class ServiceDirectories;

// Which Claude Code config directories exist on this machine, who is signed in to each, and in what
// state its credential is. Touches no network. It reaches the world through its functions alone;
// run() blocks and stays off the main thread.
struct AccountDiscovery {
    std::string home;

    std::function<std::optional<std::vector<std::string>>()>
        listConfigDirs; // nothing: the scan failed
    std::function<bool(const std::string& path)> fileExists;
    std::function<std::optional<std::string>(const std::string& path)> readFile;
    std::function<std::vector<std::string>()> enumerateServices; // called once for each scan
    std::function<std::optional<std::string>(const std::string& dir)> overrideFor;
    std::function<bool(const std::string& dir)>
        forceInclude; // known directories stay visible without an account
    std::function<KeychainServiceResolver::Probe(const std::string& service)> probe;

    [[nodiscard]] DiscoveryResult run() const;

    // The real one. Tells `directories` what it finds before it asks for services. What is borrowed
    // outlives it.
    [[nodiscard]] static AccountDiscovery live(DiscoveryInputs inputs, const std::string& home,
                                               ServiceDirectories& directories,
                                               const KeychainReader& keychain);

    // The folders in `home` that are named ".claude" or ".claude-" and more, in composed Unicode
    // and sorted. Nothing when the home folder cannot be listed.
    [[nodiscard]] static std::optional<std::vector<std::string>>
    homeConfigDirs(const std::string& home);

private:
    [[nodiscard]] std::optional<DiscoveredFacts>
    factsOf(const KeychainServiceResolver::Choices& choices) const;
    [[nodiscard]] std::string identityPath(const std::string& dir) const;
};

} // namespace vellumor
