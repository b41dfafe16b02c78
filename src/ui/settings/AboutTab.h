#pragma once

class QWidget;

namespace vellumor {

// What the program is, and which version of it runs.
[[nodiscard]] QWidget* makeAboutTab();

} // namespace vellumor
