#pragma once

#include <QAccessible>

class QWidget;

// Accessibility: what a screen reader takes our own widgets for.
namespace vellumor::Accessibility {

// Once, before any window is shown.
void install();

void setRole(QWidget& widget, QAccessible::Role role);

} // namespace vellumor::Accessibility
