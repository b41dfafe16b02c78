#pragma once

#include "ui/Symbols.h"

#include <array>
#include <string_view>

namespace vellumor {

// The tabs of the settings, in their order.
enum class SettingsTab { menuBar, about };

inline constexpr std::array allSettingsTabs = {SettingsTab::menuBar, SettingsTab::about};

[[nodiscard]] std::string_view title(SettingsTab tab);
[[nodiscard]] Symbols::Symbol symbol(SettingsTab tab);

} // namespace vellumor
