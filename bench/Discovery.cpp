#include "Ratio.h"

#include "accounts/AccountDiscovery.h"
#include "accounts/KeychainReader.h"
#include "base/FileHandle.h"
#include "base/Json.h"
#include "base/SystemClock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

namespace vellumor::bench {

namespace {

struct NoKeyring final : Keyring {
    [[nodiscard]] std::vector<std::string> services(const std::vector<std::string>&) override
    {
        return {};
    }
    [[nodiscard]] RawCredential read(const std::string&) override { return {}; }
};

constexpr int directories = 100;

class WallClock final : public Clock {
public:
    [[nodiscard]] Instant now() const override { return systemNow(); }
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds,
                                               std::function<void()>) override
    {
        return std::make_unique<Alarm>();
    }
};

std::string identityFile(int number)
{
    const Json json = {{"numStartups", number},
                       {"oauthAccount",
                        {{"emailAddress", "user" + std::to_string(number) + "@example.org"},
                         {"organizationName", "Example Org"},
                         {"displayName", "User"},
                         {"organizationType", "claude_max"}}},
                       {"tipsHistory", std::string(760, 'x')}};
    return json.dump();
}

std::string credentialFile(int number)
{
    const Json json = {
        {"claudeAiOauth",
         {{"accessToken", "example-token-" + std::to_string(number) + std::string(160, 'x')},
          {"refreshToken", "example-refresh-" + std::string(160, 'x')},
          {"expiresAt", 4102444800000},
          {"scopes", {"user:inference", "user:profile"}},
          {"subscriptionType", "max"},
          {"rateLimitTier", "example_tier"}}}};
    return json.dump();
}

// A home folder with a hundred config directories; gives the files that a scan has to read.
std::vector<std::string> makeHome(const std::string& home)
{
    std::vector<std::string> files;
    for (int i = 0; i < directories; ++i) {
        const std::string dir = home + "/.claude-" + std::to_string(i);
        std::filesystem::create_directories(dir);
        files.push_back(dir + "/.claude.json");
        std::ofstream(files.back()) << identityFile(i);
        files.push_back(dir + "/.credentials.json");
        std::ofstream(files.back()) << credentialFile(i);
    }
    return files;
}

void readBare(const std::string& path)
{
    const FileHandle file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        std::abort();
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    if (::read(file.get(), bytes.data(), bytes.size()) != status.st_size)
        std::abort();
}

// All that a scan needs, in the order in which it is needed.
struct Scan {
    explicit Scan(std::string folder)
        : home(std::move(folder))
        , services(home)
    {
    }

    std::string home;
    WallClock clock;
    NoKeyring keyring;
    ServiceDirectories services;
    KeychainReader keychain{services, keyring, clock};
    AccountDiscovery discovery = AccountDiscovery::live({}, home, services, keychain);
};

} // namespace

std::vector<Comparison> accountDiscovery(const std::string& folder)
{
    const auto files = makeHome(folder);
    const auto scan = std::make_shared<Scan>(folder);
    return {{"account scan, 100 directories",
             [scan] {
                 if (scan->discovery.run().facts.size() != directories)
                     std::abort();
             },
             [files] {
                 for (const std::string& path : files)
                     readBare(path);
             },
             200, 1, 3.0}};
}

} // namespace vellumor::bench
