#include "platform/linux/tray/RegisteredItem.h"

#include "platform/linux/tray/FakeTrayHost.h"
#include "support/BusTesting.h"
#include "support/PassWorker.h"

namespace vellumor::registeredItemTest {
namespace {

using test::turnLoopUntil;

struct RegisteredItemTest : test::BusTest {
    Worker worker;
    StatusMenu menu{{}};
    RegisteredItem::Identity identity{bus.address(), 7, QStringLiteral("vellumor")};

    std::unique_ptr<RegisteredItem> item()
    {
        return std::make_unique<RegisteredItem>(worker, identity, menu,
                                                [](QPoint, const std::string&) {});
    }
    qsizetype namesOnBus() const
    {
        return client.interface()->registeredServiceNames().value().size();
    }
};

TEST_F(RegisteredItemTest, anItemThatGoesLeavesNoConnectionWheneverThatIs)
{
    const test::FakeTrayHost host(bus.address());
    const auto before = namesOnBus();
    auto early = item();
    early->registerWith(host.owner(), [] {});
    early.reset(); // while it is joining the bus
    test::passWorker(worker);
    EXPECT_TRUE(turnLoopUntil([&] { return namesOnBus() == before; }));
    bool isThere = false;
    auto late = item();
    late->registerWith(host.owner(), [&] { isThere = true; });
    ASSERT_TRUE(turnLoopUntil([&] { return isThere; }));
    EXPECT_EQ(namesOnBus(), before + 2); // its connection, and its name
    late.reset();
    EXPECT_TRUE(turnLoopUntil([&] { return namesOnBus() == before; }));
}

} // namespace
} // namespace vellumor::registeredItemTest
