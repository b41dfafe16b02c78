#include "ui/settings/SettingsMetrics.h"

#include "ui/PopoverMetrics.h"

namespace vellumor::SettingsMetrics {

namespace {

constexpr double toPopoverWidth = 1.6; // 560 beside 350 points

} // namespace

int contentWidth(const QFont& font)
{
    return qRound(PopoverMetrics::of(font).width * toPopoverWidth);
}

QFont secondary(const QFont& font)
{
    return PopoverMetrics::of(font).secondary;
}

} // namespace vellumor::SettingsMetrics
