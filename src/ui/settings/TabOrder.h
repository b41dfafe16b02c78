#pragma once

#include <QWidget>

#include <vector>

namespace vellumor {

// The Tab key goes through `controls` in this order. Those that were made or moved later stand
// elsewhere in the window's own order.
inline void setTabOrderOf(const std::vector<QWidget*>& controls)
{
    for (std::size_t i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls[i - 1], controls[i]);
}

} // namespace vellumor
