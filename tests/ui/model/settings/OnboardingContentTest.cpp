#include "ui/model/settings/OnboardingContent.h"

#include <gtest/gtest.h>

namespace vellumor::onboardingContentTest {
namespace {

using enum OnboardingStep;
using Steps = std::vector<OnboardingStep>;

TEST(OnboardingContent, aSingleAccountHasNothingToArrange)
{
    const Steps all = {welcome, accounts, disclosure};
    EXPECT_EQ(OnboardingContent::steps(0), all);
    EXPECT_EQ(OnboardingContent::steps(1), (Steps{welcome, disclosure}));
    EXPECT_EQ(OnboardingContent::steps(2), all);
    EXPECT_EQ(OnboardingContent::steps(9), all);
}

TEST(OnboardingContent, theProgressCountsFromOne)
{
    EXPECT_EQ(OnboardingContent::progress(0, 3), "Step 1 of 3");
    EXPECT_EQ(OnboardingContent::progress(1, 2), "Step 2 of 2");
    EXPECT_EQ(OnboardingContent::progress(2, 3), "Step 3 of 3");
}

TEST(OnboardingContent, theAccountsThatWereFoundAreCounted)
{
    EXPECT_EQ(OnboardingContent::found(0), "No accounts found yet");
    EXPECT_EQ(OnboardingContent::found(1), "Found 1 Claude account");
    EXPECT_EQ(OnboardingContent::found(2), "Found 2 Claude accounts");
    EXPECT_EQ(OnboardingContent::found(11), "Found 11 Claude accounts");
}

TEST(OnboardingContent, theFixedTexts)
{
    EXPECT_STREQ(OnboardingContent::accountsText,
                 "Track the ones you want to watch, pick which appear in the menu bar, and rename "
                 "or reorder them. You can change all of this later in Settings.");
    EXPECT_STREQ(OnboardingContent::unofficialText,
                 "This isn't an officially supported API. If you'd rather stick to cache reading "
                 "only, check the box below.");
    EXPECT_STREQ(OnboardingContent::sendsText,
                 "Vellumor sends anonymous, opt-out telemetry so that we can keep improving it.");
}

} // namespace
} // namespace vellumor::onboardingContentTest
