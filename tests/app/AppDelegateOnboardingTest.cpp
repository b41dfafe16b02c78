#include "app/AppDelegateTesting.h"

namespace vellumor::appDelegateOnboardingTest {
namespace {

using AppDelegateOnboardingTest = test::AppDelegateTesting;

TEST_F(AppDelegateOnboardingTest, eachOpeningOfThePopoverIsCountedOnce)
{
    start();
    click();
    EXPECT_EQ(count("popover opened"), 1);
    delegate.activate({});
    EXPECT_EQ(count("popover opened"), 1);
    click();
    EXPECT_EQ(count("popover opened"), 1);
    delegate.activate({});
    EXPECT_EQ(count("popover opened"), 2);
}

TEST_F(AppDelegateOnboardingTest, theFirstRunFlowComesAfterTheStartAndGoesWhenItIsDone)
{
    isOnboardingDue = true;
    start();
    QWidget* const window = shownWindow("Welcome to Vellumor");
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(count("onboarding completed"), 0);
    press(window, "Continue");
    press(window, "Get Started");
    EXPECT_EQ(count("onboarding completed"), 1);
    EXPECT_EQ(count("onboarding_completed"), 1); // the event
    EXPECT_LT(std::ranges::find(steps, "onboarding completed"),
              std::ranges::find(steps, "onboarding_completed"));
    EXPECT_EQ(shownWindow("Welcome to Vellumor"), nullptr);
}

TEST_F(AppDelegateOnboardingTest, theFirstRunFlowIsNotShownWhereItIsNotDue)
{
    start();
    EXPECT_EQ(shownWindow("Welcome to Vellumor"), nullptr);
}

TEST_F(AppDelegateOnboardingTest, closingTheFirstRunFlowCompletesNothing)
{
    isOnboardingDue = true;
    start();
    QWidget* const window = shownWindow("Welcome to Vellumor");
    ASSERT_NE(window, nullptr);
    window->close();
    settle();
    EXPECT_EQ(count("onboarding completed"), 0);
    EXPECT_EQ(count("onboarding_completed"), 0);
}

} // namespace
} // namespace vellumor::appDelegateOnboardingTest
