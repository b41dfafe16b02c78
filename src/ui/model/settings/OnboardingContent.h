#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vellumor {

enum class OnboardingStep { welcome, accounts, disclosure };

// What the first-run flow says.
namespace OnboardingContent {

// The steps for so many known accounts: a single one has nothing to arrange.
[[nodiscard]] std::vector<OnboardingStep> steps(std::size_t accountCount);
[[nodiscard]] std::string progress(std::size_t index, std::size_t count); // "Step 1 of 3"
[[nodiscard]] std::string found(std::size_t accountCount);

inline constexpr const char* accountsText =
    "Track the ones you want to watch, pick which appear in the menu bar, and rename or reorder "
    "them. You can change all of this later in Settings.";
inline constexpr const char* unofficialText =
    "This isn't an officially supported API. If you'd rather stick to cache reading only, check "
    "the box below.";
inline constexpr const char* sendsText =
    "Vellumor sends anonymous, opt-out telemetry so that we can keep improving it.";

} // namespace OnboardingContent

} // namespace vellumor
