#pragma once

#include <functional>
#include <string>

namespace vellumor {

// The desktop's notifications. Main thread only; nothing here waits.
class Notifications {
public:
    enum class Authorization { authorized, denied };

    virtual ~Notifications() = default;

    // Hands one over, both texts as they stand. Where nobody shows it, it is lost without a word.
    virtual void deliver(const std::string& title, const std::string& body) = 0;

    // Whether the desktop shows notifications of this program. Answers later, and once.
    virtual void requestAuthorization(std::function<void(Authorization)> then) = 0;

    // Calls `handler` when the user follows a notification of this program to it, with the token
    // that lets a window take the focus (mostly empty).
    virtual void onOpen(std::function<void(const std::string& activationToken)> handler) = 0;
};

} // namespace vellumor
