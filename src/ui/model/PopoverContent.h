#pragma once

#include "app/state/AppState.h"
#include "ui/model/AccountSectionContent.h"

#include <string>
#include <vector>

namespace vellumor {

// Everything that the popover says at one moment. An empty text is one that is not shown.
struct PopoverContent {
    std::string notice;                          // about accounts that were found
    std::vector<AccountSectionContent> sections; // the tracked accounts in their order
    std::string hint;                            // where there is none of them
    std::string hintLink;
    std::string footer;

    bool operator==(const PopoverContent&) const = default;

    [[nodiscard]] static PopoverContent of(const AppState& state, Instant now,
                                           const ShortTime& shortTime);

    // "Updated 2m ago · refreshing every ~4 min", "Updating". Seconds.
    [[nodiscard]] static std::string footerText(std::optional<Instant> dataUpdatedAt, Instant now,
                                                double effectiveInterval, double userInterval);
};

} // namespace vellumor
