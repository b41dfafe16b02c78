#pragma once

#include "base/JsonForward.h"

#include <map>
#include <optional>
#include <string>

namespace vellumor {

// What the applications of the toolkit agree on about one config directory.
struct SharedIdentity {
    std::string id;
    std::string name;
    int order = 0;
    std::optional<std::string> serviceOverride;
    bool operator==(const SharedIdentity&) const = default;

    // Nothing without a text `id` and a text `name`; `order` of another type counts as 0,
    // `serviceOverride` of another type as absent.
    [[nodiscard]] static std::optional<SharedIdentity> fromJson(const Json& json);
};

// By canonical config directory.
using SharedIdentities = std::map<std::string, SharedIdentity>;

} // namespace vellumor
