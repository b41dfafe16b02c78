#pragma once

#include "platform/Notifications.h"

// NotificationPermission: asked when the user turns notifications on.
namespace vellumor::NotificationPermission {

// `completion` is called later, on the main thread, with whether they will be shown.
inline void requestIfNeeded(Notifications& notifications, std::function<void(bool)> completion)
{
    notifications.requestAuthorization(
        [completion = std::move(completion)](Notifications::Authorization authorization) {
            completion(authorization == Notifications::Authorization::authorized);
        });
}

} // namespace vellumor::NotificationPermission
