#pragma once

#include "async/Task.h"
#include "async/Worker.h"

#include <QCoroCore>

namespace vellumor::test {

// Waits until everything that the worker was asked for so far is done and handed back.
inline void passWorker(Worker& worker)
{
    const auto pass = [](Worker& passed) -> Task<> {
        auto nothing = [] {};
        co_await passed.run(std::move(nothing));
    };
    QCoro::waitFor(pass(worker));
}

} // namespace vellumor::test
