#include "accounts/KeychainReader.h"

#include "accounts/DefaultAccount.h"
#include "store/DiskPath.h"

#include <chrono>
#include <iterator>
#include <set>
#include <thread>

namespace vellumor {

namespace {

using Kind = KeychainError::Kind;

std::string credentialFile(const std::string& dir)
{
    return dir + "/.credentials.json";
}

bool isClaudeService(const std::string& name)
{
    return name.starts_with("Claude Code") && name.find("-credentials") != std::string::npos;
}

bool isUndecodable(const KeychainReader::Result& result)
{
    const auto* error = std::get_if<KeychainError>(&result);
    return error != nullptr && error->kind == Kind::unexpectedData;
}

} // namespace

void ServiceDirectories::rebuild(const std::vector<std::string>& configDirs)
{
    std::map<std::string, std::string> directoryByService;
    std::vector<std::string> expected;
    for (const std::string& dir : configDirs) {
        auto candidates = DefaultAccount::serviceCandidates(dir, m_home);
        directoryByService.emplace(candidates.front(), dir); // that of the file is the first
        std::move(candidates.begin(), candidates.end(), std::back_inserter(expected));
    }
    const std::scoped_lock lock(m_mutex);
    m_directoryByService = std::move(directoryByService);
    m_expected = std::move(expected);
}

std::optional<std::string> ServiceDirectories::directoryOf(const std::string& service) const
{
    const std::scoped_lock lock(m_mutex);
    const auto found = m_directoryByService.find(service);
    if (found == m_directoryByService.end())
        return std::nullopt;
    return found->second;
}

std::vector<std::string> ServiceDirectories::expectedServices() const
{
    const std::scoped_lock lock(m_mutex);
    return m_expected;
}

std::map<std::string, std::string> ServiceDirectories::all() const
{
    const std::scoped_lock lock(m_mutex);
    return m_directoryByService;
}

KeychainReader::Sources::Sources()
    : readFile(
          [](const std::string& path, SecretBytes& memory) { return readSecretFile(path, memory); })
    , fileExists(DiskPath::exists)
    , beforeRereading([] { std::this_thread::sleep_for(std::chrono::milliseconds(100)); })
{
}

KeychainReader::KeychainReader(const ServiceDirectories& directories, Keyring& keyring,
                               const Clock& clock, Sources sources)
    : m_directories(directories)
    , m_keyring(keyring)
    , m_clock(clock)
    , m_sources(std::move(sources))
{
}

std::vector<std::string> KeychainReader::enumerateClaudeServices() const
{
    std::set<std::string> services;
    for (const auto& [service, dir] : m_directories.all()) {
        if (m_sources.fileExists(credentialFile(dir)))
            services.insert(service);
    }
    for (std::string& service : m_keyring.services(m_directories.expectedServices())) {
        if (isClaudeService(service))
            services.insert(std::move(service));
    }
    return {services.begin(), services.end()};
}

// Nothing when there is no such file.
std::optional<KeychainReader::Result> KeychainReader::readCredentialFile(const std::string& dir,
                                                                         SecretBytes& memory) const
{
    SecretFileContents contents = m_sources.readFile(credentialFile(dir), memory);
    switch (contents.status) {
    case ReadStatus::ok:
        return ClaudeCredentials::decode({RawCredential::found, std::move(contents.bytes)});
    case ReadStatus::missing:
        return std::nullopt;
    case ReadStatus::denied:
        return KeychainError{Kind::userDenied};
    case ReadStatus::unreadable:
        break;
    }
    return KeychainError{Kind::osStatus,
                         contents.error != 0 ? contents.error : RawCredential::failed};
}

KeychainReader::Result KeychainReader::readCredentials(const std::string& service) const
{
    SecretBytes memory;
    return credentialsIn(service, memory);
}

KeychainReader::Result KeychainReader::credentialsIn(const std::string& service,
                                                     SecretBytes& memory) const
{
    const auto dir = m_directories.directoryOf(service);
    auto result = dir ? readCredentialFile(*dir, memory) : std::nullopt;
    if (result && isUndecodable(*result)) {
        // Claude Code may be rewriting the file in place just now: one more look before the account
        // counts as broken.
        m_sources.beforeRereading();
        result = readCredentialFile(*dir, memory);
    }
    return result ? *std::move(result) : ClaudeCredentials::decode(m_keyring.read(service));
}

KeychainServiceResolver::Probe KeychainReader::probe(const std::string& service) const
{
    SecretBytes memory;
    return probe(service, memory);
}

KeychainServiceResolver::Probe KeychainReader::probe(const std::string& service,
                                                     SecretBytes& memory) const
{
    auto result = credentialsIn(service, memory);
    if (const auto* error = std::get_if<KeychainError>(&result))
        return {error->kind == Kind::userDenied ? TokenStatus::needsApproval
                                                : TokenStatus::notFound,
                std::nullopt, std::nullopt};
    auto& credentials = std::get<ClaudeCredentials>(result);
    KeychainServiceResolver::Probe found{credentials.tokenStatus(m_clock.now()),
                                         std::move(credentials.subscriptionType),
                                         credentials.expiry()};
    memory = std::move(credentials.accessToken).recycled();
    return found;
}

} // namespace vellumor
