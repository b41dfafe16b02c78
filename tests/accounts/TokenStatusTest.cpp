#include "accounts/TokenStatus.h"

#include <gtest/gtest.h>

namespace vellumor::tokenStatusTest {
namespace {

TEST(TokenStatus, eachCaseHasItsOwnWord)
{
    EXPECT_EQ(name(TokenStatus::readable), "readable");
    EXPECT_EQ(name(TokenStatus::expired), "expired");
    EXPECT_EQ(name(TokenStatus::signedOut), "signedOut");
    EXPECT_EQ(name(TokenStatus::needsApproval), "needsApproval");
    EXPECT_EQ(name(TokenStatus::notFound), "notFound");
}

} // namespace
} // namespace vellumor::tokenStatusTest
