#include "platform/linux/ColourScheme.h"

#include "platform/linux/tray/FakePortal.h"
#include "support/BusTesting.h"

#include <memory>

namespace vellumor::colourSchemeTest {
namespace {

using test::FakePortal;
using test::turnLoopUntil;

struct ColourSchemeTest : test::BusTest {
    ColourScheme scheme{client};
    int changes = 0;

    void start()
    {
        scheme.start([this] { ++changes; });
    }
    std::unique_ptr<FakePortal> portal(const QVariant& value) const
    {
        return std::make_unique<FakePortal>(bus.address(), value);
    }
    bool waitFor(std::optional<bool> prefersDark) const
    {
        return turnLoopUntil([&] { return scheme.prefersDark() == prefersDark; });
    }
};

QVariant wrapped(const QVariant& value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

TEST_F(ColourSchemeTest, whatThePortalSaysAtTheStartIsTaken)
{
    const std::pair<QVariant, std::optional<bool>> rows[] = {
        {1U, true},
        {2U, false},
        {wrapped(1U), true},
        {wrapped(wrapped(2U)), false},
        {0U, std::nullopt},
        {3U, std::nullopt},
        {QStringLiteral("dark"), std::nullopt},
        {1, std::nullopt},
        {QVariant(), std::nullopt}, // an error
    };
    for (const auto& [value, expected] : rows) {
        const auto there = portal(value);
        ColourScheme asking(client);
        int told = 0;
        asking.start([&] { ++told; });
        ASSERT_TRUE(turnLoopUntil([&] { return there->reads() > 0; }));
        settle(QStringLiteral("org.freedesktop.portal.Desktop"));
        EXPECT_TRUE(turnLoopUntil([&] { return asking.prefersDark() == expected; }));
        EXPECT_EQ(told, expected ? 1 : 0);
    }
}

TEST_F(ColourSchemeTest, aChangeIsFollowedAndTheSameAgainIsNone)
{
    const auto there = portal(1U);
    start();
    ASSERT_TRUE(waitFor(true));
    there->set(1U);
    there->set(2U);
    ASSERT_TRUE(waitFor(false));
    EXPECT_EQ(changes, 2);
    there->set(0U);
    ASSERT_TRUE(waitFor(std::nullopt));
    EXPECT_EQ(changes, 3);
}

TEST_F(ColourSchemeTest, aPortalThatComesLaterIsAsked)
{
    start();
    settle(QStringLiteral("org.freedesktop.DBus"));
    EXPECT_EQ(scheme.prefersDark(), std::nullopt);
    const auto there = portal(1U);
    EXPECT_TRUE(waitFor(true));
}

TEST_F(ColourSchemeTest, whatSomebodyElseSaysIsNotBelieved)
{
    const auto there = portal(1U);
    start();
    ASSERT_TRUE(waitFor(true));
    FakePortal forger(bus.address(), 2U, "org.example.portal");
    const int before = there->reads();
    forger.set(2U);
    ASSERT_TRUE(turnLoopUntil([&] { return there->reads() > before; })); // the portal was asked
    settle(QStringLiteral("org.freedesktop.portal.Desktop"));
    EXPECT_EQ(scheme.prefersDark(), true);
    EXPECT_EQ(changes, 1);
}

TEST_F(ColourSchemeTest, withoutABusNothingIsKnown)
{
    ColourScheme alone(QDBusConnection(QStringLiteral("no such connection")));
    alone.start([this] { ++changes; });
    EXPECT_EQ(alone.prefersDark(), std::nullopt);
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace vellumor::colourSchemeTest
