#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// StackTrace: what the journal's message about a crash tells of the threads. Pure.
namespace vellumor::StackTrace {

// Of more than that, the first are kept.
inline constexpr std::size_t maxThreads = 32;
inline constexpr std::size_t maxFrames = 64;    // a thread
inline constexpr std::size_t maxTextSize = 512; // of a symbol or a module, in bytes

struct Frame {
    std::optional<std::string> symbol;
    std::string module; // the file's name without its folder; empty when nobody knows
    std::optional<std::uint64_t> offset; // in the module
    bool operator==(const Frame&) const = default;
};

using Thread = std::vector<Frame>; // the innermost frame first

// The threads in their order: the one that crashed comes first. What is no frame is passed over.
[[nodiscard]] std::vector<Thread> parse(std::string_view message);

} // namespace vellumor::StackTrace
