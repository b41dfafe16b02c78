#include "store/FileStore.h"

#include "base/Json.h"
#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

namespace vellumor::fileStoreTest {

namespace {

using Names = std::vector<std::string>;

class Umask {
public:
    explicit Umask(mode_t mask)
        : m_before(::umask(mask))
    {
    }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;
    ~Umask() { ::umask(m_before); }

private:
    mode_t m_before;
};

} // namespace

TEST(FileStore, writingMakesTheFileAndItsFoldersForTheOwnerAlone)
{
    for (const mode_t mask : {0000U, 0022U, 0077U, 0777U}) {
        SCOPED_TRACE(mask);
        const test::TempFolder folder;
        const std::string path = folder.file("a/b/file.json");
        {
            const Umask umask(mask);
            EXPECT_TRUE(FileStore().write("bytes", path));
        }
        EXPECT_EQ(test::contentsOf(path), "bytes");
        EXPECT_EQ(test::modeOf(path), 0600U);
        EXPECT_EQ(test::modeOf(folder.file("a")), 0700U);
        EXPECT_EQ(test::modeOf(folder.file("a/b")), 0700U);
        EXPECT_EQ(test::namesIn(folder.file("a/b")), Names{"file.json"});
    }
}

TEST(FileStore, aWrittenFileReplacesTheOldOneAndItsMode)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file.json", "old and longer");
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    EXPECT_TRUE(FileStore().write("new", path));
    EXPECT_EQ(test::contentsOf(path), "new");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_TRUE(FileStore().write("", path));
    EXPECT_EQ(test::contentsOf(path), "");
}

TEST(FileStore, anOpenReaderKeepsTheOldFileWhole)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file.json", "old");
    const auto before = FileStore().fingerprint(path).fileNumber;
    EXPECT_TRUE(FileStore().write("new", path));
    EXPECT_NE(FileStore().fingerprint(path).fileNumber, before); // replaced, not written into
}

TEST(FileStore, theTemporaryIsHiddenInTheSameFolderAndNamedForFileAndProcess)
{
    const test::TempFolder folder;
    const test::FailingFileCalls calls;
    const FileStore files(calls);
    EXPECT_TRUE(files.write("1", folder.file("accounts.json")));
    EXPECT_TRUE(files.write("2", folder.file("accounts.json")));
    ASSERT_EQ(calls.created().size(), 2U);
    EXPECT_NE(calls.created()[0], calls.created()[1]);
    const std::regex form("\\.accounts\\.json\\." + std::to_string(::getpid()) +
                          "\\.[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"
                          "\\.tmp");
    for (const std::filesystem::path temp : calls.created()) {
        EXPECT_EQ(temp.parent_path(), folder.path());
        EXPECT_TRUE(std::regex_match(temp.filename().string(), form)) << temp;
    }
}

TEST(FileStore, theTemporaryIsNeverReadableByOthers)
{
    for (const mode_t mask : {0000U, 0077U, 0777U}) {
        SCOPED_TRACE(mask);
        const test::TempFolder folder;
        test::FailingFileCalls calls;
        unsigned bornAs = 07777;
        calls.onCreated([&](const std::string& path) { bornAs = test::modeOf(path); });
        const Umask umask(mask);
        EXPECT_TRUE(FileStore(calls).write("bytes", folder.file("file.json")));
        EXPECT_EQ(bornAs, 0600U & ~mask);
    }
}

TEST(FileStore, theBytesAreOnDiskBeforeTheRenameAndTheNameAfterIt)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    calls.limitWrites(4);
    EXPECT_TRUE(FileStore(calls).write("123456789", folder.file("file.json")));
    EXPECT_EQ(calls.log(),
              (Names{"create", "write", "write", "write", "fsync file", "rename", "fsync folder"}));
    EXPECT_EQ(test::contentsOf(folder.file("file.json")), "123456789");
}

TEST(FileStore, aSharedFileIsWrittenInTheSameOrder)
{
    const test::TempFolder folder;
    const test::FailingFileCalls calls;
    EXPECT_EQ(FileStore(calls).updateJSONObject(folder.file("file.json"), {},
                                                [](const Json&) { return Json::object(); }),
              FileStore::UpdateOutcome::written);
    EXPECT_EQ(calls.log(), (Names{"create", "write", "fsync file", "rename", "fsync folder"}));
}

TEST(FileStore, aLinkInPlaceOfTheFileIsReplacedAndItsTargetLeftAlone)
{
    const test::TempFolder folder;
    const std::string target = folder.put("target", "foreign");
    std::filesystem::create_symlink(target, folder.file("file.json"));
    EXPECT_TRUE(FileStore().write("new", folder.file("file.json")));
    EXPECT_EQ(test::contentsOf(target), "foreign");
    EXPECT_TRUE(std::filesystem::is_regular_file(
        std::filesystem::symlink_status(folder.file("file.json"))));
}

TEST(FileStore, aFolderIsMadeWithAllItsParents)
{
    const test::TempFolder folder;
    FileStore().ensureDirectory(folder.file("a/b/c"));
    for (const char* name : {"a", "a/b", "a/b/c"})
        EXPECT_EQ(test::modeOf(folder.file(name)), 0700U) << name;
    FileStore().ensureDirectory(folder.file("d/e/"));
    EXPECT_EQ(test::modeOf(folder.file("d/e")), 0700U);
}

TEST(FileStore, aFolderThatIsThereIsClosedToOthersAndItsParentsAreLeftAlone)
{
    const test::TempFolder folder;
    const std::string path = folder.makeFolder("parent/child");
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
    ASSERT_EQ(::chmod(folder.file("parent").c_str(), 0755), 0);
    FileStore().ensureDirectory(path);
    EXPECT_EQ(test::modeOf(path), 0700U);
    EXPECT_EQ(test::modeOf(folder.file("parent")), 0755U);
}

TEST(FileStore, aFolderBehindALinkIsUsedAndKeepsItsMode)
{
    const test::TempFolder folder;
    const std::string target = folder.makeFolder("elsewhere");
    ASSERT_EQ(::chmod(target.c_str(), 0755), 0);
    std::filesystem::create_symlink(target, folder.file("link"));
    FileStore().ensureDirectory(folder.file("link"));
    EXPECT_TRUE(FileStore().write("bytes", folder.file("link/file.json")));
    EXPECT_TRUE(FileStore().write("bytes", folder.file("link/sub/file.json")));
    EXPECT_EQ(test::modeOf(target), 0755U);
    EXPECT_EQ(test::modeOf(folder.file("elsewhere/sub")), 0700U);
    EXPECT_EQ(test::contentsOf(folder.file("elsewhere/file.json")), "bytes");
}

TEST(FileStore, aFolderThatCannotBeMadeShowsOnlyInTheWrite)
{
    const test::TempFolder folder;
    const std::string file = folder.put("file", "bytes");
    FileStore().ensureDirectory(file);
    FileStore().ensureDirectory(file + "/below");
    FileStore().ensureDirectory("");
    EXPECT_FALSE(FileStore().write("new", file + "/below/file.json"));
    EXPECT_EQ(test::contentsOf(file), "bytes");
    EXPECT_EQ(test::modeOf(file), 0644U & test::modeOf(file)); // not made a folder's mode
}

TEST(FileStore, theFingerprintOfAMissingFileIsAllZero)
{
    EXPECT_EQ(FileStore().fingerprint("/nonexistent/file"), (FileStore::Fingerprint{}));
    EXPECT_EQ(FileStore().fingerprint("/nonexistent/file"),
              (FileStore::Fingerprint{false, 0, 0, 0.0}));
}

TEST(FileStore, theFingerprintTellsNumberSizeAndTime)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file", "12345");
    const timespec times[] = {{1000, 0}, {1700000000, 500000000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(FileStore().fingerprint(path),
              (FileStore::Fingerprint{true, status.st_ino, 5, 1700000000.5}));
}

TEST(FileStore, mergingGoesTwoLevelsDeep)
{
    struct Row {
        const char* base;
        const char* delta;
        const char* merged;
    };
    const Row rows[] = {
        {R"({"a":{"x":0,"y":2}})", R"({"a":{"x":1}})", R"({"a":{"x":1,"y":2}})"},
        {R"({"a":{"x":0},"b":1})", R"({"a":null})", R"({"b":1})"},
        {R"({"a":{"x":0,"y":2}})", R"({"a":{"y":null}})", R"({"a":{"x":0}})"},
        {R"({"a":{"x":0}})", R"({"a":5})", R"({"a":5})"},
        {R"({"a":5})", R"({"a":{"x":0}})", R"({"a":{"x":0}})"},
        {R"({"a":[1,2]})", R"({"a":{"x":0}})", R"({"a":{"x":0}})"},
        {R"({})", R"({"a":{"x":0}})", R"({"a":{"x":0}})"},
        {R"({})", R"({"a":{"x":null}})", R"({"a":{"x":null}})"},
        {R"({"a":1})", R"({"b":null})", R"({"a":1})"},
        {R"({"a":1})", R"({})", R"({"a":1})"},
        {R"({"a":{"x":{"deep":1,"kept":2}}})", R"({"a":{"x":{"deep":3}}})",
         R"({"a":{"x":{"deep":3}}})"},
        {R"({"a":{"x":{"deep":1}}})", R"({"a":{"x":{"deep":null}}})",
         R"({"a":{"x":{"deep":null}}})"},
    };
    for (const auto& [base, delta, merged] : rows) {
        SCOPED_TRACE(std::string(base) + " with " + delta);
        EXPECT_EQ(FileStore::mergeAtKeyLevel(Json::parse(base), Json::parse(delta)),
                  Json::parse(merged));
    }
}

} // namespace vellumor::fileStoreTest
