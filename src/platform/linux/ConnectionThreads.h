#pragma once

#include <chrono>

namespace vellumor {

// Waits until the threads of Qt's connections are gone, for `limit` at most. Before a process ends:
// Qt gives such a thread up a moment before the system has ended it, and the TLS library, which
// cleans up while the process exits, gives back what that thread then gives back once more.
void awaitConnectionThreads(std::chrono::milliseconds limit = std::chrono::seconds(1));

} // namespace vellumor
