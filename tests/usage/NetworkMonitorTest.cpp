#include "usage/NetworkMonitor.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace vellumor::networkMonitorTest {
namespace {

struct FakePaths final : PathMonitor {
    std::function<void(bool)> tell;
    void start(std::function<void(bool)> onUpdate) override { tell = std::move(onUpdate); }
};

struct NetworkMonitorTest : testing::Test {
    FakePaths paths;
    NetworkMonitor monitor{paths};
    std::vector<bool> changes;

    NetworkMonitorTest()
    {
        monitor.onChange = [this](bool online) { changes.push_back(online); };
    }
};

TEST_F(NetworkMonitorTest, isOnlineUntilTheSystemSaysOtherwise)
{
    EXPECT_TRUE(monitor.isOnline());
    EXPECT_TRUE(changes.empty());
}

TEST_F(NetworkMonitorTest, anUpdateThatRepeatsTheStateCallsNobody)
{
    paths.tell(true);
    EXPECT_TRUE(changes.empty());
    paths.tell(false);
    paths.tell(false);
    EXPECT_EQ(changes, std::vector<bool>{false});
}

TEST_F(NetworkMonitorTest, aChangeIsToldOnceWithTheNewState)
{
    paths.tell(false);
    EXPECT_FALSE(monitor.isOnline());
    paths.tell(true);
    EXPECT_TRUE(monitor.isOnline());
    EXPECT_EQ(changes, (std::vector<bool>{false, true}));
}

TEST_F(NetworkMonitorTest, theStateHasChangedBeforeTheCall)
{
    bool during = true;
    monitor.onChange = [&](bool) { during = monitor.isOnline(); };
    paths.tell(false);
    EXPECT_FALSE(during);
}

TEST(NetworkMonitor, anUpdateAfterItsEndIsDropped)
{
    FakePaths paths;
    std::make_unique<NetworkMonitor>(paths).reset();
    paths.tell(false);
    const NetworkMonitor next(paths);
    paths.tell(true);
    EXPECT_TRUE(next.isOnline());
}

TEST_F(NetworkMonitorTest, worksWithNobodyListening)
{
    monitor.onChange = nullptr;
    paths.tell(false);
    EXPECT_FALSE(monitor.isOnline());
}

} // namespace
} // namespace vellumor::networkMonitorTest
