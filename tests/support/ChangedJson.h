#pragma once

#include "base/Json.h"

#include <optional>
#include <string>

namespace vellumor::test {

// `json` with `value` at `path` (RFC 6901); without a value the key is taken away.
inline Json changed(Json json, const std::string& path, const std::optional<Json>& value)
{
    const Json::json_pointer pointer(path);
    if (value)
        json[pointer] = *value;
    else
        json.at(pointer.parent_pointer()).erase(pointer.back());
    return json;
}

} // namespace vellumor::test
