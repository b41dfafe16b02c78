#include "accounts/KeychainServiceResolver.h"

#include "base/Sha256.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <map>

namespace vellumor::keychainServiceResolverTest {
namespace {

using KeychainServiceResolver::Choices;
using KeychainServiceResolver::Probe;
using KeychainServiceResolver::Resolved;
using Names = std::vector<std::string>;

const std::string dir = "/home/me/.claude";
const std::string plain = "Claude Code-credentials";
const std::string hashed = "Claude Code-credentials-cb67f5c9";
const std::string hash = "cb67f5c9";

// Answers from a table and keeps the order of the questions.
struct Probes {
    std::map<std::string, Probe> answers;
    Names asked;

    Resolved resolve(const Choices& choices)
    {
        return KeychainServiceResolver::resolveLiving(choices, [this](const std::string& service) {
            asked.push_back(service);
            const auto answer = answers.find(service);
            return answer == answers.end() ? Probe() : answer->second;
        });
    }
};

const Instant soon = test::instant("2026-03-29T02:00:00Z");
const Probe living = {TokenStatus::readable, "max", soon};
const Probe dead = {TokenStatus::expired, "pro", soon};

TEST(KeychainServiceResolver, aServiceIsChosenByTheFirstRuleThatApplies)
{
    ASSERT_EQ(Sha256::first8Hex(dir), hash);
    const struct {
        const char* rule;
        Choices choices;
        std::optional<std::string> service;
    } rows[] = {
        {"the override, whether or not it exists", {dir, {plain}, "Mine", {plain}}, "Mine"},
        {"blank is an override too", {dir, {plain}, " ", {plain}}, " "},
        {"an empty override is none", {dir, {plain}, "", {plain}}, plain},
        {"the first candidate that exists", {dir, {plain, hashed}, {}, {hashed, plain}}, plain},
        {"the second when the first is not there", {dir, {plain, hashed}, {}, {hashed}}, hashed},
        {"the shortest name with the hash",
         {dir, {plain}, {}, {"aa" + hash, "a" + hash}},
         "a" + hash},
        {"the hash counts anywhere", {dir, {plain}, {}, {"a" + hash + "-b"}}, "a" + hash + "-b"},
        {"the first of two equally short",
         {dir, {plain}, {}, {"b" + hash, "a" + hash}},
         "b" + hash},
        // Six bytes and two characters against three of each.
        {"length is in characters",
         {dir, {plain}, {}, {"abc" + hash, "\u4E00\u4E01" + hash}},
         "\u4E00\u4E01" + hash},
        {"a candidate beats a shorter match", {dir, {hashed}, {}, {hash, hashed}}, hashed},
        {"the first candidate when nothing exists", {dir, {plain, hashed}, {}, {"other"}}, plain},
        {"a hash in capitals is no match", {dir, {plain}, {}, {"CB67F5C9"}}, plain},
        {"nothing without candidates", {dir, {}, {}, {}}, std::nullopt},
        {"a match without candidates", {dir, {}, {}, {hash}}, hash},
    };
    for (const auto& [rule, choices, service] : rows) {
        SCOPED_TRACE(rule);
        EXPECT_EQ(KeychainServiceResolver::resolve(choices), service);
    }
}

TEST(KeychainServiceResolver, presentCandidatesKeepTheirOrderAndAnOverrideLeavesNone)
{
    using KeychainServiceResolver::presentCandidates;
    EXPECT_EQ(presentCandidates({dir, {plain, hashed}, {}, {hashed, "x", plain}}),
              (Names{plain, hashed}));
    EXPECT_EQ(presentCandidates({dir, {plain, hashed}, "", {hashed}}), (Names{hashed}));
    EXPECT_EQ(presentCandidates({dir, {plain, hashed}, {}, {}}), Names());
    EXPECT_EQ(presentCandidates({dir, {plain, hashed}, "Mine", {plain, hashed}}), Names());
}

TEST(KeychainServiceResolver, withoutAServiceNothingIsProbed)
{
    Probes probes;
    EXPECT_EQ(probes.resolve({dir, {}, {}, {}}), Resolved());
    EXPECT_EQ(probes.asked, Names());
}

TEST(KeychainServiceResolver, aReadableServiceCostsOneProbe)
{
    Probes probes{{{plain, living}, {hashed, living}}, {}};
    EXPECT_EQ(probes.resolve({dir, {plain, hashed}, {}, {plain, hashed}}),
              (Resolved{plain, TokenStatus::readable, "max", soon, std::nullopt}));
    EXPECT_EQ(probes.asked, (Names{plain}));
}

TEST(KeychainServiceResolver, aDeadServiceGivesWayToTheReadableOneBesideIt)
{
    for (const auto status : {TokenStatus::expired, TokenStatus::signedOut,
                              TokenStatus::needsApproval, TokenStatus::notFound}) {
        SCOPED_TRACE(name(status));
        Probes probes{{{plain, {status, "pro", {}}}, {hashed, living}}, {}};
        EXPECT_EQ(probes.resolve({dir, {plain, hashed}, {}, {plain, hashed}}),
                  (Resolved{hashed, TokenStatus::readable, "max", soon, plain}));
        EXPECT_EQ(probes.asked, (Names{plain, hashed}));
    }
}

TEST(KeychainServiceResolver, whenNoneIsReadableTheFirstStands)
{
    Probes probes{{{plain, dead}, {hashed, {TokenStatus::signedOut, "max", {}}}}, {}};
    EXPECT_EQ(probes.resolve({dir, {plain, hashed}, {}, {plain, hashed}}),
              (Resolved{plain, TokenStatus::expired, "pro", soon, std::nullopt}));
    EXPECT_EQ(probes.asked, (Names{plain, hashed}));
}

TEST(KeychainServiceResolver, aDirectoryThatHasNoSecondServiceCostsOneProbe)
{
    Probes probes{{{plain, dead}, {hashed, living}}, {}};
    EXPECT_EQ(probes.resolve({dir, {plain, hashed}, {}, {plain}}).service, plain);
    EXPECT_EQ(probes.asked, (Names{plain}));
}

TEST(KeychainServiceResolver, anOverrideThatDoesNotExistIsFinal)
{
    Probes probes{{{plain, living}, {hashed, living}}, {}};
    EXPECT_EQ(probes.resolve({dir, {plain, hashed}, "Mine", {plain, hashed}}),
              (Resolved{"Mine", TokenStatus::notFound, {}, {}, {}}));
    EXPECT_EQ(probes.asked, (Names{"Mine"}));
}

} // namespace
} // namespace vellumor::keychainServiceResolverTest
