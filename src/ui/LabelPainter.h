#pragma once

#include "platform/StatusItem.h"
#include "ui/model/MenuBarLabel.h"

#include <QFont>

#include <vector>

namespace vellumor {

// Draws the label of the panel as templates: black, and nothing but alpha besides. Makes its fonts
// once. Main thread only, with a QGuiApplication.
class LabelPainter {
public:
    LabelPainter();

    // One picture of all groups and one of each, at every scale. Without any slot: the program's
    // own symbol, whole alone.
    [[nodiscard]] StatusLabel label(const std::vector<MenuBarLabel::Group>& groups,
                                    MenuBarMode mode, bool dual) const;

    // The groups side by side, 19 points high, at `scale` pixels a point.
    [[nodiscard]] QImage image(const std::vector<MenuBarLabel::Group>& groups, MenuBarMode mode,
                               bool dual, int scale) const;

    // The picture in the file, as high as all of them; where it cannot be read, as without Qt's
    // plugin for SVG, a small gauge.
    [[nodiscard]] static QImage symbol(const QString& file, int scale);

private:
    [[nodiscard]] StatusLabel::Scales scales(const std::vector<MenuBarLabel::Group>& groups,
                                             MenuBarMode mode, bool dual) const;

    QFont m_numbers;        // of one row
    QFont m_stackedNumbers; // of two
};

} // namespace vellumor
