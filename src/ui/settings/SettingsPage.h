#pragma once

#include "app/state/AppState.h"

#include <QWidget>

namespace vellumor {

// A page that shows what the program keeps, and follows every change of it while it is visible.
class SettingsPage : public QWidget {
    Q_OBJECT

public:
    // `appState` outlives it.
    explicit SettingsPage(AppState& appState);

protected:
    // Takes over what has changed. Called before the page is seen, and after each change.
    virtual void refresh() = 0;
    void showEvent(QShowEvent* event) override;

    AppState& m_appState;
};

} // namespace vellumor
