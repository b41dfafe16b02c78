#include "platform/linux/tray/TrayWatcher.h"

#include "platform/linux/tray/FakeTrayHost.h"
#include "platform/linux/tray/SignalCounter.h"
#include "support/BusTesting.h"

#include <sys/prctl.h>

#include <memory>

namespace vellumor::trayWatcherTest {
namespace {

using test::FakeTrayHost;
using test::turnLoopUntil;

struct TrayWatcherTest : test::BusTest {
    Worker worker;
    TrayWatcher watcher{worker, client};
    int changes = 0;

    void start()
    {
        watcher.start([this] { ++changes; });
    }
    std::unique_ptr<FakeTrayHost> host() const
    {
        return std::make_unique<FakeTrayHost>(bus.address());
    }
    bool waitForHost(bool isThere) const
    {
        return turnLoopUntil([&] { return watcher.found().has_value() == isThere; });
    }
};

TEST_F(TrayWatcherTest, aHostThatIsThereIsFound)
{
    const auto there = host();
    start();
    ASSERT_TRUE(waitForHost(true));
    EXPECT_EQ(watcher.found(), (TrayWatcher::Found{there->owner(), ItemLayout::Host::squareCells}));
    EXPECT_EQ(changes, 1);
}

TEST_F(TrayWatcherTest, hostsThatComeAndGoAreFollowed)
{
    start();
    auto first = host();
    ASSERT_TRUE(waitForHost(true));
    first.reset();
    ASSERT_TRUE(waitForHost(false));
    const auto second = host();
    ASSERT_TRUE(waitForHost(true));
    EXPECT_EQ(watcher.found()->owner, second->owner());
    EXPECT_EQ(changes, 3);
}

TEST_F(TrayWatcherTest, theProcessOfTheHostTellsWhatItDoesWithPictures)
{
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "waybar"); // the fake host is this process
    const auto there = host();
    start();
    const bool found = waitForHost(true);
    ::prctl(PR_SET_NAME, before);
    ASSERT_TRUE(found);
    EXPECT_EQ(watcher.found()->host, ItemLayout::Host::waybar);
}

TEST_F(TrayWatcherTest, aBusThatIsLostTakesTheHostWithIt)
{
    const auto there = host();
    start();
    ASSERT_TRUE(waitForHost(true));
    bus.kill();
    EXPECT_TRUE(waitForHost(false));
}

TEST_F(TrayWatcherTest, whatSomebodyElseSaysOfTheNameIsNotBelieved)
{
    const auto there = host();
    start();
    ASSERT_TRUE(waitForHost(true));
    auto forged = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/DBus"),
                                             QStringLiteral("org.freedesktop.DBus"),
                                             QStringLiteral("NameOwnerChanged"));
    forged.setArguments({TrayWatcher::busName(), there->owner(), QString()});
    test::SignalCounter counter; // on the watcher's own connection
    client.connect(QString(), QString(), QString(), QStringLiteral("NameOwnerChanged"),
                   {TrayWatcher::busName()}, QString(), &counter, SLOT(on()));
    server.send(forged);
    ASSERT_TRUE(turnLoopUntil([&] { return counter.count == 1; }));
    QCoreApplication::processEvents();
    EXPECT_TRUE(watcher.found().has_value());
    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace vellumor::trayWatcherTest
