#include "ui/settings/SettingsTab.h"

namespace vellumor {

std::string_view title(SettingsTab tab)
{
    switch (tab) {
    case SettingsTab::menuBar:
        return "Menu Bar";
    case SettingsTab::about:
        return "About";
    }
    return {};
}

Symbols::Symbol symbol(SettingsTab tab)
{
    switch (tab) {
    case SettingsTab::menuBar:
        return Symbols::Symbol::menuBar;
    case SettingsTab::about:
        return Symbols::Symbol::about;
    }
    return Symbols::Symbol::about;
}

} // namespace vellumor
