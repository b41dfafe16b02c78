#include "base/SecretBytes.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <type_traits>
#include <utility>

namespace vellumor::secretBytesTest {

static_assert(!std::is_copy_constructible_v<SecretBytes>);
static_assert(!std::is_copy_assignable_v<SecretBytes>);

TEST(SecretBytes, holdACopyOfWhatTheyAreGiven)
{
    std::string given = "example-token";
    const SecretBytes secret(given);
    given[0] = 'X';
    EXPECT_EQ(secret.view(), "example-token");
}

TEST(SecretBytes, beginAsZeroesWhenOnlyASizeIsGiven)
{
    SecretBytes secret(100);
    EXPECT_EQ(secret.view(), std::string(100, '\0'));
    secret.bytes()[99] = 'x';
    EXPECT_EQ(secret.view().back(), 'x');
}

TEST(SecretBytes, ofNoSizeAreEmpty)
{
    EXPECT_TRUE(SecretBytes().view().empty());
    EXPECT_TRUE(SecretBytes(std::size_t{0}).view().empty());
    EXPECT_TRUE(SecretBytes(std::string_view()).view().empty());
}

TEST(SecretBytes, haveOneOwnerWhenTheyMove)
{
    SecretBytes first(std::string_view("example-token"));
    const char* address = first.view().data();
    SecretBytes second(std::move(first));
    EXPECT_EQ(second.view(), "example-token");
    EXPECT_EQ(second.view().data(), address); // no copy is left behind
    EXPECT_TRUE(first.view().empty());        // NOLINT(bugprone-use-after-move): that is the rule
    SecretBytes third(std::string_view("other"));
    third = std::move(second);
    EXPECT_EQ(third.view(), "example-token");
}

TEST(SecretBytes, shrinkingForgetsWhatLiesBehind)
{
    SecretBytes secret(std::string_view("example-token"));
    const char* memory = secret.view().data();
    secret.shrink(7);
    EXPECT_EQ(secret.view(), "example");
    EXPECT_TRUE(std::all_of(memory + 7, memory + 13, [](char c) { return c == '\0'; }));
}

TEST(SecretBytes, shrinkingToMoreThanThereIsChangesNothing)
{
    SecretBytes secret(std::string_view("example"));
    secret.shrink(7);
    secret.shrink(8);
    EXPECT_EQ(secret.view(), "example");
    secret.shrink(0);
    EXPECT_TRUE(secret.view().empty());
}

TEST(SecretBytes, refillingWipesAndKeepsTheMemoryThatIsLargeEnough)
{
    SecretBytes bytes(std::string_view("abcdefgh"));
    const char* const data = bytes.view().data();
    bytes.refill(3);
    EXPECT_EQ(bytes.view(), std::string_view("\0\0\0", 3));
    EXPECT_EQ(std::string_view(data, 9), std::string_view("\0\0\0\0\0\0\0\0\0", 9));
    bytes.refill(8);
    EXPECT_EQ(bytes.view().data(), data);
    EXPECT_EQ(bytes.view().size(), 8U);
    bytes.refill(9);
    EXPECT_EQ(bytes.view(), std::string(9, '\0'));
    bytes.refill(0);
    EXPECT_TRUE(bytes.view().empty());
}

TEST(SecretBytes, ofNoMemoryAreRefilledWithNewMemory)
{
    SecretBytes bytes;
    bytes.refill(0);
    EXPECT_TRUE(bytes.view().empty());
    bytes.refill(4);
    EXPECT_EQ(bytes.view(), std::string(4, '\0'));
    SecretBytes moved(std::move(bytes));
    bytes.refill(2); // NOLINT(bugprone-use-after-move): that is the rule
    EXPECT_EQ(bytes.view().size(), 2U);
    EXPECT_NE(bytes.view().data(), moved.view().data());
}

TEST(SecretBytes, keepingAPieceForgetsAllElse)
{
    SecretBytes bytes(std::string_view("abcdefgh"));
    const char* const data = bytes.view().data();
    bytes.keepOnly(2, 3);
    EXPECT_EQ(bytes.view(), "cde");
    EXPECT_EQ(std::string_view(data, 9), std::string_view("cde\0\0\0\0\0\0", 9));
}

TEST(SecretBytes, aPieceThatDoesNotLieWithinChangesNothing)
{
    SecretBytes bytes(std::string_view("abc"));
    bytes.keepOnly(1, 3);
    bytes.keepOnly(4, 0);
    EXPECT_EQ(bytes.view(), "abc");
    EXPECT_EQ(bytes.view().data()[3], '\0');
}

// The page behind the bytes cannot be read, so that a read beyond the end ends the program instead
// of telling a secret.
TEST(SecretBytes, areFollowedByAPageThatCannotBeRead)
{
    const SecretBytes secret(std::string_view("example-token"));
    const char* end = secret.view().data() + secret.view().size() + 1; // behind the closing zero
    int readEnd[2];
    ASSERT_EQ(::pipe(readEnd), 0);
    EXPECT_EQ(::write(readEnd[1], end, 1), -1); // the kernel reads it for us, and says so
    EXPECT_EQ(errno, EFAULT);
    ::close(readEnd[0]);
    ::close(readEnd[1]);
}

} // namespace vellumor::secretBytesTest
