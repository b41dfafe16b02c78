#include "app/state/NewAccountNotice.h"

#include <gtest/gtest.h>

namespace vellumor::newAccountNoticeTest {
namespace {

TEST(NewAccountNotice, oneIsNamedMoreAreCountedToo)
{
    EXPECT_EQ(NewAccountNotice::text({}), std::nullopt);
    EXPECT_EQ(NewAccountNotice::text({"ada"}), "New account discovered · ada");
    EXPECT_EQ(NewAccountNotice::text({"ada", "Work"}), "2 new accounts discovered · ada, Work");
}

} // namespace
} // namespace vellumor::newAccountNoticeTest
