#pragma once

#include "accounts/ClaudeCredentials.h"
#include "accounts/KeychainServiceResolver.h"
#include "base/Clock.h"
#include "platform/Keyring.h"
#include "store/FileReader.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vellumor {

// Which config directory holds the credential file of a service. Each scan tells the directories
// anew; reading is safe from any thread.
class ServiceDirectories {
public:
    explicit ServiceDirectories(std::string home)
        : m_home(std::move(home))
    {
    }

    void rebuild(const std::vector<std::string>& configDirs);
    [[nodiscard]] std::optional<std::string> directoryOf(const std::string& service) const;
    // Every service name under which one of the directories may have a credential.
    [[nodiscard]] std::vector<std::string> expectedServices() const;
    // Service to directory, for the directories that are known.
    [[nodiscard]] std::map<std::string, std::string> all() const;

private:
    std::string m_home;
    mutable std::mutex m_mutex;
    std::map<std::string, std::string> m_directoryByService; // guarded by m_mutex
    std::vector<std::string> m_expected;                     // guarded by m_mutex
};

// Claude Code's credentials, read only and never kept: from the file in the config directory, else
// from the desktop's keyring. Every call may block, so none comes from the main thread.
class KeychainReader {
public:
    using Result = std::variant<ClaudeCredentials, KeychainError>;

    struct Sources {
        std::function<SecretFileContents(const std::string& path, SecretBytes& memory)> readFile;
        std::function<bool(const std::string& path)> fileExists;
        std::function<void()> beforeRereading; // waits until a writer has had time to finish
        Sources();
    };

    // Everything borrowed outlives the reader.
    KeychainReader(const ServiceDirectories& directories, Keyring& keyring, const Clock& clock,
                   Sources sources = Sources());

    // The services that exist in either source: sorted, each once, and only those that name
    // themselves as Claude Code's.
    [[nodiscard]] std::vector<std::string> enumerateClaudeServices() const;

    // The file first, then the keyring.
    [[nodiscard]] Result readCredentials(const std::string& service) const;

    // The state of one service's credential, without the token. A scan hands the same `memory` from
    // one probe to the next.
    [[nodiscard]] KeychainServiceResolver::Probe probe(const std::string& service,
                                                       SecretBytes& memory) const;
    [[nodiscard]] KeychainServiceResolver::Probe probe(const std::string& service) const;

private:
    [[nodiscard]] Result credentialsIn(const std::string& service, SecretBytes& memory) const;
    [[nodiscard]] std::optional<Result> readCredentialFile(const std::string& dir,
                                                           SecretBytes& memory) const;

    const ServiceDirectories& m_directories;
    Keyring& m_keyring;
    const Clock& m_clock;
    Sources m_sources;
};

} // namespace vellumor
