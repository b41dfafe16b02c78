#pragma once

#include <QImage>
#include <QRect>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What stands in the panel. The pictures are templates, black with alpha alone: whoever shows them
// gives them the panel's colour.
struct StatusLabel {
    // At 1, 2 and 3 pixels a point; each has its devicePixelRatio set.
    using Scales = std::array<QImage, 3>;

    Scales whole;              // all accounts side by side
    std::vector<Scales> parts; // each account by itself; empty when there is one picture alone
    std::string text;          // what a screen reader and the tooltip say
    // A themed symbol for the same, where there is one: hosts give it their own colour.
    std::string iconName;

    bool operator==(const StatusLabel&) const = default;
};

// The program's place in the panel, and the ways in which a user reaches the program through it.
// Where there is no panel, or one comes late or again, it waits. Main thread only.
class StatusItem {
public:
    struct MenuEntry {
        std::string text;                  // empty: a line between groups
        std::vector<std::string> shortcut; // as com.canonical.dbusmenu writes it: "Control", "r"
        std::function<void()> action;
    };

    struct Handlers {
        // A click, the middle one too. `anchor`: where the item or else the pointer is on the
        // screen, in Qt's coordinates; nothing when the host does not tell. The token lets a window
        // take the focus; mostly empty.
        std::function<void(std::optional<QRect> anchor, const std::string& activationToken)>
            onClick;
        std::vector<MenuEntry> menu;
    };

    virtual ~StatusItem() = default;

    // Once.
    virtual void show(Handlers handlers) = 0;
    // Does nothing when nothing of it has changed.
    virtual void setLabel(StatusLabel label) = 0;
};

} // namespace vellumor
