#pragma once

#include "app/Program.h"
#include "platform/DesktopActions.h"
#include "ui/model/settings/AboutModel.h"
#include "ui/model/settings/GeneralModel.h"
#include "ui/model/settings/PrivacyModel.h"
#include "ui/settings/SettingsActions.h"

namespace vellumor {

// What the settings show and change beside the accounts and the preferences.
struct SettingsModels {
    // Both outlive it.
    SettingsModels(Program& program, DesktopActions& desktop);

    PrivacyModel privacy;
    GeneralModel general;
    AboutModel about;
};

// `desktop` outlives what they are given to.
[[nodiscard]] SettingsActions settingsActions(DesktopActions& desktop);

} // namespace vellumor
