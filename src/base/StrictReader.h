#pragma once

#include "base/Instant.h"
#include "base/JsonForward.h"

#include <optional>
#include <string>

namespace vellumor {

// One JSON value as a C++ value, with no conversion: a number is not a text, a boolean is not 1. A
// number with an integral value (2.0) serves as an integer when it fits. Nothing when the type is
// another.
[[nodiscard]] std::optional<bool> asBool(const Json& json);
[[nodiscard]] std::optional<int> asInt(const Json& json);
[[nodiscard]] std::optional<double> asDouble(const Json& json);
[[nodiscard]] std::optional<std::string> asString(const Json& json);

// Reads the fields of one object of a strict file: the first missing required key or wrong type
// spoils the whole object. A null counts as absent.
class StrictReader {
public:
    // `json` is borrowed and outlives the reader. Anything but an object is bad from the start.
    explicit StrictReader(const Json& json);

    void required(const char* key, bool& into) { require(key, into, asBool); }
    void required(const char* key, int& into) { require(key, into, asInt); }
    void required(const char* key, double& into) { require(key, into, asDouble); }
    void required(const char* key, std::string& into) { require(key, into, asString); }
    void required(const char* key, Instant& into,
                  std::optional<Instant> (*parse)(std::string_view));

    // An absent key leaves `into` as it is: its default.
    void optional(const char* key, bool& into) { allow(key, into, asBool); }
    void optional(const char* key, int& into) { allow(key, into, asInt); }
    void optional(const char* key, double& into) { allow(key, into, asDouble); }
    void optional(const char* key, std::string& into) { allow(key, into, asString); }
    void optional(const char* key, std::optional<bool>& into) { allow(key, into, asBool); }
    void optional(const char* key, std::optional<int>& into) { allow(key, into, asInt); }
    void optional(const char* key, std::optional<double>& into) { allow(key, into, asDouble); }
    void optional(const char* key, std::optional<std::string>& into) { allow(key, into, asString); }
    void optional(const char* key, std::optional<Instant>& into,
                  std::optional<Instant> (*parse)(std::string_view));

    // The value under `key`, or null pointer when it is absent or JSON null.
    [[nodiscard]] const Json* find(const char* key) const;
    void fail() { m_good = false; }
    [[nodiscard]] bool good() const { return m_good; }

private:
    template <typename T, typename Convert>
    void require(const char* key, T& into, Convert convert)
    {
        if (find(key) == nullptr)
            fail();
        allow(key, into, convert);
    }

    template <typename T, typename Convert>
    void allow(const char* key, T& into, Convert convert)
    {
        const Json* json = find(key);
        if (json == nullptr)
            return;
        if (auto converted = convert(*json))
            into = *std::move(converted);
        else
            fail();
    }

    const Json& m_json;
    bool m_good;
};

} // namespace vellumor
