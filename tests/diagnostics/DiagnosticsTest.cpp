#include "diagnostics/Diagnostics.h"

#include "support/FakeClock.h"

#include <QCoroCore>

#include <gtest/gtest.h>

namespace vellumor::diagnosticsTest {
namespace {

using test::FakeClock;

struct CountingTransport final : HttpTransport {
    int calls = 0;
    HttpAnswer answer{HttpAnswer::Kind::answered, 200, "{}", {}, ""};
    Task<HttpAnswer> get(HttpRequest) override
    {
        ++calls;
        auto copy = answer;
        co_return copy;
    }
};

DiscoveredFacts facts(std::string dir, TokenStatus status)
{
    DiscoveredFacts account;
    account.configDir = std::move(dir);
    account.email = "ann@example.org";
    account.org = "Acme Research";
    account.resolvedService = "Claude Code-credentials";
    account.tokenStatus = status;
    return account;
}

struct DiagnosticsTest : testing::Test {
    Worker worker;
    FakeClock clock;
    CountingTransport transport;
    Findings findings;
    std::string printed;
    UsageClient client{transport, worker, clock,
                       [](const std::string&) -> std::variant<ClaudeCredentials, KeychainError> {
                           return ClaudeCredentials();
                       },
                       "http://127.0.0.1:1/"};
    Diagnostics diagnostics{
        worker,
        client,
        clock,
        {"/home/ann", "/home/ann/data", "/home/ann/config"},
        [this] { return findings; },
        [this](std::optional<std::string> preference) { return findClaude(std::move(preference)); },
        [this](std::string_view text) { printed += text; }};

    std::optional<std::string> claude;
    std::vector<std::optional<std::string>> preferencesAsked;

    Task<std::optional<std::string>> findClaude(std::optional<std::string> preference)
    {
        preferencesAsked.push_back(std::move(preference));
        auto copy = claude;
        co_return copy;
    }
    void run() { QCoro::waitFor(diagnostics.run()); }
    [[nodiscard]] bool has(std::string_view text) const
    {
        return printed.find(text) != std::string::npos;
    }
};

TEST_F(DiagnosticsTest, withoutAccountsTheReportStillReachesThe429Log)
{
    run();
    EXPECT_TRUE(printed.ends_with("429 log:  empty — no 429 ever observed on this install\n"));
    EXPECT_EQ(transport.calls, 0);
}

TEST_F(DiagnosticsTest, tellsWhichClaudeProgramIsFound)
{
    run();
    EXPECT_TRUE(has("manual path=(none) · claude=not found\n"));
    findings.preferences.claudeBinaryPath = "/home/ann/bin/claude";
    claude = "/home/ann/bin/claude";
    run();
    EXPECT_TRUE(has("manual path=~/bin/claude · claude=~/bin/claude\n"));
    EXPECT_EQ(preferencesAsked, (std::vector<std::optional<std::string>>{{}, claude}));
}

TEST_F(DiagnosticsTest, eachAccountHasItsOwnCaches)
{
    findings.accounts = {facts("/home/ann/.claude", TokenStatus::expired),
                         facts("/home/ann/.claude-work", TokenStatus::expired)};
    findings.caches["/home/ann/.claude-work"].anchors["weekly_all"] = {clock.now(), false};
    run();
    const auto work = printed.find("\n~/.claude-work\n");
    EXPECT_LT(printed.find("    anchors  : (none learned yet)"), work);
    EXPECT_GT(printed.find("    anchor   : weekly_all "), work);
}

TEST_F(DiagnosticsTest, theSectionsStandInTheirOrder)
{
    findings.configDirs.emplace();
    findings.accounts = {facts("/home/ann/.claude", TokenStatus::readable)};
    run();
    std::size_t last = 0;
    for (const char* begin :
         {"Vellumor ",    "crash ",      "Telemetry:", "Presence:",   "Onboarding:",
          "CLI revival:", "Keychain:",   "Home:",      "Discovery:",  "\n~/.claude\n",
          "    identity", "    service", "    plan",   "    token",   "    cache",
          "    vscode",   "    anchors", "    usage",  "    project", "\nUnmatched",
          "\nStagger:",   "429 log:"}) {
        SCOPED_TRACE(begin);
        const auto at = printed.find(begin, last);
        ASSERT_NE(at, std::string::npos);
        last = at;
    }
}

TEST_F(DiagnosticsTest, theEndpointIsAskedOnceForEachLivingTokenAlone)
{
    findings.accounts = {facts("/a", TokenStatus::readable), facts("/b", TokenStatus::expired),
                         facts("/c", TokenStatus::readable), facts("/d", TokenStatus::signedOut)};
    findings.unmatched = {facts("", TokenStatus::readable)}; // of no account
    run();
    EXPECT_EQ(transport.calls, 2);
    EXPECT_TRUE(has("(skipped — token expired)"));
    EXPECT_TRUE(has("(skipped — token signedOut)"));
}

TEST_F(DiagnosticsTest, aRevokedTokenDoesNotEndTheReport)
{
    findings.accounts = {facts("/a", TokenStatus::readable), facts("/b", TokenStatus::readable)};
    transport.answer.status = 401;
    run();
    EXPECT_TRUE(has("FETCH FAILED — unauthorized (401) — token expired/invalid"));
    EXPECT_EQ(transport.calls, 2);
    EXPECT_TRUE(has("429 log:"));
}

TEST_F(DiagnosticsTest, nobodysAddressOrOrganisationIsPrinted)
{
    findings.accounts = {facts("/home/ann/.claude-ann@example.org", TokenStatus::readable),
                         facts("/home/ann/.claude-Acme Research", TokenStatus::notFound)};
    findings.unmatched = {facts("", TokenStatus::notFound)};
    findings.unmatched[0].resolvedService = "Claude Code-credentials Acme Research";
    findings.rateLimitLines = {R"({"configDir":"/home/ann/.claude-ann@example.org"})"};
    run();
    EXPECT_FALSE(has("ann@example.org"));
    EXPECT_FALSE(has("example.org"));
    EXPECT_FALSE(has("Acme"));
}

} // namespace
} // namespace vellumor::diagnosticsTest
