#pragma once

#include "accounts/Account.h"
#include "app/state/AccountUsageState.h"
#include "history/ResetAnchor.h"
#include "history/UsageSample.h"
#include "status/StatusReport.h"
#include "ui/model/AccountSectionContent.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What a report is made of, wherever it comes from: so that the same words and numbers come of it
// as in the popover.
struct StatusInput {
    using History = std::shared_ptr<const UsageSamples>;

    std::vector<Account> accounts;                   // tracked or not
    std::map<std::string, AccountUsageState> states; // by account id
    std::map<std::string, History> histories;        // by config directory; two are equal when they
                                                     // are one
    ResetAnchors anchors;
    double effectiveInterval = 60; // seconds

    bool operator==(const StatusInput&) const = default;

    // Pure, but for the time zone.
    [[nodiscard]] StatusReport report(Instant now, const ShortTime& shortTime) const;
    // The first moment at which a reading grows too old, or old enough, if nothing else happens;
    // nothing when none will.
    [[nodiscard]] std::optional<Instant> nextStaleChange(Instant now) const;

private:
    [[nodiscard]] const AccountUsageState* state(const std::string& id) const;
    [[nodiscard]] StatusAccount accountOf(const Account& account, Instant now,
                                          const ShortTime& shortTime) const;
};

} // namespace vellumor
