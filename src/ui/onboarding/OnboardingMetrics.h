#pragma once

#include <QFont>

namespace vellumor {

// Of a step's content, in points, grown with the font.
[[nodiscard]] int onboardingWidth(const QFont& font);

} // namespace vellumor
