#pragma once

#include "base/JsonForward.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// Objects and arrays within one another: the outermost is at depth 1.
inline constexpr int maxJsonDepth = 64;

// Nothing when the bytes are not one JSON value in valid UTF-8, or are nested deeper than
// maxJsonDepth. Takes time and memory in proportion to the bytes.
[[nodiscard]] std::optional<Json> parseJson(std::string_view bytes);

// Like parseJson, but nothing as well when the outermost value is not an object.
[[nodiscard]] std::optional<Json> parseJsonObject(std::string_view bytes);

// True when no object or array in `bytes` stands deeper than `limit`. Linear, for bytes that may
// not even be JSON.
[[nodiscard]] bool isNestedWithin(std::string_view bytes, int limit);

enum class JsonLayout { compact, pretty };
enum class JsonSlashes { escaped, plain };

// The text of a file: sorted keys, two blanks a level when pretty, a double with an integral value
// without ".0", and slashes in strings as "\/" unless told otherwise. Nothing when a string in it
// is not valid UTF-8.
[[nodiscard]] std::optional<std::string> writeJson(Json json, JsonLayout layout,
                                                   JsonSlashes slashes = JsonSlashes::escaped);

} // namespace vellumor
