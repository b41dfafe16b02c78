#include "accounts/SharedIdentity.h"

#include "base/Json.h"
#include "base/StrictReader.h"

#include <limits>

namespace vellumor {

namespace {

// Any number serves: cut to an integer, and held to what an integer can be.
int orderOf(const Json& json)
{
    const double number = asDouble(json).value_or(0);
    if (number <= std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    if (number >= std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return static_cast<int>(number);
}

} // namespace

std::optional<SharedIdentity> SharedIdentity::fromJson(const Json& json)
{
    if (!json.is_object())
        return std::nullopt;
    auto id = asString(json.value("id", Json()));
    auto name = asString(json.value("name", Json()));
    if (!id || !name)
        return std::nullopt;
    return SharedIdentity{*std::move(id), *std::move(name), orderOf(json.value("order", Json())),
                          asString(json.value("serviceOverride", Json()))};
}

} // namespace vellumor
