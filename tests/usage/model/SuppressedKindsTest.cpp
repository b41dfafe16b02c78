#include "usage/model/SuppressedKinds.h"

#include "base/Sha256.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace vellumor::suppressedKindsTest {

TEST(SuppressedKinds, aKindIsSuppressedWhenItsDigestIsListed)
{
    const std::string digest = Sha256::hex("secret_kind");
    const std::string_view listed[] = {"0000", digest};
    EXPECT_TRUE(SuppressedKinds::isSuppressed("secret_kind", listed));
    EXPECT_FALSE(SuppressedKinds::isSuppressed("Secret_kind", listed));
    EXPECT_FALSE(SuppressedKinds::isSuppressed("secret_kind ", listed));
    EXPECT_FALSE(SuppressedKinds::isSuppressed("", listed));
    EXPECT_FALSE(SuppressedKinds::isSuppressed("secret_kind", {}));
}

TEST(SuppressedKinds, theListHoldsEightDifferentDigests)
{
    std::set<std::string_view> digests;
    for (const std::string_view digest : SharedLists::suppressedKindHashes) {
        digests.insert(digest);
        EXPECT_EQ(digest.size(), 64U);
        EXPECT_EQ(digest.find_first_not_of("0123456789abcdef"), std::string_view::npos);
    }
    EXPECT_EQ(digests.size(), 8U);
}

// A slip in one digit would let a kind through; this is the digest of the whole list.
TEST(SuppressedKinds, theListIsTheOneThatWasAgreed)
{
    std::string all;
    for (const std::string_view digest : SharedLists::suppressedKindHashes)
        all.append(digest);
    EXPECT_EQ(Sha256::hex(all), "25e74fd31591aec241da33cf57d28442010e7844b211820e9a9415cd0a96a2fa");
}

TEST(SuppressedKinds, theKindsThatUsersKnowAreNotOnTheList)
{
    for (const char* kind :
         {"session", "weekly_all", "weekly_scoped", "seven_day_opus", "seven_day_sonnet",
          "seven_day_oauth_apps", "seven_day_cowork", "unknown", ""})
        EXPECT_FALSE(SuppressedKinds::isSuppressed(kind)) << kind;
}

} // namespace vellumor::suppressedKindsTest
