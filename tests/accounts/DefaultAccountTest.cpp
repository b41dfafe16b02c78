#include "accounts/DefaultAccount.h"

#include <gtest/gtest.h>

namespace vellumor::defaultAccountTest {
namespace {

using Names = std::vector<std::string>;

const std::string home = "/home/me";

TEST(DefaultAccount, onlyTheDirectoryNamedClaudeInTheHomeFolderIsTheDefault)
{
    for (const char* path : {"/home/me/.claude", "~/.claude", "~/.claude/", "/home/me/.claude//"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(DefaultAccount::isDefault(path, home));
    }
    for (const char* path : {"/home/me/.claude-work", "/home/me/.claud", "/home/you/.claude",
                             "/home/me/x/.claude", "/home/me", "~", "", ".claude"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(DefaultAccount::isDefault(path, home));
    }
}

TEST(DefaultAccount, theCompositionOfTheHomeFolderMakesNoDifference)
{
    EXPECT_TRUE(DefaultAccount::isDefault("/home/\u00E9va/.claude", "/home/e\u0301va"));
    EXPECT_TRUE(DefaultAccount::isDefault("/home/e\u0301va/.claude", "/home/\u00E9va"));
}

TEST(DefaultAccount, theDefaultDirectorysIdentityFileLiesBesideIt)
{
    EXPECT_EQ(DefaultAccount::identityFallback("/home/me/.claude", "", home),
              "/home/me/.claude.json");
    EXPECT_EQ(DefaultAccount::identityFallback("/home/me/.claude", "-local", home),
              "/home/me/.claude-local.json");
    EXPECT_EQ(DefaultAccount::identityFallback("/home/me/.claude-work", "", home), std::nullopt);
    EXPECT_EQ(DefaultAccount::identityFallback("/srv/.claude", "", home), std::nullopt);
}

// The digests come from sha256sum.
TEST(DefaultAccount, theDefaultDirectoryHasAPlainAndAHashedServiceAndOthersAHashedOne)
{
    EXPECT_EQ(DefaultAccount::serviceCandidates("/home/me/.claude", home),
              (Names{"Claude Code-credentials", "Claude Code-credentials-cb67f5c9"}));
    EXPECT_EQ(DefaultAccount::serviceCandidates("/home/me/.claude-work", home),
              (Names{"Claude Code-credentials-95e632f0"}));
}

TEST(DefaultAccount, composedAndDecomposedNamesHaveOneService)
{
    const Names service = {"Claude Code-credentials-5e2b1622"};
    EXPECT_EQ(DefaultAccount::serviceCandidates("/home/me/.claude-\u00E9", home), service);
    EXPECT_EQ(DefaultAccount::serviceCandidates("/home/me/.claude-e\u0301", home), service);
}

TEST(DefaultAccount, theFileOfTheDefaultDirectoryStandsForThePlainServiceAlone)
{
    EXPECT_EQ(DefaultAccount::fileService("/home/me/.claude", home), "Claude Code-credentials");
    EXPECT_EQ(DefaultAccount::fileService("/home/me/.claude-work", home),
              "Claude Code-credentials-95e632f0");
}

} // namespace
} // namespace vellumor::defaultAccountTest
