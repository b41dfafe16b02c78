#include "base/IntervalDisplay.h"

#include <gtest/gtest.h>

namespace vellumor::intervalDisplayTest {

TEST(IntervalDisplay, secondsAreShownAloneBelowAMinuteAndLeftOutOnAFullOne)
{
    struct Row {
        double seconds;
        const char* text;
    };
    const Row rows[] = {
        {0, "0s"},         {0.4, "0s"},      {-0.4, "0s"},        {45, "45s"},
        {59.4, "59s"},     {59.5, "1 min"},  {60, "1 min"},       {61, "1 min 1s"},
        {90, "1 min 30s"}, {120, "2 min"},   {119.5, "2 min"},    {179.4, "2 min 59s"},
        {180, "3 min"},    {1800, "30 min"}, {3601, "60 min 1s"},
    };
    for (const auto& [seconds, text] : rows) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(IntervalDisplay::shortText(seconds), text);
    }
}

} // namespace vellumor::intervalDisplayTest
