#include "status/StatusBar.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::statusBarTest {
namespace {

using Characters = StatusBar::Characters;

TEST(StatusBar, anythingAboveNothingShowsAndFullIsWhatIsFullAlone)
{
    struct Row {
        double percent;
        const char* bar;
    };
    const double nothing = std::numeric_limits<double>::quiet_NaN();
    const Row rows[] = {{0, "----------"},      {-5, "----------"},  {0.1, "#---------"},
                        {14, "#---------"},     {15, "##--------"},  {50, "#####-----"},
                        {99.9, "#########-"},   {100, "##########"}, {130, "##########"},
                        {nothing, "----------"}};
    for (const auto& [percent, bar] : rows) {
        SCOPED_TRACE(percent);
        EXPECT_EQ(StatusBar::text(percent, 10, Characters::ascii), bar);
    }
    EXPECT_EQ(StatusBar::text(50, 4, Characters::blocks), "██░░");
    EXPECT_EQ(StatusBar::text(50, 1, Characters::ascii), "#");
    EXPECT_EQ(StatusBar::text(50, 0, Characters::ascii), "");
}

} // namespace
} // namespace vellumor::statusBarTest
