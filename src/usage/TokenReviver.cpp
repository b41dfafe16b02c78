#include "usage/TokenReviver.h"

#include "accounts/DefaultAccount.h"
#include "base/Log.h"
#include "base/Text.h"

#include <fmt/format.h>

#include <filesystem>

namespace vellumor {

namespace {

// One word for the shell, whatever is in it.
std::string quoted(const std::string& text)
{
    return "'" + Text::replaced(text, "'", "'\\''") + "'";
}

} // namespace

std::string TokenReviver::usageCommand(const std::string& binary, const std::string& configDir,
                                       const std::string& home)
{
    std::string command = DefaultAccount::isDefault(configDir, home)
                              ? "unset CLAUDE_CONFIG_DIR; "
                              : "CLAUDE_CONFIG_DIR=" + quoted(configDir) + " ";
    const std::string folder = std::filesystem::path(binary).parent_path().string();
    if (!folder.empty())
        command += "PATH=" + quoted(folder) + ":\"$PATH\" ";
    return command + quoted(binary) + " -p '/usage' >/dev/null 2>&1";
}

Task<TokenReviver::Attempt> TokenReviver::revive(Account account, Instant now, bool force)
{
    if (!force && isThrottled(account, now)) {
        log(Tag::revive, account.displayName,
            fmt::format("throttled (attempted within the last {:.0f}m)", minInterval / 60));
        co_return Attempt::throttled;
    }
    m_lastAttempt[account.configDir] = now;
    const auto path = co_await binary();
    if (!path) {
        log(Tag::revive, account.displayName, "claude binary not resolvable — cannot revive");
        co_return Attempt::binaryUnresolved;
    }
    log(Tag::revive, account.displayName,
        fmt::format("running headless /usage ({}) to refresh expired token", *path));
    const int status = co_await runUsage(*path, account.configDir, workDir);
    log(Tag::revive, account.displayName,
        fmt::format("/usage {} (exit {})", status == 0 ? "ok" : "failed", status));
    co_return status == 0 ? Attempt::completed : Attempt::failed;
}

bool TokenReviver::isThrottled(const Account& account, Instant now) const
{
    const auto last = m_lastAttempt.find(account.configDir);
    return last != m_lastAttempt.end() && secondsBetween(last->second, now) < minInterval;
}

// Searched again only when the user's choice changes, even after a search in vain.
Task<std::optional<std::string>> TokenReviver::binary()
{
    const auto turn = co_await m_search.lock();
    const auto key = pathOverride();
    if (!m_cachedBinary || m_cachedBinary->key != key) {
        auto found = co_await resolveBinary(key);
        m_cachedBinary = Cached{key, std::move(found)};
    }
    auto path = m_cachedBinary->path;
    co_return path;
}

} // namespace vellumor
