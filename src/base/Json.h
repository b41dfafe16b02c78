#pragma once

#include "base/JsonForward.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// Objects and arrays within one another: the outermost is at depth 1.
inline constexpr int maxJsonDepth = 64;

// Values in one text. No file of use comes near it, while a tree of many small values takes dozens
// of times the memory of their bytes.
inline constexpr std::size_t maxJsonValues = 1'000'000;

// Nothing when the bytes are not one JSON value in valid UTF-8, are nested deeper than
// maxJsonDepth, or hold more than maxJsonValues. Takes time and memory in proportion to the bytes.
[[nodiscard]] std::optional<Json> parseJson(std::string_view bytes);

// Like parseJson, but nothing as well when the outermost value is not an object.
[[nodiscard]] std::optional<Json> parseJsonObject(std::string_view bytes);

// True when no object or array in `bytes` stands deeper than `limit`. Linear, for bytes that may
// not even be JSON.
[[nodiscard]] bool isNestedWithin(std::string_view bytes, int limit);

// True when `bytes` hold no more values than `limit`, counted by what separates them, in texts too.
// Linear, for bytes that may not even be JSON.
[[nodiscard]] bool hasAtMostValues(std::string_view bytes, std::size_t limit);

enum class JsonLayout { compact, pretty };
enum class JsonSlashes { escaped, plain };

// The text of a file: sorted keys, two blanks a level when pretty, a double with an integral value
// without ".0", and slashes in strings as "\/" unless told otherwise. Nothing when a string in it
// is not valid UTF-8.
[[nodiscard]] std::optional<std::string> writeJson(Json json, JsonLayout layout,
                                                   JsonSlashes slashes = JsonSlashes::escaped);

} // namespace vellumor
