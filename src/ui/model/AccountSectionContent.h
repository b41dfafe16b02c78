#pragma once

#include "accounts/Account.h"
#include "app/state/AccountUsageState.h"
#include "history/ResetAnchor.h"
#include "history/UsageSample.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// A moment's hour and minute as the user writes them.
using ShortTime = std::function<std::string(Instant)>;

// One limit of an account in the popover. An empty text is one that is not shown.
struct UsageRowContent {
    std::string title;       // "Weekly (Opus)"
    double percent = 0;      // as the endpoint gave it
    std::string percentText; // "62%"
    std::string resetText;   // "2h 14m", "not started"
    std::string tooltip;
    bool isStale = false;

    bool operator==(const UsageRowContent&) const = default;

    // The row in one sentence, for a screen reader.
    [[nodiscard]] std::string spoken() const;
};

// A line under the rows.
struct NoteContent {
    std::string text;
    bool isWarning = false; // with the warning sign before it

    bool operator==(const NoteContent&) const = default;
};

// What the popover shows of one account. An empty text is one that is not shown.
struct AccountSectionContent {
    std::string configDir;
    std::string name;
    std::string plan;
    std::string historyHelp; // of the button that opens the history
    bool isWaiting = false;  // nothing is known yet, and a fetch is under way
    std::string substitute;  // in place of the rows
    std::vector<UsageRowContent> rows;
    std::string forecast;
    std::string credits;
    bool areCreditsExhausted = false;
    std::optional<NoteContent> note;

    bool operator==(const AccountSectionContent&) const = default;
};

// What one account's section is made of. What it points to outlives it.
struct AccountSectionInput {
    const Account& account;
    const AccountUsageState* state = nullptr; // null pointer: nothing is known yet
    const UsageSamples* history = nullptr;
    const AnchorsByKind* anchors = nullptr;
    bool isStale = false;
};

// Pure, but for the time zone.
[[nodiscard]] AccountSectionContent accountSectionContent(const AccountSectionInput& input,
                                                          Instant now, const ShortTime& shortTime);

} // namespace vellumor
