#pragma once

#include "base/Instant.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vellumor::fuzz {

inline std::string_view textOf(const std::uint8_t* bytes, std::size_t size)
{
    return {reinterpret_cast<const char*>(bytes), size};
}

// Ends the run when a property does not hold; the fuzzer keeps the bytes that led there.
inline void require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

inline constexpr Instant now{std::chrono::seconds(1772357400)}; // 2026-03-01T09:30:00Z

} // namespace vellumor::fuzz
