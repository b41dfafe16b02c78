#include "usage/model/UsageLevel.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::usageLevelTest {
namespace {

TEST(UsageLevel, itRisesAtSeventyFiveAndAtNinety)
{
    const std::pair<double, UsageLevel> rows[] = {
        {-5, UsageLevel::calm},
        {0, UsageLevel::calm},
        {74.999, UsageLevel::calm},
        {75, UsageLevel::high},
        {89.999, UsageLevel::high},
        {90, UsageLevel::full},
        {150, UsageLevel::full},
        {std::numeric_limits<double>::infinity(), UsageLevel::full},
        {std::numeric_limits<double>::quiet_NaN(), UsageLevel::calm},
    };
    for (const auto& [percent, level] : rows)
        EXPECT_EQ(usageLevel(percent), level) << percent;
}

TEST(UsageLevel, eachHasAWord)
{
    EXPECT_STREQ(word(UsageLevel::calm), "calm");
    EXPECT_STREQ(word(UsageLevel::high), "high");
    EXPECT_STREQ(word(UsageLevel::full), "full");
}

} // namespace
} // namespace vellumor::usageLevelTest
