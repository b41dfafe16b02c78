#include "platform/linux/QtPathMonitor.h"

#include "support/LoopTicks.h"
#include "support/PassWorker.h"
#include "support/SilentSocket.h"
#include "support/TempFolder.h"
#include "support/private_bus/PrivateBus.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace vellumor::qtPathMonitorTest {
namespace {

using namespace std::chrono_literals;
using Reachability = QNetworkInformation::Reachability;

class QtPathMonitorTest : public testing::Test {
protected:
    // The backend asks the system bus first, and that is no test's business.
    QtPathMonitorTest() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", "disabled:"); }

    void start()
    {
        m_monitor->start([this](bool satisfied) { m_updates.push_back(satisfied); });
    }
    // Lets it find out about the bus.
    void settle() { test::passWorker(m_worker); }

    Worker m_worker;
    std::unique_ptr<QtPathMonitor> m_monitor =
        std::make_unique<QtPathMonitor>(m_worker, "disabled:");
    std::vector<bool> m_updates;
};

TEST(PathSatisfied, isWhateverIsNotKnownToBeCutOff)
{
    EXPECT_TRUE(isSatisfied(Reachability::Unknown));
    EXPECT_TRUE(isSatisfied(Reachability::Site));
    EXPECT_TRUE(isSatisfied(Reachability::Online));
    EXPECT_FALSE(isSatisfied(Reachability::Disconnected));
    EXPECT_FALSE(isSatisfied(Reachability::Local));
}

TEST_F(QtPathMonitorTest, tellsThePresentStateOnceAndNotBeforeStartHasReturned)
{
    start();
    EXPECT_TRUE(m_updates.empty());
    settle();
    ASSERT_NE(QNetworkInformation::instance(), nullptr);
    const bool present = isSatisfied(QNetworkInformation::instance()->reachability());
    EXPECT_EQ(m_updates, std::vector<bool>{present});
}

TEST_F(QtPathMonitorTest, tellsEveryChangeOfTheSystem)
{
    start();
    settle();
    m_updates.clear();
    QNetworkInformation* system = QNetworkInformation::instance();
    ASSERT_NE(system, nullptr);
    emit system->reachabilityChanged(Reachability::Disconnected);
    emit system->reachabilityChanged(Reachability::Local);
    emit system->reachabilityChanged(Reachability::Site);
    emit system->reachabilityChanged(Reachability::Online);
    EXPECT_EQ(m_updates, (std::vector<bool>{false, false, true, true}));
}

TEST_F(QtPathMonitorTest, callsNothingBackOnceItIsGone)
{
    start();
    settle();
    m_updates.clear();
    m_monitor.reset();
    ASSERT_NE(QNetworkInformation::instance(), nullptr);
    emit QNetworkInformation::instance()->reachabilityChanged(Reachability::Disconnected);
    EXPECT_TRUE(m_updates.empty());
}

TEST_F(QtPathMonitorTest, oneThatGoesWhileItLooksForTheBusCallsNothingBack)
{
    start();
    m_monitor.reset();
    settle();
    EXPECT_TRUE(m_updates.empty());
}

using QtPathMonitorDeathTest = QtPathMonitorTest;

// In a process of its own, since a backend that was loaded once stays.
TEST_F(QtPathMonitorDeathTest, withoutABackendThePathCountsAsSatisfied)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto startWithoutPlugins = [this] {
        QCoreApplication::setLibraryPaths({});
        start();
        const bool early = !m_updates.empty();
        settle();
        const bool isRight = QNetworkInformation::instance() == nullptr && !early &&
                             m_updates == std::vector<bool>{true};
        std::_Exit(isRight ? 0 : 1);
    };
    EXPECT_EXIT(startWithoutPlugins(), testing::ExitedWithCode(0), "");
}

// What Qt loads would ask the bus, and wait for it on the main thread.
TEST_F(QtPathMonitorDeathTest, withABusThatNeverAnswersNothingIsAskedAndThePathCountsAsSatisfied)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto startOnASilentBus = [this] {
        const test::TempFolder folder;
        const test::SilentSocket silent(folder.file("bus"));
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", silent.busAddress().c_str());
        const test::LoopTicks ticks;
        m_monitor = std::make_unique<QtPathMonitor>(m_worker, silent.busAddress());
        start();
        settle();
        const bool isRight = QNetworkInformation::instance() == nullptr &&
                             m_updates == std::vector<bool>{true} && ticks.count() >= 50;
        std::_Exit(isRight ? 0 : 1);
    };
    EXPECT_EXIT(startOnASilentBus(), testing::ExitedWithCode(0), "");
}

TEST_F(QtPathMonitorTest, aBusThatTakesItsTimeIsListenedToInTheEnd)
{
    const test::TempFolder folder;
    const test::PrivateBus bus(folder.makeFolder("bus"));
    bus.freeze();
    m_monitor = std::make_unique<QtPathMonitor>(m_worker, bus.address(), 10ms);
    start();
    settle();
    EXPECT_EQ(m_updates, std::vector<bool>{true});
    bus.thaw();
    // A repeated look gives the same answer once more.
    const QDeadlineTimer limit(20'000);
    const auto isHeard = [this] {
        m_updates.clear();
        if (auto* const system = QNetworkInformation::instance())
            emit system->reachabilityChanged(Reachability::Disconnected);
        return m_updates == std::vector<bool>{false};
    };
    while (!isHeard() && !limit.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    EXPECT_TRUE(isHeard());
}

} // namespace
} // namespace vellumor::qtPathMonitorTest
