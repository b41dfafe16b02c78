#include "platform/linux/notifications/NotificationsTesting.h"
#include "support/LoopTicks.h"

#include <QElapsedTimer>
#include <QThread>

namespace vellumor::freedesktopNotificationsAuthorizationTest {
namespace {

using test::FakeNotificationServer;
using test::turnLoopUntil;
using Authorization = Notifications::Authorization;
using Answers = std::vector<Authorization>;

// Asks, and looks at how the answer comes.
struct Asking {
    explicit Asking(FreedesktopNotifications& notifications)
    {
        notifications.requestAuthorization([this](Authorization answer) {
            EXPECT_FALSE(isWithinTheCall);
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            answers.push_back(answer);
        });
        isWithinTheCall = false;
    }
    // Once nothing more can come.
    Answers all()
    {
        EXPECT_TRUE(turnLoopUntil([this] { return !answers.empty(); }));
        const test::LoopTicks ticks;
        EXPECT_TRUE(turnLoopUntil([&] { return ticks.count() >= 5; }));
        return answers;
    }

    bool isWithinTheCall = true;
    Answers answers;
};

struct FreedesktopNotificationsAuthorizationTest : test::NotificationsTest {
    using NotificationsTest::NotificationsTest;

    Answers ask()
    {
        Asking asking(notifications);
        return asking.all();
    }
};

// The bus would say that it has started nothing, if it were asked to.
struct InstalledServerAuthorizationTest : FreedesktopNotificationsAuthorizationTest {
    InstalledServerAuthorizationTest()
        : FreedesktopNotificationsAuthorizationTest(
              {.activatable = {{FakeNotificationServer::serverName().toStdString(),
                                "/nonexistent/notification-server"}}})
    {
    }
};

struct OtherServiceAuthorizationTest : FreedesktopNotificationsAuthorizationTest {
    OtherServiceAuthorizationTest()
        : FreedesktopNotificationsAuthorizationTest(
              {.activatable = {{"org.freedesktop.Notifications2", "/nonexistent/other"}}})
    {
    }
};

TEST_F(FreedesktopNotificationsAuthorizationTest, aServerThatRunsIsEnoughEvenIfItHangs)
{
    const auto display = start();
    EXPECT_EQ(ask(), Answers{Authorization::authorized});
    display->capabilitiesAnswer = FakeNotificationServer::Answer::owes;
    EXPECT_EQ(ask(), Answers{Authorization::authorized});
    EXPECT_EQ(display->asked(), 0);
}

TEST_F(InstalledServerAuthorizationTest, aServerThatTheBusCanStartIsEnough)
{
    EXPECT_EQ(ask(), Answers{Authorization::authorized});
}

TEST_F(OtherServiceAuthorizationTest, anotherServiceIsNone)
{
    EXPECT_EQ(ask(), Answers{Authorization::denied});
}

TEST_F(FreedesktopNotificationsAuthorizationTest, itIsDeniedAsLongAsThereIsNoServer)
{
    EXPECT_EQ(ask(), Answers{Authorization::denied});
    auto display = start();
    EXPECT_EQ(ask(), Answers{Authorization::authorized});
    display.reset();
    EXPECT_EQ(ask(), Answers{Authorization::denied});
}

TEST_F(FreedesktopNotificationsAuthorizationTest, everyoneWhoAsksIsAnsweredOnce)
{
    const auto display = start();
    Asking first(notifications);
    Asking second(notifications);
    EXPECT_EQ(first.all(), Answers{Authorization::authorized});
    EXPECT_EQ(second.all(), Answers{Authorization::authorized});
}

TEST_F(FreedesktopNotificationsAuthorizationTest, aBusThatHangsMeansDeniedAfterTwoSeconds)
{
    const auto display = start();
    bus.freeze();
    const test::LoopTicks ticks;
    QElapsedTimer timer;
    timer.start();
    Asking asking(notifications);
    EXPECT_TRUE(turnLoopUntil([&] { return !asking.answers.empty(); }));
    EXPECT_GE(timer.elapsed(), 1900);
    EXPECT_LT(timer.elapsed(), 3500);
    EXPECT_GE(ticks.count(), 50);
    bus.thaw();
    EXPECT_EQ(asking.all(), Answers{Authorization::denied});
}

TEST_F(FreedesktopNotificationsAuthorizationTest, withoutABusItIsDenied)
{
    FreedesktopNotifications alone(QDBusConnection(QStringLiteral("no such connection")));
    EXPECT_EQ(Asking(alone).all(), Answers{Authorization::denied});
}

TEST_F(FreedesktopNotificationsAuthorizationTest, aBusThatIsLostMeansDenied)
{
    const auto display = start();
    bus.freeze();
    Asking meanwhile(notifications);
    bus.kill();
    EXPECT_EQ(meanwhile.all(), Answers{Authorization::denied});
    ASSERT_TRUE(turnLoopUntil([&] { return !client.isConnected(); }));
    EXPECT_EQ(ask(), Answers{Authorization::denied});
}

} // namespace
} // namespace vellumor::freedesktopNotificationsAuthorizationTest
