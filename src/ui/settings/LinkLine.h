#pragma once

#include "ui/settings/SettingsActions.h"

#include <initializer_list>

class QHBoxLayout;
class QWidget;

namespace vellumor {

struct Link {
    const char* title;
    const char* address;
};

// Links to pages, side by side.
[[nodiscard]] QHBoxLayout* linkLine(std::initializer_list<Link> links,
                                    const SettingsActions& actions, QWidget* parent);

} // namespace vellumor
