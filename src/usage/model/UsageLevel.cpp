#include "usage/model/UsageLevel.h"

namespace vellumor {

namespace {

constexpr double highPercent = 75;
constexpr double fullPercent = 90;

} // namespace

UsageLevel usageLevel(double percent)
{
    if (percent >= fullPercent)
        return UsageLevel::full;
    return percent >= highPercent ? UsageLevel::high : UsageLevel::calm;
}

const char* word(UsageLevel level)
{
    switch (level) {
    case UsageLevel::full:
        return "full";
    case UsageLevel::high:
        return "high";
    case UsageLevel::calm:
        break;
    }
    return "calm";
}

} // namespace vellumor
