#include "accounts/KeychainReader.h"

#include "accounts/DefaultAccount.h"
#include "support/FakeClock.h"
#include "support/FakeKeyring.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace vellumor::keychainReaderListingTest {
namespace {

using Names = std::vector<std::string>;

const std::string plain = "Claude Code-credentials";

struct KeychainReaderListingTest : testing::Test {
    test::TempFolder home;
    test::FakeKeyring keyring;
    test::FakeClock clock;
    ServiceDirectories directories{home.path()};
    std::string work = DefaultAccount::fileService(home.file(".claude-work"), home.path());
    std::string hashedDefault =
        DefaultAccount::serviceCandidates(home.file(".claude"), home.path()).at(1);
    KeychainReader reader{directories, keyring, clock};

    KeychainReaderListingTest()
    {
        directories.rebuild({home.file(".claude"), home.file(".claude-work")});
    }

    std::string putFile(const std::string& dir, const std::string& bytes) const
    {
        return home.put(dir + "/.credentials.json", bytes);
    }
    [[nodiscard]] Names listed() const { return reader.enumerateClaudeServices(); }
};

TEST_F(KeychainReaderListingTest, servicesOfBothSourcesAreListedSortedAndOnce)
{
    putFile(".claude", "x");
    putFile(".claude-work", "not even JSON");
    keyring.put(work, "x");
    keyring.put(plain, "x");
    keyring.put("Claude Code-credentials-0", "");
    EXPECT_EQ(listed(), (Names{plain, "Claude Code-credentials-0", work}));
    EXPECT_EQ(keyring.calls(), Names{"services"});
}

TEST_F(KeychainReaderListingTest, aServiceMustBeginWithTheProgramsNameAndHoldTheWordCredentials)
{
    for (const char* service :
         {"Claude Code", "Claude Code credentials", "My Claude Code-credentials",
          "claude code-credentials", "Claude-credentials", "-credentials", "", "Chrome"})
        keyring.put(service, "x");
    EXPECT_EQ(listed(), Names());
    keyring.put("Claude Code dev-credentials-1", "x");
    keyring.put("Claude Code-credentials", "x");
    EXPECT_EQ(listed(), (Names{"Claude Code dev-credentials-1", "Claude Code-credentials"}));
}

TEST_F(KeychainReaderListingTest, aKeyringThatListsNothingIsAskedForTheExpectedServices)
{
    keyring.hideFromListing();
    keyring.put(work, "x");
    keyring.put(hashedDefault, "x");
    keyring.put("Claude Code-credentials-unasked", "x");
    Names expected = {work, hashedDefault};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(listed(), expected);
}

TEST_F(KeychainReaderListingTest, withNoKeyringTheFilesAloneCount)
{
    putFile(".claude-work", R"({"claudeAiOauth": {"accessToken": "a"}})");
    test::FakeKeyring none;
    const KeychainReader filesOnly(directories, none, clock);
    EXPECT_EQ(filesOnly.enumerateClaudeServices(), Names{work});
    EXPECT_EQ(filesOnly.probe(work).status, TokenStatus::readable);
    const auto missing = filesOnly.readCredentials(plain);
    EXPECT_EQ(std::get<KeychainError>(missing), KeychainError{KeychainError::Kind::notFound});
}

TEST_F(KeychainReaderListingTest, aDirectoryThatIsDecomposedOnDiskIsListedUnderItsComposedName)
{
    putFile(".claude-e\u0301", "x");
    const std::string dir = home.file(".claude-\u00E9");
    directories.rebuild({dir});
    EXPECT_EQ(listed(), Names{DefaultAccount::fileService(dir, home.path())});
}

TEST_F(KeychainReaderListingTest, aDirectoryThatIsToldNoMoreIsForgotten)
{
    putFile(".claude-work", "x");
    EXPECT_EQ(directories.directoryOf(work), home.file(".claude-work"));
    EXPECT_EQ(directories.directoryOf(hashedDefault), std::nullopt);
    EXPECT_EQ(directories.expectedServices(), (Names{plain, hashedDefault, work}));
    directories.rebuild({home.file(".claude")});
    EXPECT_EQ(directories.directoryOf(work), std::nullopt);
    EXPECT_EQ(directories.expectedServices(), (Names{plain, hashedDefault}));
    EXPECT_EQ(directories.all(),
              (std::map<std::string, std::string>{{plain, home.file(".claude")}}));
    EXPECT_EQ(listed(), Names());
}

} // namespace
} // namespace vellumor::keychainReaderListingTest
