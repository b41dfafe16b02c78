#include "simulation/Home.h"

#include "base/Json.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vellumor::simulation {

namespace {

constexpr std::string_view tokenPrefix = "simulated-token-";

std::string folderName(int account)
{
    return account == 0 ? ".claude" : ".claude-" + std::to_string(account);
}

// In memory where there is such a folder: a week of writes costs a disk minutes.
std::string placeForHome()
{
    const bool hasMemory = ::access("/dev/shm", W_OK) == 0;
    return (hasMemory ? "/dev/shm" : std::filesystem::temp_directory_path().string()) +
           "/vellumor-home-XXXXXX";
}

} // namespace

Home::Home()
    : m_path(placeForHome())
{
    if (::mkdtemp(m_path.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
}

Home::~Home()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void Home::put(const std::string& name, const std::string& bytes) const
{
    const std::filesystem::path path = m_path + "/" + name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

int Home::add(Instant now)
{
    const int account = size();
    m_owners.push_back({0, now + tokenLife, true, true});
    const std::string name = "person" + std::to_string(account) + "@example.org";
    const std::string identity = Json{{"oauthAccount", {{"emailAddress", name}}}}.dump();
    put(account == 0 ? ".claude.json" : folderName(account) + "/.claude.json", identity);
    writeCredentials(account);
    return account;
}

void Home::renew(int account, Instant now)
{
    Owner& owner = at(account);
    ++owner.generation;
    owner.expiresAt = now + tokenLife;
    owner.isSignedIn = true;
    if (owner.isThere)
        writeCredentials(account);
}

void Home::signOut(int account)
{
    at(account).isSignedIn = false;
    if (at(account).isThere)
        writeCredentials(account);
}

void Home::takeAway(int account)
{
    std::filesystem::rename(configDir(account), m_path + "/away-" + std::to_string(account));
    at(account).isThere = false;
}

void Home::bringBack(int account)
{
    std::filesystem::rename(m_path + "/away-" + std::to_string(account), configDir(account));
    at(account).isThere = true;
    writeCredentials(account);
}

std::string Home::configDir(int account) const
{
    return m_path + "/" + folderName(account);
}

std::string Home::token(int account) const
{
    if (!at(account).isSignedIn)
        return {};
    return std::string(tokenPrefix) + std::to_string(account) + "-" +
           std::to_string(at(account).generation);
}

int Home::ownerOf(std::string_view token)
{
    int account = -1;
    if (token.starts_with(tokenPrefix))
        std::from_chars(token.data() + tokenPrefix.size(), token.data() + token.size(), account);
    return account;
}

std::optional<int> Home::accountOf(std::string_view token, Instant now) const
{
    const int account = ownerOf(token);
    if (account < 0 || account >= size() || token != this->token(account) ||
        now >= at(account).expiresAt)
        return std::nullopt;
    return account;
}

std::optional<int> Home::accountIn(const std::string& configDir) const
{
    for (int account = 0; account < size(); ++account) {
        if (this->configDir(account) == configDir)
            return account;
    }
    return std::nullopt;
}

void Home::writeCredentials(int account) const
{
    const auto expiry = std::chrono::floor<std::chrono::milliseconds>(at(account).expiresAt);
    const Json json = {{"claudeAiOauth",
                        {{"accessToken", token(account)},
                         {"refreshToken", ""},
                         {"expiresAt", expiry.time_since_epoch().count()}}}};
    put(folderName(account) + "/.credentials.json", json.dump());
}

} // namespace vellumor::simulation
