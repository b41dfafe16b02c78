#pragma once

class QScrollArea;

namespace vellumor {

// Gives the area a vertical scroll bar that is a thin handle and nothing else, in the colour of the
// text.
void setThinScrollBar(QScrollArea& area);

} // namespace vellumor
