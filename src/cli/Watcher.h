#pragma once

#include "platform/linux/GioCall.h"

#include <functional>

namespace vellumor {

// Waits for changes that the running program announces, for its coming and going, and for the end
// of whoever reads what is printed. Asks nobody in between.
class Watcher {
public:
    // `onChange` gives whether to go on. `connection` outlives this.
    Watcher(GDBusConnection* connection, std::function<bool()> onChange);
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;
    ~Watcher();

    // Until the bus or the reader has gone, or `onChange` says so.
    void run();

private:
    void look();

    GDBusConnection* m_connection;
    std::function<bool()> m_onChange;
    std::unique_ptr<GMainLoop, Releases<g_main_loop_unref>> m_loop;
    guint m_signal = 0;
    guint m_name = 0;
    guint m_reader = 0;
    gulong m_closed = 0;
};

} // namespace vellumor
