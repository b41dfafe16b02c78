#pragma once

#include "app/state/AppState.h"

class QWidget;

namespace vellumor {

// Asks whether this account is to be removed, and removes it then. Comes back at once; `appState`
// outlives `parent`.
void askForAccountRemoval(AppState& appState, const std::string& id, QWidget* parent);

} // namespace vellumor
