#pragma once

#include "base/Json.h"
#include "base/StrictReader.h"

namespace vellumor {

// What a file of the form {"schemaVersion": 1, "<key>": …} holds under `key`. A null pointer when
// the version is missing, of a wrong type or newer than `newest`, or nothing stands there.
[[nodiscard]] inline const Json* entriesOf(const Json& file, const char* key, int newest)
{
    StrictReader reader(file);
    int version = 0;
    reader.required("schemaVersion", version);
    return reader.good() && version <= newest ? reader.find(key) : nullptr;
}

} // namespace vellumor
