#include "async/Worker.h"

#include "async/Task.h"

#include <QCoroCore>
#include <QThread>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <semaphore>
#include <thread>
#include <vector>

namespace vellumor::workerTest {
namespace {

Task<QThread*> threadOfJob(Worker& worker)
{
    auto job = [] { return QThread::currentThread(); };
    co_return co_await worker.run(job);
}

TEST(Worker, runsOffTheMainThread)
{
    Worker worker;
    EXPECT_NE(QCoro::waitFor(threadOfJob(worker)), QThread::currentThread());
}

TEST(Worker, runsEveryJobOnOneThread)
{
    Worker worker;
    QThread* const first = QCoro::waitFor(threadOfJob(worker));
    EXPECT_EQ(QCoro::waitFor(threadOfJob(worker)), first);
}

Task<QThread*> threadAfterJob(Worker& worker)
{
    auto job = [] {};
    co_await worker.run(job);
    co_return QThread::currentThread();
}

TEST(Worker, resumesOnTheMainThread)
{
    Worker worker;
    EXPECT_EQ(QCoro::waitFor(threadAfterJob(worker)), QThread::currentThread());
}

Task<std::unique_ptr<int>> moveOnlyResult(Worker& worker)
{
    auto job = [] { return std::make_unique<int>(42); };
    co_return co_await worker.run(job);
}

TEST(Worker, givesBackAResultThatCanOnlyBeMoved)
{
    Worker worker;
    const auto result = QCoro::waitFor(moveOnlyResult(worker));
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, 42);
}

TEST(Worker, keepsTheOrderInWhichItWasAsked)
{
    Worker worker;
    std::vector<int> order;
    std::binary_semaphore done(0);
    worker.post([] { std::this_thread::sleep_for(std::chrono::milliseconds(20)); });
    for (int i = 0; i < 50; ++i)
        worker.post([&order, i] { order.push_back(i); });
    worker.post([&done] { done.release(); });
    done.acquire();
    ASSERT_EQ(order.size(), 50U);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

Task<int> slowAnswer(Worker& worker)
{
    auto job = [] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        return 7;
    };
    co_return co_await worker.run(job);
}

TEST(Worker, theLoopKeepsTurningWhileAJobBlocks)
{
    Worker worker;
    int turns = 0;
    QTimer ticking;
    QObject::connect(&ticking, &QTimer::timeout, [&turns] { ++turns; });
    ticking.start(5);
    EXPECT_EQ(QCoro::waitFor(slowAnswer(worker)), 7);
    EXPECT_GE(turns, 10);
}

TEST(Worker, oneHangingWorkerDoesNotDelayAnother)
{
    std::binary_semaphore release(0);
    Worker hanging;
    Worker other;
    hanging.post([&release] { release.acquire(); });
    EXPECT_EQ(QCoro::waitFor(slowAnswer(other)), 7);
    release.release();
}

} // namespace
} // namespace vellumor::workerTest
