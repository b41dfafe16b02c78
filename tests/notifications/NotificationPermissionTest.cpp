#include "notifications/NotificationPermission.h"

#include <gtest/gtest.h>

#include <optional>

namespace vellumor::notificationPermissionTest {
namespace {

// Answers when the test says so.
struct AskedDesktop final : Notifications {
    std::vector<std::function<void(Authorization)>> asked;

    void deliver(const std::string&, const std::string&) override { ADD_FAILURE(); }
    void requestAuthorization(std::function<void(Authorization)> then) override
    {
        asked.push_back(std::move(then));
    }
    void onOpen(std::function<void(const std::string&)>) override { ADD_FAILURE(); }
};

TEST(NotificationPermission, isWhatTheDesktopAnswersAndWhenItDoes)
{
    using Authorization = Notifications::Authorization;
    for (const auto& [answer, expected] :
         {std::pair(Authorization::authorized, true), std::pair(Authorization::denied, false)}) {
        AskedDesktop desktop;
        std::optional<bool> granted;
        NotificationPermission::requestIfNeeded(desktop, [&](bool isIt) {
            EXPECT_FALSE(granted) << "once";
            granted = isIt;
        });
        ASSERT_EQ(desktop.asked.size(), 1);
        EXPECT_EQ(granted, std::nullopt);
        desktop.asked[0](answer);
        EXPECT_EQ(granted, expected);
    }
}

TEST(NotificationPermission, eachRequestHasItsOwnAnswer)
{
    AskedDesktop desktop;
    std::vector<std::string> answers;
    for (const std::string name : {"first ", "second "}) {
        NotificationPermission::requestIfNeeded(desktop, [&answers, name](bool granted) {
            answers.push_back(name + (granted ? "yes" : "no"));
        });
    }
    ASSERT_EQ(desktop.asked.size(), 2);
    desktop.asked[1](Notifications::Authorization::authorized);
    desktop.asked[0](Notifications::Authorization::denied);
    EXPECT_EQ(answers, (std::vector<std::string>{"second yes", "first no"}));
}

} // namespace
} // namespace vellumor::notificationPermissionTest
