#include "store/FileCalls.h"

#include "base/FileHandle.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <cerrno>
#include <filesystem>

namespace vellumor::fileCallsTest {

TEST(FileCalls, aNewFileIsClosedInChildrenAndHasTheModeAskedFor)
{
    const test::TempFolder folder;
    const FileHandle file(FileCalls().create(folder.file("new").c_str(), 0600));
    ASSERT_TRUE(file.valid());
    EXPECT_EQ(::fcntl(file.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(test::modeOf(folder.file("new")), 0600U);
}

TEST(FileCalls, aFileThatExistsIsNotOpened)
{
    const test::TempFolder folder;
    const std::string path = folder.put("old", "bytes");
    EXPECT_EQ(FileCalls().create(path.c_str(), 0600), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(test::contentsOf(path), "bytes");
}

TEST(FileCalls, aLinkIsNotFollowedToMakeAFile)
{
    const test::TempFolder folder;
    std::filesystem::create_symlink(folder.file("elsewhere"), folder.file("link"));
    EXPECT_EQ(FileCalls().create(folder.file("link").c_str(), 0600), -1);
    EXPECT_FALSE(std::filesystem::exists(folder.file("elsewhere")));
}

TEST(FileCalls, bytesAreWrittenSyncedAndMovedOntoTheirName)
{
    const test::TempFolder folder;
    const FileCalls calls;
    const std::string target = folder.put("target", "old");
    {
        const FileHandle file(calls.create(folder.file("temp").c_str(), 0600));
        EXPECT_EQ(calls.write(file.get(), "bytes", 5), 5);
        EXPECT_EQ(calls.fsync(file.get()), 0);
    }
    EXPECT_EQ(calls.rename(folder.file("temp").c_str(), target.c_str()), 0);
    EXPECT_EQ(test::contentsOf(target), "bytes");
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"target"});
}

TEST(FileCalls, aFailureIsToldByErrno)
{
    const FileCalls calls;
    EXPECT_EQ(calls.write(-1, "x", 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(calls.fsync(-1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(calls.rename("/nonexistent/a", "/nonexistent/b"), -1);
    EXPECT_EQ(errno, ENOENT);
}

} // namespace vellumor::fileCallsTest
