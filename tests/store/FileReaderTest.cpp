#include "store/FileReader.h"

#include "base/FileHandle.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace vellumor::fileReaderTest {

namespace {

SecretFileContents secretOf(const std::string& path)
{
    SecretBytes memory;
    return readSecretFile(path, memory);
}

using namespace std::string_literals;

// Both ways to read must judge alike.
void expectStatus(const std::string& path, ReadStatus status, int error)
{
    SCOPED_TRACE(path);
    const FileContents contents = readFile(path);
    EXPECT_EQ(contents.status, status);
    EXPECT_EQ(contents.error, error);
    EXPECT_TRUE(contents.bytes.empty());
    const SecretFileContents secret = secretOf(path);
    EXPECT_EQ(secret.status, status);
    EXPECT_EQ(secret.error, error);
    EXPECT_TRUE(secret.bytes.view().empty());
}

// Mode bits do not hold back the superuser, so the read is tried by a child that is nobody.
ReadStatus statusForAnotherUser(const std::string& path)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && ::setuid(65534) != 0)
            ::_exit(99);
        ::_exit(static_cast<int>(readFile(path).status));
    }
    int result = 0;
    ::waitpid(child, &result, 0);
    return static_cast<ReadStatus>(WEXITSTATUS(result));
}

std::string sparseFile(const test::TempFolder& folder, std::size_t size)
{
    std::string path = folder.put("sparse", "");
    EXPECT_EQ(::truncate(path.c_str(), static_cast<off_t>(size)), 0);
    return path;
}

} // namespace

TEST(FileReader, aWholeFileIsReadByteForByte)
{
    const test::TempFolder folder;
    for (const std::string& bytes : {""s, "a"s, "a\0b\n\xFF"s, std::string(100000, 'x')}) {
        const std::string path = folder.put("file", bytes);
        const FileContents contents = readFile(path);
        EXPECT_EQ(contents.status, ReadStatus::ok);
        EXPECT_EQ(contents.bytes, bytes);
        EXPECT_EQ(contents.error, 0);
        const SecretFileContents secret = secretOf(path);
        EXPECT_EQ(secret.status, ReadStatus::ok);
        EXPECT_EQ(secret.bytes.view(), bytes);
    }
}

TEST(FileReader, aFileThatIsNotThereIsMissing)
{
    const test::TempFolder folder;
    folder.put("file", "");
    std::filesystem::create_symlink(folder.file("gone"), folder.file("dangling"));
    expectStatus(folder.file("missing"), ReadStatus::missing, ENOENT);
    expectStatus(folder.file("no/such/folder"), ReadStatus::missing, ENOENT);
    expectStatus(folder.file("file/below"), ReadStatus::missing, ENOTDIR);
    expectStatus(folder.file("dangling"), ReadStatus::missing, ENOENT);
    expectStatus("", ReadStatus::missing, ENOENT);
}

TEST(FileReader, aFileThatMayNotBeReadIsDenied)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file", "bytes");
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    EXPECT_EQ(statusForAnotherUser(path), ReadStatus::denied);
}

TEST(FileReader, aFolderIsUnreadable)
{
    const test::TempFolder folder;
    expectStatus(folder.path(), ReadStatus::unreadable, EISDIR);
}

TEST(FileReader, aPipeIsUnreadableAndNotWaitedFor)
{
    const test::TempFolder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    expectStatus(path, ReadStatus::unreadable, 0);
}

TEST(FileReader, aDeviceIsUnreadable)
{
    expectStatus("/dev/zero", ReadStatus::unreadable, 0);
    expectStatus("/dev/null", ReadStatus::unreadable, 0);
}

TEST(FileReader, aSocketIsUnreadable)
{
    const test::TempFolder folder;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder.file("s");
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const FileHandle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    expectStatus(path, ReadStatus::unreadable, ENXIO);
}

TEST(FileReader, aLinkIsFollowedAndACircleOfLinksIsUnreadable)
{
    const test::TempFolder folder;
    std::filesystem::create_symlink(folder.put("file", "bytes"), folder.file("link"));
    std::filesystem::create_symlink(folder.file("b"), folder.file("a"));
    std::filesystem::create_symlink(folder.file("a"), folder.file("b"));
    EXPECT_EQ(readFile(folder.file("link")).bytes, "bytes");
    expectStatus(folder.file("a"), ReadStatus::unreadable, ELOOP);
}

TEST(FileReader, eightMebibytesAreReadAndOneByteMoreIsUnreadable)
{
    const test::TempFolder folder;
    const std::string path = sparseFile(folder, 8U * 1024 * 1024);
    EXPECT_EQ(readFile(path).bytes.size(), 8U * 1024 * 1024);
    EXPECT_EQ(secretOf(path).bytes.view().size(), 8U * 1024 * 1024);
    expectStatus(sparseFile(folder, 8U * 1024 * 1024 + 1), ReadStatus::unreadable, EFBIG);
}

TEST(FileReader, theCallerMaySetALowerLimit)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file", "12345");
    EXPECT_EQ(readFile(path, 5).bytes, "12345");
    EXPECT_EQ(readFile(path, 4).status, ReadStatus::unreadable);
    EXPECT_EQ(readFile(path, 4).error, EFBIG);
}

TEST(FileReader, aNameInAnotherUnicodeCompositionFindsItsFile)
{
    const test::TempFolder folder;
    folder.put("jose\xCC\x81/cafe\xCC\x81.json", "decomposed");
    folder.put("n\xC3\xA9.json", "composed");
    EXPECT_EQ(readFile(folder.file("jos\xC3\xA9/caf\xC3\xA9.json")).bytes, "decomposed");
    EXPECT_EQ(readFile(folder.file("ne\xCC\x81.json")).bytes, "composed");
    EXPECT_EQ(secretOf(folder.file("jos\xC3\xA9/caf\xC3\xA9.json")).bytes.view(), "decomposed");
    EXPECT_EQ(readFile(folder.file("jos\xC3\xA9/caf\xC3\xA8.json")).status, ReadStatus::missing);
}

TEST(FileReader, noFileIsLeftOpen)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file", "bytes");
    const auto openFiles = [] { return test::namesIn("/proc/self/fd").size(); };
    const auto before = openFiles();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(readFile(path).status, ReadStatus::ok);
        EXPECT_EQ(readFile(path, 1).status, ReadStatus::unreadable);
        EXPECT_EQ(readFile(folder.path()).status, ReadStatus::unreadable);
        EXPECT_EQ(secretOf(path).status, ReadStatus::ok);
    }
    EXPECT_EQ(openFiles(), before);
}

} // namespace vellumor::fileReaderTest
