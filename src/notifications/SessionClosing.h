#pragma once

#include "store/Preferences.h"
#include "usage/model/Usage.h"

#include <functional>
#include <optional>
#include <set>
#include <string>

// SessionClosing: a session that soon ends with much of it unused. Pure.
namespace vellumor::SessionClosing {

struct ClosingFire {
    Instant resetsAt{};
    double percent = 0;
    std::string key;

    bool operator==(const ClosingFire&) const = default;
};

// When this reading is the first of its session within `leadMinutes` of the reset, which count as 5
// to 120; nothing for one that is unused or nearly used up.
[[nodiscard]] std::optional<ClosingFire> fired(const std::string& accountId, const Usage& usage,
                                               const Usage* previous, int leadMinutes,
                                               const std::set<std::string>& alreadyFired);

// "Work · session window closes at 4:30 PM — 40% left". `shortTime` gives a moment's hour and
// minute as the user writes them.
[[nodiscard]] std::string body(const ClosingFire& fire, const std::string& accountName,
                               const std::function<std::string(Instant)>& shortTime);

} // namespace vellumor::SessionClosing
