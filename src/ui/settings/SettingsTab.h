#pragma once

#include "ui/Symbols.h"

#include <array>
#include <string_view>

namespace vellumor {

// The tabs of the settings, in their order.
enum class SettingsTab { accounts, usage, menuBar, notifications, privacy, general, about };

inline constexpr std::array allSettingsTabs = {
    SettingsTab::accounts, SettingsTab::usage,   SettingsTab::menuBar, SettingsTab::notifications,
    SettingsTab::privacy,  SettingsTab::general, SettingsTab::about};

[[nodiscard]] std::string_view title(SettingsTab tab);
[[nodiscard]] Symbols::Symbol symbol(SettingsTab tab);

} // namespace vellumor
