#pragma once

#include <string>

// StatusBar: one percent as a bar of characters. Pure.
namespace vellumor::StatusBar {

enum class Characters { blocks, ascii };

// `width` columns. Anything above nothing shows, and full is what is full alone.
[[nodiscard]] std::string text(double percent, int width, Characters characters);

} // namespace vellumor::StatusBar
