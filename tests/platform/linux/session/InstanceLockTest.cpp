#include "platform/linux/InstanceLock.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace vellumor::instanceLockTest {
namespace {

using Result = InstanceLock::Result;
using test::TempFolder;

struct InstanceLockTest : testing::Test {
    TempFolder folder;
    FileStore files;
    std::string path = folder.file("Vellumor/.lock");

    // Starts a process that takes the lock and waits to be killed; gives its id when it holds it.
    pid_t startHolder() const
    {
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            InstanceLock lock(files, path);
            const char held = lock.acquire() == Result::held ? 'y' : 'n';
            if (::write(ready[1], &held, 1) == 1)
                ::pause();
            ::_exit(0);
        }
        char held = 0;
        EXPECT_EQ(::read(ready[0], &held, 1), 1);
        EXPECT_EQ(held, 'y');
        ::close(ready[0]);
        ::close(ready[1]);
        return child;
    }

    static void end(pid_t child)
    {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
};

TEST_F(InstanceLockTest, askingForTheHolderCreatesNothing)
{
    const InstanceLock lock(files, path);
    EXPECT_EQ(lock.holder(), std::nullopt);
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST_F(InstanceLockTest, theFileHoldsTheProcessIdAndIsPrivate)
{
    InstanceLock lock(files, path);
    EXPECT_EQ(lock.acquire(), Result::held);
    EXPECT_EQ(test::contentsOf(path), std::to_string(::getpid()) + "\n");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(test::modeOf(folder.file("Vellumor")), 0700U);
}

TEST_F(InstanceLockTest, aSecondProcessIsRefusedAndToldWhoHoldsIt)
{
    const pid_t holder = startHolder();
    InstanceLock lock(files, path);
    EXPECT_EQ(lock.holder(), holder);
    EXPECT_EQ(lock.acquire(), Result::taken);
    EXPECT_EQ(test::contentsOf(path), std::to_string(holder) + "\n");
    end(holder);
}

TEST_F(InstanceLockTest, aKilledHolderLeavesNoLockBehind)
{
    end(startHolder());
    InstanceLock lock(files, path);
    EXPECT_EQ(lock.holder(), std::nullopt);
    EXPECT_EQ(lock.acquire(), Result::held);
    EXPECT_EQ(test::contentsOf(path), std::to_string(::getpid()) + "\n");
}

TEST_F(InstanceLockTest, aReleasedLockCanBeTaken)
{
    InstanceLock lock(files, path);
    EXPECT_EQ(lock.acquire(), Result::held);
    lock.release();
    end(startHolder());
}

TEST_F(InstanceLockTest, theHolderDoesNotFindItself)
{
    InstanceLock lock(files, path);
    EXPECT_EQ(lock.acquire(), Result::held);
    EXPECT_EQ(lock.holder(), std::nullopt);
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(InstanceLock(files, path).holder() == ::getppid() ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0); // asking for the holder did not free the lock
}

TEST_F(InstanceLockTest, aPlaceWhereNoFileCanBeIsNoHindrance)
{
    folder.put("file", "");
    InstanceLock lock(files, folder.file("file/Vellumor/.lock"));
    EXPECT_EQ(lock.holder(), std::nullopt);
    EXPECT_EQ(lock.acquire(), Result::unavailable);
}

TEST_F(InstanceLockTest, aLinkIsNotFollowedIntoAForeignFile)
{
    const std::string foreign = folder.put("foreign", "precious");
    std::filesystem::create_directory(folder.file("Vellumor"));
    std::filesystem::create_symlink(foreign, path);
    InstanceLock lock(files, path);
    EXPECT_EQ(lock.acquire(), Result::unavailable);
    EXPECT_EQ(test::contentsOf(foreign), "precious");
}

} // namespace
} // namespace vellumor::instanceLockTest
