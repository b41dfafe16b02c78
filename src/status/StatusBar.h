#pragma once

#include <string>

// StatusBar: one percent as a bar of characters, and how near its limit it is. Pure.
namespace vellumor::StatusBar {

enum class Level { calm, high, full }; // from 75 and from 90 percent on, as in the popover
[[nodiscard]] Level level(double percent);
[[nodiscard]] const char* word(Level level); // "calm", "high", "full"

enum class Characters { blocks, ascii };

// `width` columns. Anything above nothing shows, and full is what is full alone.
[[nodiscard]] std::string text(double percent, int width, Characters characters);

} // namespace vellumor::StatusBar
