#pragma once

#include "base/JsonForward.h"
#include "usage/model/ExtraUsage.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// The wire form of the usage endpoint's answer. Everything is optional, and a value of the wrong
// type counts as absent. Private to this folder: the rest of the program knows Usage alone.
class RawUsage {
public:
    struct Limit {
        std::optional<std::string> kind;
        std::optional<std::string> group;
        std::optional<double> percent;
        std::optional<std::string> severity;
        std::optional<std::string> resetsAt;
        std::optional<std::string> scope; // never empty
        std::optional<bool> isActive;
    };

    struct Slot {
        std::optional<double> utilization;
        std::optional<std::string> resetsAt;
    };

    // Like parseJson, but a number that no double can hold is null: it costs its own value alone.
    [[nodiscard]] static std::optional<Json> parse(std::string_view bytes);

    // `json` is an object, borrowed, and outlives this.
    explicit RawUsage(const Json& json)
        : m_json(json)
    {
    }

    // One element a row of "limits"; a row that is no object has nothing in it.
    [[nodiscard]] std::vector<Limit> limits() const;
    // The object under `key`, if there is one.
    [[nodiscard]] std::optional<Slot> slot(const char* key) const;
    [[nodiscard]] std::optional<ExtraUsage> extraUsage() const;

private:
    const Json& m_json;
};

} // namespace vellumor
