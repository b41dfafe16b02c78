#pragma once

#include "platform/StatusItem.h"

#include <string_view>
#include <vector>

// How a label is divided among the items of a panel. Pure.
namespace vellumor::ItemLayout {

// Panels differ in what they do with an item.
enum class Host {
    squareCells, // shrinks a picture that is wider than high to the width of a cell
    waybar       // keeps the aspect; and takes a tool tip for markup
};

// The side of a cell, in points: a picture of this size is shown as it is.
constexpr int cell = 22;

// By the name of the process that hosts the items.
[[nodiscard]] Host hostOf(std::string_view process);

// The picture of each item, from left to right; one at least. What does not fit a cell is divided
// by account, so that nothing is shrunk.
[[nodiscard]] std::vector<StatusLabel::Scales> pictures(const StatusLabel& label, Host host);

// Without the empty columns at both sides. Whole points are taken away, the same at every scale.
// A picture with nothing on it stays as it is.
[[nodiscard]] StatusLabel::Scales cropped(const StatusLabel::Scales& picture);

// In the middle of an empty cell; what is larger than a cell makes the canvas larger.
[[nodiscard]] StatusLabel::Scales inCell(const StatusLabel::Scales& picture);

} // namespace vellumor::ItemLayout
