#pragma once

#include <QCoroTask>

namespace vellumor {

// What a coroutine of the main thread returns. It runs at once up to its first wait; a task that
// nobody awaits or keeps loses its failures, so every function that gives one is [[nodiscard]].
// `co_return` moves out of whatever variable it names: of one that is to stay, name a copy.
template <typename T = void>
using Task = QCoro::Task<T>;

} // namespace vellumor
