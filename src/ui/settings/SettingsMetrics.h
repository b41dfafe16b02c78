#pragma once

#include <QFont>

// The one grid of the settings' tabs, in points.
namespace vellumor::SettingsMetrics {

inline constexpr int margin = 20;
inline constexpr int step = 4;
inline constexpr int sectionGap = 20;
inline constexpr int labelGap = 12; // between a label and its control

// Of a tab's content, grown with the font.
[[nodiscard]] int contentWidth(const QFont& font);
// A point smaller.
[[nodiscard]] QFont secondary(const QFont& font);

} // namespace vellumor::SettingsMetrics
