#pragma once

class QWidget;

namespace vellumor {

[[nodiscard]] QWidget* makeWelcomeStep();

} // namespace vellumor
