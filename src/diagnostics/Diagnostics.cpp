#include "diagnostics/Diagnostics.h"

#include "diagnostics/ReportText.h"

#include <utility>

namespace vellumor {

Diagnostics::Diagnostics(Worker& worker, UsageClient& client, const Clock& clock, Folders folders,
                         Gather gather, FindClaude findClaude, Print print)
    : m_worker(worker)
    , m_client(client)
    , m_clock(clock)
    , m_folders(std::move(folders))
    , m_gather(std::move(gather))
    , m_findClaude(std::move(findClaude))
    , m_print(std::move(print))
{
}

Task<> Diagnostics::run()
{
    m_print(ReportText::banner());
    auto gather = [this] { return m_gather(); };
    Findings findings = co_await m_worker.run(std::move(gather));
    const Redaction redaction(m_folders.home, findings.accounts);
    std::optional<std::string> chosen;
    if (!findings.preferences.claudeBinaryPath.empty())
        chosen = findings.preferences.claudeBinaryPath;
    const auto claudePath = co_await m_findClaude(std::move(chosen));
    printWorld(findings, claudePath, redaction);
    for (const DiscoveredFacts& facts : findings.accounts) {
        const std::string& dir = facts.configDir;
        std::string title = ReportText::title(dir, findings.wishes[dir]);
        co_await printAccount(std::move(title), facts, std::move(findings.caches[dir]), &redaction);
    }
    m_print(ReportText::unmatchedHeading(findings.unmatched.size()));
    for (const DiscoveredFacts& item : findings.unmatched)
        m_print(ReportText::account(*item.resolvedService, item, m_clock.now(), redaction));
    m_print(ReportText::stagger(findings.preferences.userInterval, findings.pollable));
    m_print(ReportText::rateLimitLog(findings.rateLimitLines, redaction));
}

void Diagnostics::printWorld(const Findings& findings, const std::optional<std::string>& claudePath,
                             const Redaction& redaction)
{
    m_print(ReportText::crashes(findings.crashes, m_folders.crashReports(), redaction));
    m_print(ReportText::telemetry(findings.telemetry, redaction));
    m_print(ReportText::presence(findings.ownPresence, findings.siblingPresence, redaction));
    m_print(ReportText::onboarding(findings.onboarding, findings.shouldShowOnboarding));
    m_print(ReportText::revival(findings.preferences, claudePath, redaction));
    m_print(ReportText::keychain(findings.services.size()));
    m_print(ReportText::home(findings.configDirs));
    m_print(ReportText::discovery(findings.accounts.size()));
}

Task<> Diagnostics::printAccount(std::string title, DiscoveredFacts facts, AccountCaches caches,
                                 const Redaction* redaction)
{
    m_print(ReportText::account(title, facts, m_clock.now(), *redaction));
    m_print(ReportText::caches(caches, m_clock.now(), *redaction));
    if (facts.tokenStatus != TokenStatus::readable) {
        m_print(ReportText::usageSkipped(facts.tokenStatus));
        co_return;
    }
    Account account;
    account.configDir = facts.configDir;
    account.resolvedService = facts.resolvedService;
    account.tokenStatus = facts.tokenStatus;
    const FetchResult result = co_await m_client.fetch(std::move(account));
    m_print(ReportText::usage(result, caches.history, m_clock.now(), *redaction));
}

} // namespace vellumor
