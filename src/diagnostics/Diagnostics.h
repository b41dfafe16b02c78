#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "base/Clock.h"
#include "diagnostics/Findings.h"
#include "diagnostics/Redaction.h"
#include "usage/UsageClient.h"

#include <functional>
#include <string_view>

namespace vellumor {

// The headless report: what the program sees on this machine, and why it acts as it does. It scans
// and reads as the running program does, asks the endpoint once for each account with a living
// token, and creates no file. No failure ends it. Main thread only.
class Diagnostics {
public:
    using Gather = std::function<Findings()>; // blocks; runs on the worker
    using Print = std::function<void(std::string_view text)>;

    // Finds the `claude` program, given the user's choice.
    using FindClaude =
        std::function<Task<std::optional<std::string>>(std::optional<std::string> preference)>;

    // Everything borrowed outlives the run.
    Diagnostics(Worker& worker, UsageClient& client, const Clock& clock, Folders folders,
                Gather gather, FindClaude findClaude, Print print);

    [[nodiscard]] Task<> run();

private:
    void printWorld(const Findings& findings, const std::optional<std::string>& claudePath,
                    const Redaction& redaction);
    [[nodiscard]] Task<> printAccount(std::string title, DiscoveredFacts facts,
                                      AccountCaches caches, const Redaction* redaction);

    Worker& m_worker;
    UsageClient& m_client;
    const Clock& m_clock;
    Folders m_folders;
    Gather m_gather;
    FindClaude m_findClaude;
    Print m_print;
};

} // namespace vellumor
