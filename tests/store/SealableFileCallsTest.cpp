#include "store/SealableFileCalls.h"

#include "base/FileHandle.h"
#include "store/FileStore.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <thread>

namespace vellumor::sealableFileCallsTest {

namespace {

namespace fs = std::filesystem;

struct SealableFileCallsTest : testing::Test {
    test::TempFolder folder;
    SealableFileCalls calls;
};

} // namespace

TEST_F(SealableFileCallsTest, untilTheyAreSealedTheyAreTheSystemsOwn)
{
    const FileHandle file(calls.create(folder.file("new").c_str(), 0600));
    ASSERT_TRUE(file.valid());
    EXPECT_EQ(calls.write(file.get(), "bytes", 5), 5);
    EXPECT_EQ(calls.fsync(file.get()), 0);
    EXPECT_EQ(calls.mkdir(folder.file("folder").c_str(), 0700), 0);
    EXPECT_EQ(calls.rename(folder.file("new").c_str(), folder.file("folder/moved").c_str()), 0);
    EXPECT_EQ(test::contentsOf(folder.file("folder/moved")), "bytes");
    EXPECT_EQ(calls.create(folder.file("folder/moved").c_str(), 0600), -1);
    EXPECT_EQ(errno, EEXIST); // an error is the system's too
}

TEST_F(SealableFileCallsTest, sealedNothingComesToStandOnDisk)
{
    const std::string old = folder.put("old", "bytes");
    calls.seal();
    errno = 0;
    EXPECT_EQ(calls.create(folder.file("new").c_str(), 0600), -1);
    EXPECT_EQ(errno, EROFS);
    errno = 0;
    EXPECT_EQ(calls.mkdir(folder.file("folder").c_str(), 0700), -1);
    EXPECT_EQ(errno, EROFS);
    errno = 0;
    EXPECT_EQ(calls.rename(old.c_str(), folder.file("moved").c_str()), -1);
    EXPECT_EQ(errno, EROFS);
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"old"});
    calls.seal(); // once more is no harm
    EXPECT_EQ(calls.mkdir(folder.file("folder").c_str(), 0700), -1);
}

TEST_F(SealableFileCallsTest, sealedWhatIsThereCanStillBeRemoved)
{
    const std::string old = folder.put("old", "bytes");
    calls.seal();
    EXPECT_EQ(calls.unlinkat(AT_FDCWD, old.c_str(), 0), 0);
    EXPECT_FALSE(fs::exists(old));
}

// A file that was begun before the seal has no way to its name any more.
TEST_F(SealableFileCallsTest, aFileThatIsBeingWrittenNeverGetsItsName)
{
    const std::string begun = folder.file("begun.tmp");
    const FileHandle file(calls.create(begun.c_str(), 0600));
    ASSERT_TRUE(file.valid());
    calls.seal();
    EXPECT_EQ(calls.write(file.get(), "bytes", 5), 5);
    EXPECT_EQ(calls.rename(begun.c_str(), folder.file("file").c_str()), -1);
    EXPECT_FALSE(fs::exists(folder.file("file")));
}

TEST_F(SealableFileCallsTest, aStoreThatWritesOnMakesNeitherFileNorFolder)
{
    const FileStore files(calls);
    const std::string data = folder.file("Vellumor");
    files.ensureDirectory(data);
    files.write("{}", data + "/preferences.json");
    ASSERT_TRUE(fs::exists(data + "/preferences.json"));
    calls.seal();
    fs::remove_all(data);
    files.ensureDirectory(data);
    files.write("{}", data + "/preferences.json");
    files.write("{}", data + "/history/0123abcd.json");
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>());
}

// Whoever seals knows that a call which was let through is over: what it made can be removed.
TEST_F(SealableFileCallsTest, theSealWaitsForCallsThatAreUnderWay)
{
    std::atomic<bool> isSealed = false;
    std::atomic<int> made = 0;
    std::thread writer([&] {
        for (int i = 0;; ++i) {
            const bool began = !isSealed;
            if (calls.mkdir(folder.file(std::to_string(i)).c_str(), 0700) != 0)
                return;
            EXPECT_TRUE(began); // none succeeds that began behind the seal
            ++made;
        }
    });
    while (made < 100)
        std::this_thread::yield();
    calls.seal();
    isSealed = true;
    const std::size_t atTheSeal = test::namesIn(folder.path()).size();
    writer.join();
    EXPECT_EQ(test::namesIn(folder.path()).size(), atTheSeal);
}

} // namespace vellumor::sealableFileCallsTest
