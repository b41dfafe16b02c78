#include "accounts/AccountDiscovery.h"

#include "accounts/DefaultAccount.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace vellumor::accountDiscoveryTest {
namespace {

using KeychainServiceResolver::Probe;
using Names = std::vector<std::string>;

const std::string home = "/home/me";
const std::string work = home + "/.claude-work";
const std::string standard = home + "/.claude";
const std::string plain = "Claude Code-credentials";

std::string service(const std::string& dir)
{
    return DefaultAccount::fileService(dir, home);
}

std::string identity(const std::string& email, const std::string& more = "")
{
    return R"({"oauthAccount": {"emailAddress": ")" + email + "\"" + more + "}}";
}

// A machine in memory behind the seven functions, which notes what is asked of it.
struct AccountDiscoveryTest : testing::Test {
    std::optional<Names> dirs = Names();
    std::map<std::string, std::optional<std::string>> files; // nothing: there, and not readable
    Names services;
    std::map<std::string, std::string> overrides;
    std::set<std::string> known;
    std::map<std::string, Probe> probes;
    Names log;

    [[nodiscard]] AccountDiscovery discovery()
    {
        return {home,
                [this] {
                    log.emplace_back("list");
                    return dirs;
                },
                [this](const std::string& path) { return files.contains(path); },
                [this](const std::string& path) -> std::optional<std::string> {
                    log.push_back("read " + path);
                    return files.contains(path) ? files.at(path) : std::nullopt;
                },
                [this] {
                    log.emplace_back("enumerate");
                    return services;
                },
                [this](const std::string& dir) {
                    return overrides.contains(dir) ? std::optional(overrides.at(dir))
                                                   : std::nullopt;
                },
                [this](const std::string& dir) { return known.contains(dir); },
                [this](const std::string& name) {
                    log.push_back("probe " + name);
                    return probes.contains(name) ? probes.at(name) : Probe();
                }};
    }
    [[nodiscard]] std::vector<DiscoveredFacts> facts()
    {
        const DiscoveryResult result = discovery().run();
        EXPECT_FALSE(result.scanFailed);
        return result.facts;
    }
    [[nodiscard]] std::optional<std::string> emailOf(const std::string& dir)
    {
        dirs = Names{dir};
        known = {dir};
        return facts().at(0).email;
    }
};

TEST_F(AccountDiscoveryTest, aFailedScanSaysSoAndAsksNothingElse)
{
    dirs = std::nullopt;
    const DiscoveryResult result = discovery().run();
    EXPECT_TRUE(result.scanFailed);
    EXPECT_TRUE(result.facts.empty());
    EXPECT_EQ(log, Names{"list"});
}

TEST_F(AccountDiscoveryTest, anEmptyHomeIsNoFailedScan)
{
    EXPECT_TRUE(facts().empty());
    EXPECT_EQ(log, (Names{"list", "enumerate"}));
}

TEST_F(AccountDiscoveryTest, directoriesAreTakenOnceAndInOrderAndServicesAreListedOnce)
{
    dirs = Names{work, "/b", "/a", "/b", work};
    known = {"/a", "/b", work};
    Names found;
    for (const auto& account : facts())
        found.push_back(account.configDir);
    EXPECT_EQ(found, (Names{"/a", "/b", work}));
    EXPECT_EQ(std::count(log.begin(), log.end(), "enumerate"), 1);
    EXPECT_EQ(std::count(log.begin(), log.end(), "probe " + service(work)), 1);
}

TEST_F(AccountDiscoveryTest, anAccountCarriesItsIdentityAndItsCredential)
{
    const Instant ends = test::instant("2026-04-01T00:00:00Z");
    dirs = Names{work};
    files[work + "/.claude.json"] = identity(
        "a@b", R"(, "organizationName": "O", "displayName": "Ada", "organizationType": "x")");
    probes[service(work)] = {TokenStatus::readable, "max_20", ends};
    EXPECT_EQ(facts(),
              (std::vector<DiscoveredFacts>{{work, "a@b", "O", "Ada", "max_20", service(work),
                                             TokenStatus::readable, ends}}));
}

TEST_F(AccountDiscoveryTest, theOrganisationTypeNamesThePlanBeforeTheCredential)
{
    dirs = Names{work};
    probes[service(work)] = {TokenStatus::readable, "pro", {}};
    files[work + "/.claude.json"] = identity("a@b", R"(, "organizationType": "claude_max")");
    EXPECT_EQ(facts().at(0).plan, "Max");
    files[work + "/.claude.json"] = identity("a@b", R"(, "organizationType": "claude_new")");
    EXPECT_EQ(facts().at(0).plan, "pro");
}

TEST_F(AccountDiscoveryTest, anIdentityWithoutACredentialIsAnAccount)
{
    dirs = Names{work};
    files[work + "/.claude.json"] = identity("a@b");
    EXPECT_EQ(facts(), (std::vector<DiscoveredFacts>{
                           {work, "a@b", {}, {}, {}, service(work), TokenStatus::notFound, {}}}));
    files[work + "/.claude.json"] = R"({"oauthAccount": {"organizationName": ""}})";
    EXPECT_EQ(facts().size(), 1U); // an empty text is somebody
    files[work + "/.claude.json"] = R"({"oauthAccount": {"displayName": "Ada"}})";
    EXPECT_EQ(facts().size(), 0U); // a display name alone is nobody
}

TEST_F(AccountDiscoveryTest, aDirectoryWithNeitherIsAnAccountOnlyWhenItIsKnown)
{
    dirs = Names{work};
    EXPECT_TRUE(facts().empty());
    known = {work};
    EXPECT_EQ(facts(), (std::vector<DiscoveredFacts>{
                           {work, {}, {}, {}, {}, service(work), TokenStatus::notFound, {}}}));
}

TEST_F(AccountDiscoveryTest, withoutIdentityTheStateOfTheCredentialDecides)
{
    const struct {
        TokenStatus status;
        bool counts;
    } rows[] = {
        {TokenStatus::readable, true},      {TokenStatus::expired, true},
        {TokenStatus::needsApproval, true}, {TokenStatus::signedOut, false},
        {TokenStatus::notFound, false},
    };
    dirs = Names{work};
    for (const auto& [status, counts] : rows) {
        SCOPED_TRACE(name(status));
        probes[service(work)] = {status, {}, {}};
        known.clear();
        EXPECT_EQ(facts().size(), counts ? 1U : 0U);
        known = {work};
        ASSERT_EQ(facts().size(), 1U);
        EXPECT_EQ(facts()[0].tokenStatus, status);
    }
}

TEST_F(AccountDiscoveryTest, theFirstIdentityFileThatExistsDecides)
{
    files[work + "/.config.json"] = identity("config@b");
    files[work + "/.claude.json"] = identity("claude@b");
    EXPECT_EQ(emailOf(work), "config@b");
    // Even one that says nothing, is broken or cannot be read.
    for (const auto& bytes : {std::optional<std::string>("{}"), std::optional<std::string>("["),
                              std::optional<std::string>()}) {
        SCOPED_TRACE(bytes.value_or("unreadable"));
        files[work + "/.config.json"] = bytes;
        EXPECT_EQ(emailOf(work), std::nullopt);
    }
    files.erase(work + "/.config.json");
    EXPECT_EQ(emailOf(work), "claude@b");
}

TEST_F(AccountDiscoveryTest, theDefaultDirectoryTakesTheFileBesideItAndOthersDoNot)
{
    files[standard + ".json"] = identity("beside@b");
    files[work + ".json"] = identity("never@b");
    EXPECT_EQ(emailOf(standard), "beside@b");
    EXPECT_EQ(emailOf(work), std::nullopt);
    files[standard + "/.claude.json"] = identity("inside@b");
    EXPECT_EQ(emailOf(standard), "inside@b");
}

TEST_F(AccountDiscoveryTest, whereNoIdentityFileExistsTheOneInTheDirectoryIsTried)
{
    EXPECT_EQ(emailOf(standard), std::nullopt);
    EXPECT_EQ(std::count(log.begin(), log.end(), "read " + standard + "/.claude.json"), 1);
}

TEST_F(AccountDiscoveryTest, anOverrideThatDoesNotExistIsNotFoundAndNothingElseIsTried)
{
    dirs = Names{standard};
    overrides[standard] = "Mine";
    known = {standard};
    services = {plain};
    probes[plain] = {TokenStatus::readable, "max", {}};
    EXPECT_EQ(facts().at(0).resolvedService, "Mine");
    EXPECT_EQ(facts().at(0).tokenStatus, TokenStatus::notFound);
    EXPECT_EQ(std::count(log.begin(), log.end(), "probe " + plain), 0);
}

TEST_F(AccountDiscoveryTest, theDefaultDirectoryUsesWhicheverOfItsServicesLives)
{
    dirs = Names{standard};
    services = DefaultAccount::serviceCandidates(standard, home);
    const std::string hashed = services.at(1);
    probes[plain] = {TokenStatus::expired, "pro", {}};
    probes[hashed] = {TokenStatus::readable, "max", {}};
    EXPECT_EQ(facts().at(0).resolvedService, hashed);
    EXPECT_EQ(facts().at(0).plan, "max");
    probes[plain] = {TokenStatus::readable, "pro", {}};
    EXPECT_EQ(facts().at(0).resolvedService, plain);
}

} // namespace
} // namespace vellumor::accountDiscoveryTest
