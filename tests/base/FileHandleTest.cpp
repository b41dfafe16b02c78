#include "base/FileHandle.h"

#include <gtest/gtest.h>

#include <fcntl.h>

namespace vellumor::fileHandleTest {

namespace {

int openNull()
{
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool isOpen(int descriptor)
{
    return ::fcntl(descriptor, F_GETFD) != -1;
}

} // namespace

TEST(FileHandle, closesItsFileWhenItGoes)
{
    const int descriptor = openNull();
    {
        const FileHandle handle(descriptor);
        EXPECT_TRUE(handle.valid());
        EXPECT_EQ(handle.get(), descriptor);
        EXPECT_TRUE(isOpen(descriptor));
    }
    EXPECT_FALSE(isOpen(descriptor));
}

TEST(FileHandle, handsItsFileOverWhenItMoves)
{
    const int descriptor = openNull();
    FileHandle outer;
    EXPECT_FALSE(outer.valid());
    {
        FileHandle inner(descriptor);
        FileHandle moved(std::move(inner));
        outer = std::move(moved);
    }
    EXPECT_TRUE(isOpen(descriptor));
    EXPECT_EQ(outer.get(), descriptor);
}

} // namespace vellumor::fileHandleTest
