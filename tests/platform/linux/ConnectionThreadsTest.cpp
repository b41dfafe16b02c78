#include "platform/linux/ConnectionThreads.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <thread>

namespace vellumor::connectionThreadsTest {

namespace {

using namespace std::chrono_literals;

// One of Qt's, by its name.
class Connection {
public:
    ~Connection()
    {
        m_isOver = true;
        m_thread.join();
    }
    void endAfter(std::chrono::milliseconds delay) { m_delay = delay; }
    void waitUntilItRuns() const
    {
        while (!m_isNamed)
            std::this_thread::yield();
    }

    std::atomic<bool> hasEnded = false;

private:
    void run()
    {
        pthread_setname_np(pthread_self(), "QNetworkAccessM");
        m_isNamed = true;
        const auto begin = std::chrono::steady_clock::now();
        while (!m_isOver && std::chrono::steady_clock::now() < begin + m_delay.load())
            std::this_thread::sleep_for(1ms);
        hasEnded = true;
    }

    std::atomic<bool> m_isNamed = false;
    std::atomic<bool> m_isOver = false;
    std::atomic<std::chrono::milliseconds> m_delay = std::chrono::milliseconds(1h);
    std::thread m_thread{[this] { run(); }};
};

TEST(ConnectionThreads, areWaitedFor)
{
    Connection connection;
    connection.waitUntilItRuns();
    connection.endAfter(100ms);
    awaitConnectionThreads(1min);
    EXPECT_TRUE(connection.hasEnded);
}

TEST(ConnectionThreads, areNotWaitedForForLong)
{
    Connection connection;
    connection.waitUntilItRuns();
    awaitConnectionThreads(20ms);
    EXPECT_FALSE(connection.hasEnded);
}

TEST(ConnectionThreads, noOtherThreadIsWaitedFor)
{
    std::atomic<bool> isOver = false;
    std::thread other([&] {
        while (!isOver)
            std::this_thread::sleep_for(1ms);
    });
    const auto begin = std::chrono::steady_clock::now();
    awaitConnectionThreads(1min);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
    isOver = true;
    other.join();
}

} // namespace
} // namespace vellumor::connectionThreadsTest
