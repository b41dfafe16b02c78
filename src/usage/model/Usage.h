#pragma once

#include "base/Instant.h"
#include "usage/model/ExtraUsage.h"
#include "usage/model/LimitWindow.h"
#include "usage/model/SuppressedKinds.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vellumor {

// One reading of one account's limits.
struct Usage {
    std::vector<LimitWindow> windows; // in the order of decoding
    std::optional<ExtraUsage> extraUsage;
    Instant fetchedAt{};

    bool operator==(const Usage&) const = default;

    // The first window of kind "session"; null pointer without one.
    [[nodiscard]] const LimitWindow* sessionWindow() const;
    // All others, in order.
    [[nodiscard]] std::vector<LimitWindow> nonSessionWindows() const;
    // The fullest of those; of equal ones the first. Null pointer without one.
    [[nodiscard]] const LimitWindow* worstNonSession() const;

    // Why an answer is no reading; the text never quotes the answer.
    struct DecodeError {
        std::string description;
    };

    // The usage endpoint's answer, of its present shape (rows under "limits"), its older one (one
    // object a limit), or both. Only a body that is no JSON object, or is nested too deep, is an
    // error: below the top level a value of the wrong type counts as absent. Rows of a kind in
    // `suppressed` are left out.
    [[nodiscard]] static std::variant<Usage, DecodeError>
    decode(std::string_view bytes, Instant fetchedAt,
           SuppressedKinds::Digests suppressed = SharedLists::suppressedKindHashes);
};

} // namespace vellumor
