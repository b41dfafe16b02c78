#include "accounts/AccountDiscovery.h"

#include "accounts/ConfigDir.h"
#include "accounts/DefaultAccount.h"
#include "accounts/IdentityFile.h"
#include "accounts/KeychainReader.h"
#include "base/Log.h"
#include "store/DiskPath.h"
#include "store/FileReader.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>

namespace vellumor {

namespace {

bool isConfigDirName(const std::string& name)
{
    return name == ".claude" || name.starts_with(".claude-");
}

// Claude Code keeps prompts and projects in the file that tells who is signed in.
constexpr std::size_t maxIdentitySize = std::size_t{32} * 1024 * 1024;

std::optional<std::string> wholeFile(const std::string& path)
{
    FileContents contents = readFile(path, maxIdentitySize);
    if (contents.status != ReadStatus::ok)
        return std::nullopt;
    return std::move(contents.bytes);
}

} // namespace

std::optional<std::vector<std::string>> AccountDiscovery::homeConfigDirs(const std::string& home)
{
    std::error_code error;
    std::filesystem::directory_iterator entry(DiskPath::spelled(home), error);
    std::set<std::string> dirs;
    for (const std::filesystem::directory_iterator end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::error_code unreadable;
        if (!isConfigDirName(name) || !entry->is_directory(unreadable))
            continue;
        const std::string dir =
            ConfigDir::canonical(std::string(home).append("/").append(name), home);
        if (!dir.empty())
            dirs.insert(dir);
        else
            log(Tag::accounts, "skipped a config directory whose name is not valid UTF-8");
    }
    if (error)
        return std::nullopt;
    return std::vector<std::string>(dirs.begin(), dirs.end());
}

AccountDiscovery AccountDiscovery::live(DiscoveryInputs inputs, const std::string& home,
                                        ServiceDirectories& directories,
                                        const KeychainReader& keychain)
{
    const auto listConfigDirs = [known = inputs.knownDirs, home, &directories] {
        auto dirs = homeConfigDirs(home);
        if (!dirs)
            return dirs;
        std::set<std::string> all(dirs->begin(), dirs->end());
        std::copy_if(known.begin(), known.end(), std::inserter(all, all.end()), DiskPath::isFolder);
        dirs->assign(all.begin(), all.end());
        directories.rebuild(*dirs);
        return dirs;
    };
    const auto overrideFor = [overrides = std::move(inputs.overrides)](
                                 const std::string& dir) -> std::optional<std::string> {
        const auto found = overrides.find(dir);
        if (found == overrides.end())
            return std::nullopt;
        return found->second;
    };
    const auto forceInclude = [known = std::set(inputs.knownDirs.begin(), inputs.knownDirs.end())](
                                  const std::string& dir) { return known.contains(dir); };
    return {home,
            listConfigDirs,
            DiskPath::exists,
            wholeFile,
            [&keychain] { return keychain.enumerateClaudeServices(); },
            overrideFor,
            forceInclude,
            [&keychain, memory = std::make_shared<SecretBytes>()](const std::string& service) {
                return keychain.probe(service, *memory);
            }};
}

DiscoveryResult AccountDiscovery::run() const
{
    const auto listed = listConfigDirs();
    if (!listed)
        return {{}, true};
    const std::set<std::string> dirs(listed->begin(), listed->end());
    KeychainServiceResolver::Choices choices;
    choices.enumerated = enumerateServices();
    DiscoveryResult result;
    for (const std::string& dir : dirs) {
        choices.absConfigDir = dir;
        choices.candidates = DefaultAccount::serviceCandidates(dir, home);
        choices.override = overrideFor(dir);
        if (auto facts = factsOf(choices))
            result.facts.push_back(*std::move(facts));
    }
    return result;
}

// The first that exists decides, whether or not it can be read.
std::string AccountDiscovery::identityPath(const std::string& dir) const
{
    const std::string inside = dir + "/.claude.json";
    for (const std::string& path : {dir + "/.config.json", inside}) {
        if (fileExists(path))
            return path;
    }
    const auto beside = DefaultAccount::identityFallback(dir, "", home);
    return beside && fileExists(*beside) ? *beside : inside;
}

std::optional<DiscoveredFacts>
AccountDiscovery::factsOf(const KeychainServiceResolver::Choices& choices) const
{
    const std::string& dir = choices.absConfigDir;
    auto bytes = readFile(identityPath(dir));
    const auto identity = bytes ? IdentityFile::parse(*std::move(bytes)) : IdentityFile::Identity();
    const auto resolved = KeychainServiceResolver::resolveLiving(choices, probe);
    const bool nobody = !identity.email && !identity.org;
    const bool dead =
        resolved.status == TokenStatus::notFound || resolved.status == TokenStatus::signedOut;
    if (nobody && dead && !forceInclude(dir))
        return std::nullopt;
    return DiscoveredFacts{dir,
                           identity.email,
                           identity.org,
                           identity.displayName,
                           IdentityFile::planLabel(identity.orgType, resolved.plan),
                           resolved.service,
                           resolved.status,
                           resolved.expiresAt};
}

} // namespace vellumor
