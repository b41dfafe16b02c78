#pragma once

#include "ui/settings/SettingsActions.h"

// PathPanel: lets the user pick a file or a folder in the desktop's own dialog. Comes back at once.
namespace vellumor::PathPanel {

void chooseFile(SettingsActions::Chosen chosen);
void chooseFolder(SettingsActions::Chosen chosen);

} // namespace vellumor::PathPanel
