#pragma once

#include "platform/linux/FreedesktopNotifications.h"
#include "platform/linux/notifications/FakeNotificationServer.h"
#include "support/BusTesting.h"

#include <QDBusPendingCallWatcher>

#include <memory>
#include <vector>

namespace vellumor::test {

// Notifications on a bus of the test's own, on which there is no server yet.
struct NotificationsTest : BusTest {
    using BusTest::BusTest;

    FreedesktopNotifications notifications{client};

    std::unique_ptr<FakeNotificationServer> start(const QStringList& capabilities = {}) const
    {
        return std::make_unique<FakeNotificationServer>(bus.address(), capabilities);
    }
    static bool hasShown(const FakeNotificationServer& display, std::size_t count)
    {
        return turnLoopUntil([&] { return display.shown().size() >= count; }) &&
               display.shown().size() == count;
    }
    // Calls whose answers are still waited for.
    static auto waiting(const FreedesktopNotifications& asking)
    {
        return asking.findChildren<QDBusPendingCallWatcher*>().size();
    }
    static bool isDone(const FreedesktopNotifications& asking)
    {
        return turnLoopUntil([&] { return waiting(asking) == 0; });
    }
    bool isDone() const { return isDone(notifications); }
};

} // namespace vellumor::test
