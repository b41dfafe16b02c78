#pragma once

// StatusKeys: the names that the bus and the JSON share.
namespace vellumor::StatusKeys {

inline constexpr const char* schemaVersion = "schemaVersion";
inline constexpr const char* source = "source";
inline constexpr const char* accounts = "accounts";
inline constexpr const char* updatedAt = "updatedAt";
inline constexpr const char* age = "age";

inline constexpr const char* id = "id";
inline constexpr const char* name = "name";
inline constexpr const char* state = "state";
inline constexpr const char* windows = "windows";
inline constexpr const char* credits = "credits";
inline constexpr const char* creditsExhausted = "creditsExhausted";
inline constexpr const char* forecast = "forecast";
inline constexpr const char* notes = "notes";

inline constexpr const char* kind = "kind";
inline constexpr const char* title = "title";
inline constexpr const char* percent = "percent";
inline constexpr const char* percentText = "percentText";
inline constexpr const char* resetsAt = "resetsAt";
inline constexpr const char* resetText = "resetText";
inline constexpr const char* active = "active";
inline constexpr const char* scope = "scope";
inline constexpr const char* stale = "stale";

} // namespace vellumor::StatusKeys
