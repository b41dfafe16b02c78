#include "ui/settings/SettingsTab.h"

namespace vellumor {

namespace {

struct Tab {
    std::string_view title;
    Symbols::Symbol symbol;
};

// In the order of the cases.
constexpr std::array tabs = {
    Tab{"Accounts", Symbols::Symbol::accounts},
    Tab{"Usage", Symbols::Symbol::usage},
    Tab{"Menu Bar", Symbols::Symbol::menuBar},
    Tab{"Notifications", Symbols::Symbol::notifications},
    Tab{"Privacy", Symbols::Symbol::privacy},
    Tab{"General", Symbols::Symbol::settings},
    Tab{"About", Symbols::Symbol::about},
};
static_assert(tabs.size() == allSettingsTabs.size());

} // namespace

std::string_view title(SettingsTab tab)
{
    return tabs.at(static_cast<std::size_t>(tab)).title;
}

Symbols::Symbol symbol(SettingsTab tab)
{
    return tabs.at(static_cast<std::size_t>(tab)).symbol;
}

} // namespace vellumor
