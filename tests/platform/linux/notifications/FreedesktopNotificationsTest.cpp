#include "platform/linux/FreedesktopNotifications.h"

#include "platform/linux/notifications/NotificationsTesting.h"
#include "support/LoopTicks.h"

#include <QElapsedTimer>

#include <filesystem>

namespace vellumor::freedesktopNotificationsTest {
namespace {

using namespace std::chrono_literals;
using test::FakeNotificationServer;
using test::turnLoopUntil;
using Answer = FakeNotificationServer::Answer;

struct FreedesktopNotificationsTest : test::NotificationsTest {
    static std::vector<std::string> bodies(const FakeNotificationServer& display)
    {
        std::vector<std::string> found;
        for (const auto& shown : display.shown())
            found.push_back(shown.body());
        return found;
    }
};

QVariantMap hintsOf(const FakeNotificationServer::Shown& shown)
{
    return qdbus_cast<QVariantMap>(shown.arguments[6]);
}

TEST_F(FreedesktopNotificationsTest, theServerIsGivenExactlyThis)
{
    const auto display = start();
    notifications.deliver("Vellumor", "Ana · Session limit reached");
    ASSERT_TRUE(hasShown(*display, 1));
    const auto& shown = display->shown().front();
    EXPECT_EQ(shown.signature, "susssasa{sv}i");
    EXPECT_EQ(shown.arguments[0], QStringLiteral("Vellumor"));
    EXPECT_EQ(shown.arguments[1], 0U) << "replaces another one";
    EXPECT_EQ(shown.arguments[2], QStringLiteral("dev.quorle.vellumor"));
    EXPECT_EQ(shown.title(), "Vellumor");
    EXPECT_EQ(shown.body(), "Ana · Session limit reached");
    EXPECT_EQ(shown.arguments[5], QStringList({"default", "Open"}));
    EXPECT_EQ(hintsOf(shown), QVariantMap({{"desktop-entry", "dev.quorle.vellumor"},
                                           {"sound-name", "message-new-instant"}}));
    EXPECT_EQ(shown.arguments[7], -1) << "not for as long as the server likes";
}

TEST_F(FreedesktopNotificationsTest, theBodyIsEscapedWhereTheServerReadsMarkupAndNowhereElse)
{
    struct Row {
        const char* text;
        const char* escaped;
    };
    const Row rows[] = {
        {"Ana", "Ana"},
        {"", ""},
        {"<b>R&D</b>", "&lt;b&gt;R&amp;D&lt;/b&gt;"},
        {"&amp;", "&amp;amp;"},
        {R"("it's")", "&quot;it's&quot;"},
        {"1 < 2\n\t%d ·🚀", "1 &lt; 2\n\t%d ·🚀"},
        {"\xff<", "\uFFFD&lt;"}, // no text
    };
    const QStringList servers[] = {{"actions", "body", "body-markup"}, {"actions", "body"}, {}};
    for (const QStringList& capabilities : servers) {
        const auto display = start(capabilities);
        const bool hasMarkup = capabilities.contains("body-markup");
        std::size_t count = 0;
        for (const auto& [text, escaped] : rows) {
            SCOPED_TRACE(text);
            notifications.deliver(text, text);
            ASSERT_TRUE(hasShown(*display, ++count));
            const auto readable = QString::fromUtf8(text).toStdString();
            EXPECT_EQ(display->shown().back().title(), readable);
            EXPECT_EQ(display->shown().back().body(), hasMarkup ? escaped : readable);
        }
    }
}

TEST_F(FreedesktopNotificationsTest, severalAreShownInTheirOrderAndNoneReplacesAnother)
{
    const auto display = start();
    for (const char* body : {"one", "two", "two", "three"})
        notifications.deliver("Vellumor", body);
    ASSERT_TRUE(hasShown(*display, 4));
    EXPECT_EQ(bodies(*display), (std::vector<std::string>{"one", "two", "two", "three"}));
    for (const auto& shown : display->shown())
        EXPECT_EQ(shown.arguments[1], 0U);
}

TEST_F(FreedesktopNotificationsTest, eachServerIsAskedForItselfWhenOneTakesThePlaceOfAnother)
{
    auto display = start({"body-markup"});
    notifications.deliver("Vellumor", "<");
    ASSERT_TRUE(hasShown(*display, 1));
    EXPECT_EQ(display->shown().front().body(), "&lt;");
    display.reset();
    display = start();
    notifications.deliver("Vellumor", "<");
    ASSERT_TRUE(hasShown(*display, 1));
    EXPECT_EQ(display->shown().front().body(), "<");
}

TEST_F(FreedesktopNotificationsTest, whatNobodyShowsIsLostWithoutAWord)
{
    testing::internal::CaptureStderr();
    notifications.deliver("Vellumor", "lost");
    EXPECT_TRUE(isDone());
    const auto display = start();
    notifications.deliver("Vellumor", "shown");
    EXPECT_TRUE(hasShown(*display, 1));
    EXPECT_EQ(bodies(*display), std::vector<std::string>{"shown"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(FreedesktopNotificationsTest, aServerThatRefusesIsNotAskedAgain)
{
    const std::pair<Answer, Answer> rows[] = {{Answer::refuses, Answer::gives},
                                              {Answer::gives, Answer::refuses}};
    for (const auto& [capabilities, notify] : rows) {
        const auto display = start();
        display->capabilitiesAnswer = capabilities;
        display->notifyAnswer = notify;
        testing::internal::CaptureStderr();
        notifications.deliver("Vellumor", "refused");
        EXPECT_TRUE(isDone());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(display->asked(), 1);
        EXPECT_EQ(display->shown().size(), notify == Answer::refuses ? 1U : 0U);
    }
}

TEST_F(FreedesktopNotificationsTest, withoutABusNothingHappens)
{
    testing::internal::CaptureStderr();
    FreedesktopNotifications alone(QDBusConnection(QStringLiteral("no such connection")));
    alone.onOpen([](const std::string&) { FAIL(); });
    alone.deliver("Vellumor", "lost");
    EXPECT_EQ(waiting(alone), 0);
    bus.kill();
    EXPECT_TRUE(turnLoopUntil([&] { return !client.isConnected(); }));
    notifications.deliver("Vellumor", "lost");
    EXPECT_EQ(waiting(notifications), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The server's answer would come from this very thread, or after 25 seconds.
TEST_F(FreedesktopNotificationsTest, nobodyWaitsForAServerThatHangs)
{
    for (const auto& [capabilities, notify] :
         {std::pair(Answer::owes, Answer::gives), std::pair(Answer::gives, Answer::owes)}) {
        const auto display = start();
        display->capabilitiesAnswer = capabilities;
        display->notifyAnswer = notify;
        const test::LoopTicks ticks;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 20; ++i)
            notifications.deliver("Vellumor", "lost");
        EXPECT_TRUE(turnLoopUntil([&] {
            return display->asked() == 20 &&
                   (notify != Answer::owes || display->shown().size() == 20);
        }));
        const int before = ticks.count();
        EXPECT_TRUE(turnLoopUntil([&] { return ticks.count() >= before + 10; }));
        EXPECT_LT(timer.elapsed(), 10'000);
        EXPECT_TRUE(turnLoopUntil([&] { return waiting(notifications) == 20; }));
    }
}

TEST_F(FreedesktopNotificationsTest, nobodyWaitsForABusThatHangs)
{
    const auto display = start();
    notifications.deliver("Vellumor", "first");
    ASSERT_TRUE(hasShown(*display, 1));
    bus.freeze();
    const test::LoopTicks ticks;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i)
        notifications.deliver("Vellumor", "late");
    EXPECT_TRUE(turnLoopUntil([&] { return ticks.count() >= 10; }));
    EXPECT_LT(timer.elapsed(), 10'000);
    bus.thaw();
    EXPECT_TRUE(hasShown(*display, 21));
}

TEST_F(FreedesktopNotificationsTest, whatAServerOwesIsForgottenAfterAWhile)
{
    for (const auto& [capabilities, notify] :
         {std::pair(Answer::owes, Answer::gives), std::pair(Answer::gives, Answer::owes)}) {
        const auto display = start();
        display->capabilitiesAnswer = capabilities;
        display->notifyAnswer = notify;
        FreedesktopNotifications impatient(client, 300ms);
        for (int i = 0; i < 100; ++i)
            impatient.deliver("Vellumor", "lost");
        EXPECT_EQ(waiting(impatient), 100);
        EXPECT_TRUE(isDone(impatient));
        EXPECT_TRUE(turnLoopUntil([&] { return display->asked() == 100; }));
    }
}

struct InstalledNotificationServerTest : test::BusTest {
    InstalledNotificationServerTest()
        : BusTest({.activatable = {{FakeNotificationServer::serverName().toStdString(),
                                    "/usr/bin/touch " + mark()}}})
    {
    }
    ~InstalledNotificationServerTest() override { std::filesystem::remove(mark()); }

    // What the server leaves behind. Not in the folder, which is not there yet.
    static std::string mark()
    {
        return testing::TempDir() + "notification-server-" + std::to_string(::getpid());
    }
};

TEST_F(InstalledNotificationServerTest, theFirstNotificationStartsIt)
{
    ASSERT_FALSE(std::filesystem::exists(mark()));
    FreedesktopNotifications notifications(client);
    notifications.deliver("Vellumor", "lost");
    EXPECT_TRUE(turnLoopUntil([] { return std::filesystem::exists(mark()); }));
}

} // namespace
} // namespace vellumor::freedesktopNotificationsTest
