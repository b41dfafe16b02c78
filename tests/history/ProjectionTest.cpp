#include "history/Projection.h"

#include <gtest/gtest.h>

#include <string>

namespace vellumor::projectionTest {

TEST(Projection, theFamilyOfAWindowTellsItsLengthAndTheSessionIsAskedForFirst)
{
    constexpr double session = 18000.0;
    constexpr double week = 604800.0;
    struct Row {
        const char* kind;
        const char* group;
        std::optional<double> length;
    };
    const Row rows[] = {
        {"session", "session", session},
        {"session", "weekly", session},
        {"session", "", session},
        {"burst", "session", session},
        {"weekly_all", "session", session},
        {"weekly_all", "weekly", week},
        {"weekly_all", "", week},
        {"weekly_scoped", "weekly", week},
        {"weekly_scoped", "", std::nullopt},
        {"unknown", "weekly", week},
        {"seven_day_opus", "monthly", week},
        {"seven_day_opus", "", week},
        {"seven_day", "", week},
        {"seven_days", "", week},
        {"a_seven_day", "", std::nullopt},
        {"unknown", "", std::nullopt},
        {"monthly", "monthly", std::nullopt},
        {"Session", "Weekly", std::nullopt},
        {"", "", std::nullopt},
    };
    for (const auto& [kind, group, length] : rows) {
        SCOPED_TRACE(std::string(kind) + " in " + group);
        EXPECT_EQ(Projection::windowLength(kind, group), length);
    }
}

} // namespace vellumor::projectionTest
