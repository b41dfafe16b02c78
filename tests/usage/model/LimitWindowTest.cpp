#include "usage/model/LimitWindow.h"

#include <gtest/gtest.h>

namespace vellumor::limitWindowTest {

TEST(LimitWindow, aTitleIsMadeOfKindAndScope)
{
    struct Row {
        const char* kind;
        std::optional<std::string> scope;
        const char* title;
    };
    const Row rows[] = {
        {"session", {}, "Session"},
        {"session", "Opus", "Session"},
        {"weekly_all", {}, "Weekly"},
        {"weekly_all", "Opus", "Weekly"},
        {"weekly_scoped", "Opus", "Weekly (Opus)"},
        {"weekly_scoped", {}, "Weekly (scoped)"},
        {"weekly_scoped", "", "Weekly (scoped)"},
        {"seven_day_oauth_apps", {}, "Weekly (apps)"},
        {"seven_day_oauth_apps", "x", "Weekly (apps)"},
        {"seven_day_cowork", {}, "Weekly (cowork)"},
        {"seven_day_opus", {}, "Weekly (Opus)"},
        {"seven_day_opus", "Sonnet", "Weekly (Opus)"},
        {"seven_day_max_tier-x", {}, "Weekly (Max tier x)"},
        {"seven_day__", {}, "Weekly (Unknown)"},
        {"seven_day_", {}, "Seven day"},
        {"seven_day_", "Opus", "Seven day (Opus)"},
        {"seven_day", {}, "Seven day"},
        {"max_tier-x", {}, "Max tier x"},
        {"max_tier-x", "Opus", "Max tier x (Opus)"},
        {"max_tier-x", "", "Max tier x"},
        {"Session", {}, "Session"},
        {"unknown", {}, "Unknown"},
        {"", {}, "Unknown"},
        {"_- ", {}, "Unknown"},
        {"_- ", "Opus", "Unknown (Opus)"},
        {"__a--b  c__", {}, "A b c"},
        {"mcPAID", {}, "McPAID"},
        {"été_long", {}, "Été long"},
        {"7x", {}, "7x"},
    };
    for (const auto& [kind, scope, title] : rows) {
        SCOPED_TRACE(std::string(kind) + " / " + scope.value_or("-"));
        EXPECT_EQ(LimitWindow::title(kind, scope), title);
    }
}

} // namespace vellumor::limitWindowTest
