#pragma once

#include <nlohmann/json_fwd.hpp>

namespace vellumor {

// Untyped JSON; objects keep their keys sorted by bytes. Integers of 64 bits, signed and unsigned,
// and doubles keep their value. Headers that only name it include this one, since the whole library
// takes long to compile.
using Json = nlohmann::json;

} // namespace vellumor
