#pragma once

// The one grid of the settings' tabs, in points.
namespace vellumor::SettingsMetrics {

inline constexpr int contentWidth = 560;
inline constexpr int margin = 20;

} // namespace vellumor::SettingsMetrics
