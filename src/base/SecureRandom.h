#pragma once

#include <cstdint>
#include <string>

// Random numbers that nobody can foresee, from the system's source. Callable from any thread.
namespace vellumor::SecureRandom {

// Uniform in 0 to `bound` minus 1, without modulo bias. `bound` is at least 1.
[[nodiscard]] std::uint32_t below(std::uint32_t bound);

// A version 4 UUID (RFC 4122) in upper case, in its canonical 36 characters.
[[nodiscard]] std::string uuid();

} // namespace vellumor::SecureRandom
