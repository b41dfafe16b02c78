#include "accounts/KeychainReader.h"

#include "accounts/DefaultAccount.h"
#include "support/FakeClock.h"
#include "support/FakeKeyring.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace vellumor::keychainReaderTest {
namespace {

using Kind = KeychainError::Kind;
using KeychainServiceResolver::Probe;
using Names = std::vector<std::string>;

std::string signIn(const std::string& token, const std::string& more = "")
{
    return R"({"claudeAiOauth": {"accessToken": ")" + token + "\"" + more + "}}";
}

// The token, or the description of the error.
std::string outcome(const std::variant<ClaudeCredentials, KeychainError>& result)
{
    if (const auto* error = std::get_if<KeychainError>(&result))
        return error->description();
    return std::string(std::get<ClaudeCredentials>(result).accessToken.reveal());
}

const std::string plain = "Claude Code-credentials";
const std::string notFound = "no matching Keychain item";
const std::string denied = "access denied (Always-Allow not granted)";
const std::string undecodable = "Keychain item was not decodable JSON";

struct KeychainReaderTest : testing::Test {
    test::TempFolder home;
    test::FakeKeyring keyring;
    test::FakeClock clock;
    ServiceDirectories directories{home.path()};
    std::string work = DefaultAccount::fileService(home.file(".claude-work"), home.path());
    std::string hashedDefault =
        DefaultAccount::serviceCandidates(home.file(".claude"), home.path()).at(1);
    int waits = 0;
    KeychainReader::Sources sources;

    KeychainReaderTest()
    {
        directories.rebuild({home.file(".claude"), home.file(".claude-work")});
        sources.beforeRereading = [this] { ++waits; };
    }

    std::string putFile(const std::string& dir, const std::string& bytes) const
    {
        return home.put(dir + "/.credentials.json", bytes);
    }
    [[nodiscard]] KeychainReader reader() { return {directories, keyring, clock, sources}; }
    [[nodiscard]] std::string read(const std::string& service)
    {
        return outcome(reader().readCredentials(service));
    }
};

TEST_F(KeychainReaderTest, theFileComesBeforeTheKeyring)
{
    putFile(".claude-work", signIn("of the file"));
    keyring.put(work, signIn("of the keyring"));
    EXPECT_EQ(read(work), "of the file");
    EXPECT_EQ(keyring.calls(), Names());
}

TEST_F(KeychainReaderTest, withoutAFileTheKeyringIsAsked)
{
    home.makeFolder(".claude-work");
    keyring.put(work, signIn("of the keyring"));
    EXPECT_EQ(read(work), "of the keyring");
    EXPECT_EQ(keyring.calls(), Names{"read " + work});
}

TEST_F(KeychainReaderTest, withNeitherThereIsNoItem)
{
    EXPECT_EQ(read(work), notFound);
    EXPECT_EQ(read(plain), notFound);
}

TEST_F(KeychainReaderTest, thePlainServiceIsTheFileOfTheDefaultDirectory)
{
    putFile(".claude", signIn("default"));
    putFile(".claude-work", signIn("work"));
    EXPECT_EQ(read(plain), "default");
    EXPECT_EQ(read(work), "work");
}

TEST_F(KeychainReaderTest, theHashedNameOfTheDefaultDirectoryIsInTheKeyringOnly)
{
    putFile(".claude", signIn("of the file"));
    EXPECT_EQ(read(hashedDefault), notFound);
    keyring.put(hashedDefault, signIn("of the keyring"));
    EXPECT_EQ(read(hashedDefault), "of the keyring");
}

TEST_F(KeychainReaderTest, theServiceOfNoKnownDirectoryIsInTheKeyringOnly)
{
    putFile(".claude-other", signIn("of the file"));
    const auto other = DefaultAccount::fileService(home.file(".claude-other"), home.path());
    EXPECT_EQ(read(other), notFound);
    directories.rebuild({home.file(".claude-other")});
    EXPECT_EQ(read(other), "of the file");
    EXPECT_EQ(read(work), notFound);
    keyring.put("Mine", signIn("mine"));
    EXPECT_EQ(read("Mine"), "mine");
}

TEST_F(KeychainReaderTest, aFileThatMayNotBeReadNeedsApprovalAndHidesTheKeyring)
{
    keyring.put(work, signIn("of the keyring"));
    for (const int error : {EACCES, EPERM}) {
        SCOPED_TRACE(error);
        sources.readFile = [error](const std::string&, SecretBytes&) {
            return SecretFileContents{ReadStatus::denied, {}, error};
        };
        EXPECT_EQ(read(work), denied);
        EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::needsApproval, {}, {}}));
    }
    EXPECT_EQ(keyring.calls(), Names());
    EXPECT_EQ(waits, 0);
}

// Some numbers of the system's errors are also words of the decoder's status.
TEST_F(KeychainReaderTest, anyOtherErrorIsToldByItsNumber)
{
    for (const int error : {EIO, ELOOP, EMFILE, 44, 45, 51, 128}) {
        SCOPED_TRACE(error);
        sources.readFile = [error](const std::string&, SecretBytes&) {
            return SecretFileContents{ReadStatus::unreadable, {}, error};
        };
        EXPECT_EQ(read(work), "Keychain OSStatus " + std::to_string(error));
        EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::notFound, {}, {}}));
    }
    EXPECT_EQ(waits, 0);
}

TEST_F(KeychainReaderTest, aPipeOrAFolderInThePlaceOfTheFileIsAnErrorAndBlocksNobody)
{
    home.makeFolder(".claude");
    ASSERT_EQ(::mkfifo(home.file(".claude/.credentials.json").c_str(), 0600), 0);
    EXPECT_EQ(read(plain), "Keychain OSStatus -1");
    home.makeFolder(".claude-work/.credentials.json");
    EXPECT_EQ(read(work), "Keychain OSStatus " + std::to_string(EISDIR));
    EXPECT_EQ(keyring.calls(), Names());
}

TEST_F(KeychainReaderTest, anUndecodableFileIsReadOnceMoreAfterAWait)
{
    putFile(".claude-work", R"({"claudeAiOauth": {"acc)");
    sources.beforeRereading = [this] {
        ++waits;
        putFile(".claude-work", signIn("written in the meantime"));
    };
    EXPECT_EQ(read(work), "written in the meantime");
    EXPECT_EQ(waits, 1);
}

TEST_F(KeychainReaderTest, aFileThatStaysUndecodableIsReadTwiceAndNotMore)
{
    int reads = 0;
    sources.readFile = [&reads](const std::string&, SecretBytes&) {
        ++reads;
        return SecretFileContents{ReadStatus::ok, SecretBytes(std::string_view("{")), 0};
    };
    EXPECT_EQ(read(work), undecodable);
    EXPECT_EQ(reads, 2);
    EXPECT_EQ(waits, 1);
    EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::notFound, {}, {}}));
    EXPECT_EQ(keyring.calls(), Names());
}

TEST_F(KeychainReaderTest, anEmptyFileIsReadOnceMoreToo)
{
    putFile(".claude-work", "");
    EXPECT_EQ(read(work), undecodable);
    EXPECT_EQ(waits, 1);
}

TEST_F(KeychainReaderTest, anUndecodableFileThatGoesAwayMeanwhileLeavesTheKeyring)
{
    putFile(".claude-work", "{");
    keyring.put(work, signIn("of the keyring"));
    sources.beforeRereading = [this] {
        std::filesystem::remove(home.file(".claude-work/.credentials.json"));
    };
    EXPECT_EQ(read(work), "of the keyring");
}

TEST_F(KeychainReaderTest, anUndecodableItemOfTheKeyringIsReadOnce)
{
    keyring.put(work, "{");
    EXPECT_EQ(read(work), undecodable);
    EXPECT_EQ(keyring.calls(), Names{"read " + work});
    EXPECT_EQ(waits, 0);
}

TEST_F(KeychainReaderTest, aLockedItemOfTheKeyringNeedsApproval)
{
    keyring.putUnreadable(work, RawCredential::denied);
    EXPECT_EQ(read(work), denied);
    EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::needsApproval, {}, {}}));
    keyring.putUnreadable(work, RawCredential::failed);
    EXPECT_EQ(read(work), "Keychain OSStatus -1");
    EXPECT_EQ(reader().probe(work).status, TokenStatus::notFound);
}

TEST_F(KeychainReaderTest, aHexadecimalFileIsReadLikeAPlainOne)
{
    putFile(".claude-work",
            "7b22636c61756465416941757468223a7b7d7d\n"); // {"claudeAiAuth":{}}: the wrong key
    EXPECT_EQ(read(work), undecodable);
    putFile(".claude-work", "7b22636c61756465"
                            "41694f61757468223a7b22616363657373546f6b656e223a2261227d7d\n");
    EXPECT_EQ(read(work), "a");
}

TEST_F(KeychainReaderTest, aProbeTellsStatusPlanAndDate)
{
    const auto now =
        std::chrono::duration_cast<std::chrono::milliseconds>(clock.now().time_since_epoch())
            .count();
    const Instant limit = clock.now() + std::chrono::seconds(60);
    putFile(".claude-work", signIn("a", R"(, "subscriptionType": "max", "expiresAt": )" +
                                            std::to_string(now + 60'000)));
    EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::readable, "max", limit}));
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::expired, "max", limit}));
    putFile(".claude-work", signIn("", R"(, "expiresAt": 0)"));
    EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::signedOut, {}, Instant()}));
    putFile(".claude-work", signIn("a"));
    EXPECT_EQ(reader().probe(work), (Probe{TokenStatus::readable, {}, {}}));
}

TEST_F(KeychainReaderTest, aScanReadsOneCredentialAfterAnotherIntoTheSameWipedMemory)
{
    putFile(".claude", signIn("a token that is long enough to be told from the next"));
    putFile(".claude-work", signIn("short"));
    SecretBytes memory;
    EXPECT_EQ(reader().probe(plain, memory).status, TokenStatus::readable);
    const char* const data = memory.view().data();
    EXPECT_TRUE(memory.view().empty());
    EXPECT_EQ(std::string_view(data, 8), std::string_view("\0\0\0\0\0\0\0\0", 8));
    EXPECT_EQ(reader().probe(work, memory).status, TokenStatus::readable);
    EXPECT_EQ(memory.view().data(), data);
}

TEST_F(KeychainReaderTest, aDirectoryThatIsDecomposedOnDiskIsReadUnderItsComposedName)
{
    putFile(".claude-e\u0301", signIn("a"));
    const std::string dir = home.file(".claude-\u00E9");
    directories.rebuild({dir});
    EXPECT_EQ(read(DefaultAccount::fileService(dir, home.path())), "a");
}

TEST_F(KeychainReaderTest, nothingIsKeptBetweenTwoReads)
{
    putFile(".claude-work", signIn("first"));
    EXPECT_EQ(read(work), "first");
    putFile(".claude-work", signIn("second"));
    EXPECT_EQ(read(work), "second");
}

TEST_F(KeychainReaderTest, theWaitBeforeTheSecondLookIsATenthOfASecond)
{
    const auto begin = std::chrono::steady_clock::now();
    KeychainReader::Sources().beforeRereading();
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, std::chrono::milliseconds(100));
    EXPECT_LT(waited, std::chrono::seconds(5));
}

} // namespace
} // namespace vellumor::keychainReaderTest
