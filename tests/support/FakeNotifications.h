#pragma once

#include "platform/Notifications.h"

#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// Notes what is delivered, and lets a test follow a notification.
struct FakeNotifications final : Notifications {
    std::vector<std::pair<std::string, std::string>> delivered; // title and body
    Authorization authorization = Authorization::authorized;
    std::function<void(const std::string& activationToken)> open;

    void deliver(const std::string& title, const std::string& body) override
    {
        delivered.emplace_back(title, body);
    }
    void requestAuthorization(std::function<void(Authorization)> then) override
    {
        then(authorization);
    }
    void onOpen(std::function<void(const std::string& activationToken)> handler) override
    {
        open = std::move(handler);
    }
};

} // namespace vellumor::test
