#include "platform/linux/notifications/NotificationsTesting.h"

#include <functional>

namespace vellumor::freedesktopNotificationsOpeningTest {
namespace {

using test::FakeNotificationServer;
using test::turnLoopUntil;
using Tokens = std::vector<std::string>;

// What a user does with a notification. `display` shows two of ours: number 1, and number 2 for the
// end of each test, since everything that was sent before its token has come by then.
struct FreedesktopNotificationsOpeningTest : test::NotificationsTest {
    std::unique_ptr<FakeNotificationServer> display = start();
    Tokens opened;

    void SetUp() override
    {
        notifications.onOpen([this](const std::string& token) { opened.push_back(token); });
        deliver(2);
    }
    void deliver(std::size_t count)
    {
        const auto before = display->shown().size();
        for (std::size_t i = 0; i < count; ++i)
            notifications.deliver("Vellumor", "Ana · Session limit reached");
        ASSERT_TRUE(hasShown(*display, before + count));
    }
    // By another one, which counts from 1 again.
    void replaceServer()
    {
        display.reset();
        display = start();
    }
    // Gives the tokens with which it was opened, but for that of the end.
    Tokens atTheEnd(uint id = 2)
    {
        emit display->ActivationToken(id, QStringLiteral("the end"));
        emit display->ActionInvoked(id, QStringLiteral("default"));
        EXPECT_TRUE(turnLoopUntil([&] { return !opened.empty() && opened.back() == "the end"; }));
        if (!opened.empty())
            opened.pop_back();
        return std::exchange(opened, {});
    }
};

TEST_F(FreedesktopNotificationsOpeningTest, theActionOpensWithTheTokenOfItsNotificationIfThereIsOne)
{
    struct Row {
        const char* name;
        std::vector<std::pair<uint, const char*>> tokens;
        const char* expected;
    };
    const Row rows[] = {
        {"none", {}, ""},
        {"that of another", {{2, "second"}}, ""},
        {"that of nobody's", {{77, "nobody"}}, ""},
        {"its own", {{1, "first"}, {2, "second"}}, "first"},
        {"the newer of two", {{1, "older"}, {1, "newer"}}, "newer"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        for (const auto& [id, token] : row.tokens)
            emit display->ActivationToken(id, QLatin1String(token));
        emit display->ActionInvoked(1, QStringLiteral("default"));
        EXPECT_EQ(atTheEnd(), Tokens{row.expected});
    }
}

TEST_F(FreedesktopNotificationsOpeningTest, nothingElseOpens)
{
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"another action", [this] { emit display->ActionInvoked(1, QStringLiteral("settings")); }},
        {"an action without a name", [this] { emit display->ActionInvoked(1, QString()); }},
        {"a token alone", [this] { emit display->ActivationToken(1, QStringLiteral("token")); }},
        {"somebody else's", [this] { emit display->ActionInvoked(3, QStringLiteral("default")); }},
        {"number 0", [this] { emit display->ActionInvoked(0, QStringLiteral("default")); }},
        {"the last number",
         [this] { emit display->ActionInvoked(~0U, QStringLiteral("default")); }},
        {"the closing of somebody else's", [this] { emit display->NotificationClosed(3, 2); }},
        {"its closing", [this] { emit display->NotificationClosed(1, 2); }},
        {"one that is closed",
         [this] { emit display->ActionInvoked(1, QStringLiteral("default")); }},
        {"its second closing", [this] { emit display->NotificationClosed(1, 1); }},
    };
    for (const auto& [name, happen] : rows) {
        SCOPED_TRACE(name);
        happen();
        EXPECT_EQ(atTheEnd(), Tokens{});
    }
}

TEST_F(FreedesktopNotificationsOpeningTest, whatSomebodyElseSaysIsNotBelieved)
{
    FakeNotificationServer stranger(bus.address(), {}, QStringLiteral("org.example.stranger"));
    emit stranger.ActivationToken(1, QStringLiteral("forged"));
    emit stranger.ActionInvoked(1, QStringLiteral("default"));
    emit stranger.NotificationClosed(1, 2);
    settle(stranger.connection().baseService());
    emit display->ActionInvoked(1, QStringLiteral("default"));
    EXPECT_EQ(atTheEnd(), Tokens{""});
}

TEST_F(FreedesktopNotificationsOpeningTest, anIdIsThatOfTheServerThatHasGivenIt)
{
    replaceServer();
    emit display->ActionInvoked(1, QStringLiteral("default")); // another program's
    display->firstId = 2;
    deliver(1);
    EXPECT_EQ(atTheEnd(2), Tokens{});
    display->firstId = 0; // so that the second one has number 1
    deliver(1);
    emit display->ActionInvoked(1, QStringLiteral("default"));
    EXPECT_EQ(atTheEnd(2), Tokens{""});
}

// Before our side has taken notice of the answer that brought the id.
TEST_F(FreedesktopNotificationsOpeningTest, whoFollowsItAtOnceIsHeard)
{
    notifications.deliver("Vellumor", "Ana · Session limit reached");
    const auto follow = [&] {
        if (display->shown().size() < 3)
            return false;
        emit display->ActionInvoked(3, QStringLiteral("default"));
        return true;
    };
    ASSERT_TRUE(turnLoopUntil(follow));
    EXPECT_EQ(atTheEnd(), Tokens{""});
}

TEST_F(FreedesktopNotificationsOpeningTest, anIdThatIsGivenAgainIsTheNewerOnesAlone)
{
    emit display->ActivationToken(1, QStringLiteral("older"));
    EXPECT_EQ(atTheEnd(), Tokens{});
    display->firstId = 0xFFFFFFFF; // the third one has number 1
    deliver(1);
    emit display->ActionInvoked(1, QStringLiteral("default"));
    emit display->NotificationClosed(1, 2);
    emit display->ActionInvoked(1, QStringLiteral("default"));
    EXPECT_EQ(atTheEnd(), Tokens{""});
}

TEST_F(FreedesktopNotificationsOpeningTest, ofTheManyThatAServerNeverClosesTheNewestAreKnown)
{
    for (int i = 0; i < 4; ++i)
        deliver(100); // at most as many at once as this bus takes from one program
    for (const uint id : {1U, 2U, 100U, 402U})
        emit display->ActionInvoked(id, QStringLiteral("default"));
    EXPECT_EQ(atTheEnd(401), Tokens{""});
    replaceServer();
    deliver(3);
    for (const uint id : {1U, 2U})
        emit display->ActionInvoked(id, QStringLiteral("default"));
    EXPECT_EQ(atTheEnd(3), (Tokens{"", ""}));
}

TEST_F(FreedesktopNotificationsOpeningTest, whoeverAsksAgainTakesThePlaceOfTheFirst)
{
    Tokens second;
    notifications.onOpen([&](const std::string& token) { second.push_back(token); });
    emit display->ActionInvoked(1, QStringLiteral("default"));
    ASSERT_TRUE(turnLoopUntil([&] { return !second.empty(); }));
    settle(display->connection().baseService());
    EXPECT_EQ(second, Tokens{""});
    EXPECT_EQ(opened, Tokens{});
}

} // namespace
} // namespace vellumor::freedesktopNotificationsOpeningTest
