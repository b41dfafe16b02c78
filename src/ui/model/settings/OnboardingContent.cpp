#include "ui/model/settings/OnboardingContent.h"

#include <fmt/format.h>

namespace vellumor {

std::vector<OnboardingStep> OnboardingContent::steps(std::size_t accountCount)
{
    if (accountCount == 1)
        return {OnboardingStep::welcome, OnboardingStep::disclosure};
    return {OnboardingStep::welcome, OnboardingStep::accounts, OnboardingStep::disclosure};
}

std::string OnboardingContent::progress(std::size_t index, std::size_t count)
{
    return fmt::format("Step {} of {}", index + 1, count);
}

std::string OnboardingContent::found(std::size_t accountCount)
{
    if (accountCount == 0)
        return "No accounts found yet";
    if (accountCount == 1)
        return "Found 1 Claude account";
    return fmt::format("Found {} Claude accounts", accountCount);
}

} // namespace vellumor
