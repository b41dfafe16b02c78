#include "base/SecureRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <regex>
#include <set>

namespace vellumor::secureRandomTest {

TEST(SecureRandom, numbersStayBelowTheirBoundAndReachAllOfIt)
{
    std::array<int, 6> counts{};
    for (int i = 0; i < 6000; ++i) {
        const auto number = SecureRandom::below(6);
        ASSERT_LT(number, 6U);
        ++counts[number];
    }
    // 1000 each are expected; 700 is ten standard deviations away.
    for (const int count : counts)
        EXPECT_GT(count, 700);
}

TEST(SecureRandom, aBoundOfOneGivesZero)
{
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(SecureRandom::below(1), 0U);
}

TEST(SecureRandom, aUuidIsOfVersion4InUpperCaseAndNeverTheSame)
{
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::string uuid = SecureRandom::uuid();
        EXPECT_TRUE(std::regex_match(uuid, form)) << uuid;
        EXPECT_TRUE(seen.insert(uuid).second) << uuid;
    }
}

} // namespace vellumor::secureRandomTest
