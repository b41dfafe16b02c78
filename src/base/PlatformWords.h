#pragma once

// The texts that name the computer they were first written for. They stand as they are in every
// place, and all of them here, so that they can be changed together.
namespace vellumor::PlatformWords {

inline constexpr const char* couldNotFindClaude =
    "Couldn’t find Claude Code on this Mac — set its location in Settings";

} // namespace vellumor::PlatformWords
