#include "accounts/AccountDiscovery.h"

#include "accounts/DefaultAccount.h"
#include "accounts/KeychainReader.h"
#include "support/FakeClock.h"
#include "support/FakeKeyring.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

namespace vellumor::accountDiscoveryLiveTest {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

const std::string signIn = R"({"claudeAiOauth": {"accessToken": "a", "subscriptionType": "pro"}})";

std::string identity(const std::string& email)
{
    return R"({"oauthAccount": {"emailAddress": ")" + email + "\"}}";
}

struct AccountDiscoveryLiveTest : testing::Test {
    test::TempFolder home;
    test::TempFolder elsewhere;
    test::FakeKeyring keyring;
    test::FakeClock clock;
    ServiceDirectories directories{home.path()};
    KeychainReader keychain{directories, keyring, clock, impatient()};

    static KeychainReader::Sources impatient()
    {
        KeychainReader::Sources sources;
        sources.beforeRereading = [] {};
        return sources;
    }
    [[nodiscard]] DiscoveryResult scan(DiscoveryInputs inputs = {})
    {
        return AccountDiscovery::live(std::move(inputs), home.path(), directories, keychain).run();
    }
    [[nodiscard]] Names found(DiscoveryInputs inputs = {})
    {
        const DiscoveryResult result = scan(std::move(inputs));
        EXPECT_FALSE(result.scanFailed);
        Names dirs;
        for (const auto& facts : result.facts)
            dirs.push_back(facts.configDir);
        return dirs;
    }
    [[nodiscard]] Names homeDirs() const
    {
        return AccountDiscovery::homeConfigDirs(home.path()).value();
    }
};

TEST_F(AccountDiscoveryLiveTest, aDirectoryIsRecognisedByItsNameAlone)
{
    for (const char* name : {".claude", ".claude-work", ".claude-", ".claude-a b", ".claudette",
                             ".claude.d", "claude-x", ".Claude", "x.claude-y", ".claude_x"})
        home.makeFolder(name);
    home.put(".claude-file", "x");
    home.makeFolder("sub/.claude-deep");
    EXPECT_EQ(homeDirs(), (Names{home.file(".claude"), home.file(".claude-"),
                                 home.file(".claude-a b"), home.file(".claude-work")}));
}

TEST_F(AccountDiscoveryLiveTest, aLinkToAFolderCountsAndADanglingOneDoesNot)
{
    fs::create_directory_symlink(elsewhere.makeFolder("real"), home.file(".claude-link"));
    fs::create_directory_symlink(elsewhere.file("gone"), home.file(".claude-gone"));
    fs::create_symlink(elsewhere.put("file", ""), home.file(".claude-tofile"));
    fs::create_symlink(".claude-loop", home.file(".claude-loop"));
    EXPECT_EQ(homeDirs(), Names{home.file(".claude-link")}); // under its own name
    elsewhere.put("real/.credentials.json", signIn);
    EXPECT_EQ(found(), Names{home.file(".claude-link")});
}

TEST_F(AccountDiscoveryLiveTest, aHomeFolderThatCannotBeListedIsAFailedScan)
{
    EXPECT_EQ(AccountDiscovery::homeConfigDirs(home.file("missing")), std::nullopt);
    EXPECT_EQ(AccountDiscovery::homeConfigDirs(home.put("file", "")), std::nullopt);
    const std::string known = elsewhere.makeFolder("config");
    directories.rebuild({known});
    const DiscoveryResult result =
        AccountDiscovery::live({{known}, {}}, home.file("missing"), directories, keychain).run();
    EXPECT_TRUE(result.scanFailed);
    EXPECT_TRUE(result.facts.empty());
    EXPECT_EQ(keyring.calls(), Names());
    EXPECT_EQ(directories.all().size(), 1U); // what was known before still serves the readers
}

TEST_F(AccountDiscoveryLiveTest, aDecomposedNameIsFoundUnderItsComposedForm)
{
    home.put(".claude-e\u0301/.claude.json", identity("a@b"));
    home.put(".claude-e\u0301/.credentials.json", signIn);
    const std::string dir = home.file(".claude-\u00E9");
    const DiscoveryResult result = scan({{dir}, {}});
    ASSERT_EQ(result.facts.size(), 1U);
    EXPECT_EQ(result.facts[0].configDir, dir);
    EXPECT_EQ(result.facts[0].email, "a@b");
    EXPECT_EQ(result.facts[0].tokenStatus, TokenStatus::readable);
    EXPECT_EQ(result.facts[0].resolvedService, DefaultAccount::fileService(dir, home.path()));
    home.makeFolder(".claude-\u00E9"); // two names, one directory
    EXPECT_EQ(homeDirs(), Names{dir});
}

TEST_F(AccountDiscoveryLiveTest, aHomeFolderThatIsDecomposedOnDiskIsListed)
{
    home.put("e\u0301va/.claude/.credentials.json", signIn);
    const std::string composedHome = home.file("\u00E9va");
    EXPECT_EQ(AccountDiscovery::homeConfigDirs(composedHome), Names{composedHome + "/.claude"});
}

TEST_F(AccountDiscoveryLiveTest, aNameThatIsNotUtf8IsSkippedWithOneLine)
{
    home.makeFolder(".claude-ok");
    home.makeFolder(".claude-\xFF");
    home.makeFolder("other-\xFF");
    home.put(".claude-file-\xFF", "");
    testing::internal::CaptureStderr();
    const Names dirs = homeDirs();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[accounts] skipped a config directory whose name is not valid UTF-8\n");
    EXPECT_EQ(dirs, Names{home.file(".claude-ok")});
}

TEST_F(AccountDiscoveryLiveTest, aKnownDirectoryOutsideTheHomeFolderIsScannedAsAnyOther)
{
    const std::string known = elsewhere.makeFolder("config");
    elsewhere.put("config/.config.json", identity("a@b"));
    elsewhere.put("config/.credentials.json", signIn);
    const DiscoveryResult result = scan({{known}, {}});
    ASSERT_EQ(result.facts.size(), 1U);
    EXPECT_EQ(result.facts[0].email, "a@b");
    EXPECT_EQ(result.facts[0].plan, "pro");
    EXPECT_EQ(result.facts[0].tokenStatus, TokenStatus::readable);
    EXPECT_EQ(found(), Names()); // unknown, it is not looked for
}

TEST_F(AccountDiscoveryLiveTest, aKnownDirectoryThatIsGoneIsNotListed)
{
    const std::string there = elsewhere.makeFolder("there");
    EXPECT_EQ(found({{elsewhere.file("gone"), there, elsewhere.put("file", "")}, {}}),
              Names{there});
}

TEST_F(AccountDiscoveryLiveTest, aDirectoryThatIsKnownAndInTheHomeFolderIsOneAccount)
{
    const std::string dir = home.makeFolder(".claude-work");
    EXPECT_EQ(found({{dir, dir}, {}}), Names{dir});
    EXPECT_EQ(found(), Names()); // nobody's account, unless it is known
}

TEST_F(AccountDiscoveryLiveTest, theDefaultDirectorysIdentityLiesBesideIt)
{
    home.makeFolder(".claude");
    home.put(".claude.json", identity("beside@b"));
    EXPECT_EQ(scan().facts.at(0).email, "beside@b");
    home.put(".claude/.claude.json", "{}");
    EXPECT_EQ(found(), Names()); // the one inside exists, and decides
}

TEST_F(AccountDiscoveryLiveTest, anIdentityFileMayHoldYearsOfPrompts)
{
    const auto emailOf = [this](std::size_t mebibytes) {
        home.put(".claude-work/.credentials.json", signIn);
        home.put(".claude-work/.claude.json",
                 R"({"history": ")" + std::string(mebibytes << 20U, 'x') +
                     R"(", "oauthAccount": {"emailAddress": "ada@example.org"}})");
        return scan().facts.at(0).email;
    };
    EXPECT_EQ(emailOf(31), "ada@example.org");
    EXPECT_EQ(emailOf(32), std::nullopt); // and what is around it
}

TEST_F(AccountDiscoveryLiveTest, anEmptyObjectInTheFirstIdentityFileHidesTheSecond)
{
    home.put(".claude-work/.config.json", "{}");
    home.put(".claude-work/.claude.json", identity("a@b"));
    EXPECT_EQ(found(), Names());
    fs::remove(home.file(".claude-work/.config.json"));
    EXPECT_EQ(scan().facts.at(0).email, "a@b");
}

TEST_F(AccountDiscoveryLiveTest, aFolderOrAPipeInThePlaceOfAFileIsReadAsNothing)
{
    const std::string dir = home.makeFolder(".claude-work");
    home.makeFolder(".claude-work/.config.json");
    home.put(".claude-work/.claude.json", identity("a@b"));
    ASSERT_EQ(::mkfifo(home.file(".claude-work/.credentials.json").c_str(), 0600), 0);
    EXPECT_EQ(found(), Names());
    const DiscoveryResult known = scan({{dir}, {}});
    ASSERT_EQ(known.facts.size(), 1U);
    EXPECT_EQ(known.facts[0].email, std::nullopt);
    EXPECT_EQ(known.facts[0].tokenStatus, TokenStatus::notFound);
    fs::remove(home.file(".claude-work/.config.json"));
    ASSERT_EQ(::mkfifo(home.file(".claude-work/.config.json").c_str(), 0600), 0);
    EXPECT_EQ(scan({{dir}, {}}).facts.at(0).email, std::nullopt);
}

TEST_F(AccountDiscoveryLiveTest, aBrokenIdentityFileStillCountsWithALivingCredential)
{
    home.put(".claude-work/.claude.json", "{\"oauthAccount\": {");
    EXPECT_EQ(found(), Names());
    home.put(".claude-work/.credentials.json", signIn);
    EXPECT_EQ(found(), Names{home.file(".claude-work")});
}

TEST_F(AccountDiscoveryLiveTest, filesAndKeyringServeOneScanAndTheKeyringIsListedOnce)
{
    home.put(".claude/.credentials.json", signIn);
    home.makeFolder(".claude-work");
    const std::string work = DefaultAccount::fileService(home.file(".claude-work"), home.path());
    keyring.put(work, signIn);
    const DiscoveryResult result = scan();
    ASSERT_EQ(result.facts.size(), 2U);
    EXPECT_EQ(result.facts[0].resolvedService, "Claude Code-credentials");
    EXPECT_EQ(result.facts[1].resolvedService, work);
    EXPECT_EQ(result.facts[1].tokenStatus, TokenStatus::readable);
    EXPECT_EQ(keyring.calls(), (Names{"services", "read " + work}));
}

TEST_F(AccountDiscoveryLiveTest, anOverrideIsProbedInThePlaceOfTheFile)
{
    home.put(".claude-work/.credentials.json", signIn);
    keyring.putUnreadable("Mine", RawCredential::denied);
    const DiscoveryResult result = scan({{}, {{home.file(".claude-work"), "Mine"}}});
    ASSERT_EQ(result.facts.size(), 1U);
    EXPECT_EQ(result.facts[0].resolvedService, "Mine");
    EXPECT_EQ(result.facts[0].tokenStatus, TokenStatus::needsApproval);
}

TEST_F(AccountDiscoveryLiveTest, aScanPrintsNothingAndItsFactsHoldNoToken)
{
    const std::string marker = "marker-token-5f1c";
    home.put(".claude/.credentials.json",
             R"({"claudeAiOauth": {"accessToken": ")" + marker + "\"}}");
    home.put(".claude-broken/.credentials.json", marker);
    home.put(".claude-broken/.claude.json", marker);
    keyring.put("Mine", R"({"claudeAiOauth": {"accessToken": ")" + marker + "\", \"scopes\": 1}}");
    const std::string ringed = elsewhere.makeFolder("ringed");
    testing::internal::CaptureStderr();
    const DiscoveryResult result =
        scan({{ringed, home.file(".claude-broken")}, {{ringed, "Mine"}}});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_EQ(result.facts.size(), 3U);
    for (const DiscoveredFacts& facts : result.facts) {
        for (const auto& text : {facts.email, facts.org, facts.displayName, facts.plan,
                                 facts.resolvedService, std::optional(facts.configDir)})
            EXPECT_EQ(text.value_or("").find(marker), std::string::npos);
    }
}

} // namespace
} // namespace vellumor::accountDiscoveryLiveTest
