#pragma once

#include "base/Format.h"
#include "support/FakeClock.h"
#include "usage/PipelineCollaborators.h"

#include <coroutine>
#include <deque>
#include <string>
#include <vector>

namespace vellumor::test {

// Holds back whoever awaits it until it is opened.
class Gate {
public:
    [[nodiscard]] bool await_ready() const noexcept { return m_isOpen; }
    void await_suspend(std::coroutine_handle<> waiting) { m_waiting = waiting; }
    void await_resume() const noexcept {}
    void open()
    {
        m_isOpen = true;
        if (m_waiting)
            std::exchange(m_waiting, {}).resume();
    }

private:
    bool m_isOpen = false;
    std::coroutine_handle<> m_waiting;
};

// Passes an awaiting coroutine on to a gate that others hold.
struct Through {
    Gate* gate;
    [[nodiscard]] bool await_ready() const noexcept
    {
        return gate == nullptr || gate->await_ready();
    }
    void await_suspend(std::coroutine_handle<> waiting) const { gate->await_suspend(waiting); }
    void await_resume() const noexcept {}
};

// Answers what it is told to, and notes each call in order.
class FakeCollaborators final : public PipelineCollaborators {
public:
    bool online = true;
    bool localOnly = false;
    bool revivalEnabled = true;
    std::map<std::string, SharedReading> shared; // by config directory
    std::map<std::string, Usage> snapshots;
    std::optional<VscodeStatusCache::Snapshot> vscode;
    std::deque<FetchResult> results; // one a call; the last one serves all further calls
    std::deque<Gate*> gates;         // one a call of the endpoint, null for none; none when empty
    TokenReviver::Attempt attempt = TokenReviver::Attempt::completed;
    std::optional<Instant> expiryAfterRevival;

    Gate* writeGate = nullptr; // holds writeShared back

    std::vector<std::string> calls;
    std::vector<std::string> details;    // of what is written or run: what about, and when
    std::vector<std::string> vscodeDirs; // whose status cache was read
    std::vector<Account> asked;          // whose reading was asked of the endpoint
    std::vector<Instant> backoffs;
    std::vector<RateLimitEntry> entries;
    mutable int onlineReads = 0;
    mutable int localOnlyReads = 0;

    [[nodiscard]] bool isOnline() const override
    {
        ++onlineReads;
        return online;
    }
    [[nodiscard]] bool localCacheOnly() const override
    {
        ++localOnlyReads;
        return localOnly;
    }
    [[nodiscard]] bool tokenRevivalEnabled() const override { return revivalEnabled; }

    Task<std::optional<SharedReading>> readShared(std::string configDir) override
    {
        calls.emplace_back("readShared");
        const auto found = shared.find(configDir);
        co_return found == shared.end() ? std::nullopt : std::optional(found->second);
    }
    Task<> writeShared(Usage usage, std::string configDir) override
    {
        calls.emplace_back("writeShared");
        note("shared", configDir, usage.fetchedAt);
        co_await Through{writeGate};
    }
    Task<> setBackoff(Instant until, std::string configDir) override
    {
        note("backoff", configDir, until);
        calls.emplace_back("setBackoff");
        backoffs.push_back(until);
        co_return;
    }
    Task<std::map<std::string, Usage>> loadSnapshots() override
    {
        calls.emplace_back("loadSnapshots");
        auto copy = snapshots;
        co_return copy;
    }
    Task<> saveSnapshot(Usage usage, std::string configDir) override
    {
        note("snapshot", configDir, usage.fetchedAt);
        calls.emplace_back("saveSnapshot");
        co_return;
    }
    Task<std::optional<VscodeStatusCache::Snapshot>> readVscode(std::string configDir) override
    {
        vscodeDirs.push_back(std::move(configDir));
        calls.emplace_back("readVscode");
        auto copy = vscode;
        co_return copy;
    }
    Task<> appendHistory(Usage usage, std::string configDir, Instant now) override
    {
        note("history of " + Format::isoFractional(usage.fetchedAt), configDir, now);
        calls.emplace_back("appendHistory");
        co_return;
    }
    Task<> recordAnchors(Usage usage, std::string configDir) override
    {
        note("anchors", configDir, usage.fetchedAt);
        calls.emplace_back("recordAnchors");
        co_return;
    }
    Task<> recordRateLimit(RateLimitEntry entry) override
    {
        calls.emplace_back("recordRateLimit");
        entries.push_back(std::move(entry));
        co_return;
    }
    Task<FetchResult> fetchUsage(Account account) override
    {
        asked.push_back(std::move(account));
        calls.emplace_back("fetchUsage");
        FetchResult result = results.front();
        if (results.size() > 1)
            results.pop_front();
        Gate* gate = nullptr;
        if (!gates.empty()) {
            gate = gates.front();
            gates.pop_front();
        }
        co_await Through{gate};
        co_return result;
    }
    Task<TokenReviver::Attempt> revive(Account account, Instant now, bool force) override
    {
        note("revive", account.configDir, now);
        calls.emplace_back(force ? "revive by force" : "revive");
        co_return attempt;
    }
    Task<std::optional<Instant>> credentialExpiry(Account account) override
    {
        note("expiry", account.configDir, {});
        calls.emplace_back("credentialExpiry");
        auto copy = expiryAfterRevival;
        co_return copy;
    }

private:
    void note(const std::string& what, const std::string& configDir, Instant at)
    {
        details.push_back(what + " " + configDir + " " + Format::isoFractional(at));
    }
};

inline UsageFetchError failure(UsageFetchError::Kind kind,
                               std::optional<double> retryAfter = std::nullopt)
{
    UsageFetchError error;
    error.kind = kind;
    error.retryAfter = retryAfter;
    return error;
}

// A reading with a session, a week and a model's week, told apart by `percent`.
inline Usage reading(double percent, Instant at)
{
    Usage usage;
    usage.fetchedAt = at;
    for (const char* const kind : {"session", "weekly_all", "seven_day_opus"}) {
        LimitWindow window;
        window.kind = kind;
        window.group = window.kind == "session" ? "session" : "weekly";
        window.percent = percent++;
        usage.windows.push_back(std::move(window));
    }
    return usage;
}

} // namespace vellumor::test
