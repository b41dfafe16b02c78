#include "async/Serial.h"

#include "async/Task.h"

#include <QCoroCore>
#include <QThread>

#include <gtest/gtest.h>

#include <vector>

namespace vellumor::serialTest {
namespace {

// Notes every use, and where it happened.
struct Counter {
    explicit Counter(int start)
        : value(start)
    {
    }
    int value;
    std::vector<QThread*> threads;

    int add(int amount)
    {
        threads.push_back(QThread::currentThread());
        const int before = value;
        QThread::usleep(100); // long enough for another thread to come between, if one could
        value = before + amount;
        return value;
    }
};

Task<int> addTo(Serial<Counter>& counter, int amount)
{
    auto operation = [amount](Counter& value) { return value.add(amount); };
    co_return co_await counter(operation);
}

TEST(Serial, aReadModifyWriteNeedsNoLock)
{
    Worker worker;
    Serial<Counter> counter(worker, 0);
    std::vector<Task<int>> tasks;
    for (int i = 0; i < 200; ++i)
        tasks.push_back(addTo(counter, 1));
    int last = 0;
    for (auto& task : tasks)
        last = QCoro::waitFor(std::move(task));
    EXPECT_EQ(last, 200);
}

Task<std::vector<QThread*>> threadsOf(Serial<Counter>& counter)
{
    auto operation = [](Counter& value) { return value.threads; };
    co_return co_await counter(operation);
}

TEST(Serial, neverTouchesItsValueOnTheMainThread)
{
    Worker worker;
    Serial<Counter> counter(worker, 5);
    EXPECT_EQ(QCoro::waitFor(addTo(counter, 1)), 6);
    const auto threads = QCoro::waitFor(threadsOf(counter));
    ASSERT_EQ(threads.size(), 1U);
    EXPECT_NE(threads.front(), QThread::currentThread());
}

TEST(Serial, whatNobodyWaitsForIsDoneInItsTurnAllTheSame)
{
    Worker worker;
    Serial<Counter> counter(worker, 0);
    counter.post([](Counter& value) { value.add(5); });
    EXPECT_EQ(QCoro::waitFor(addTo(counter, 1)), 6);
    const auto threads = QCoro::waitFor(threadsOf(counter));
    ASSERT_EQ(threads.size(), 2U);
    EXPECT_EQ(threads[0], threads[1]);
}

} // namespace
} // namespace vellumor::serialTest
