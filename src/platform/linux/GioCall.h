#pragma once

#include <gio/gio.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

// What a call through GLib's bus library needs that must end in time. For the platform's own files.
namespace vellumor {

template <auto release>
struct Releases {
    void operator()(auto* handle) const { release(handle); }
};

template <typename T>
using Object = std::unique_ptr<T, Releases<g_object_unref>>;
using Error = std::unique_ptr<GError, Releases<g_error_free>>;

// Cancels a call that takes too long. The libraries' own time-outs hold for one message, and not
// for all of those that they send unasked.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds timeout)
        : m_cancellable(g_cancellable_new())
        , m_watch([this, timeout](const std::stop_token& stop) { watch(stop, timeout); })
    {
    }

    [[nodiscard]] GCancellable* cancellable() const { return m_cancellable.get(); }
    [[nodiscard]] bool passed() const { return g_cancellable_is_cancelled(cancellable()) != FALSE; }

private:
    void watch(const std::stop_token& stop, std::chrono::milliseconds timeout)
    {
        std::unique_lock lock(m_mutex);
        m_waiting.wait_for(lock, stop, timeout, [] { return false; });
        if (!stop.stop_requested())
            g_cancellable_cancel(cancellable());
    }

    Object<GCancellable> m_cancellable;
    std::mutex m_mutex;
    std::condition_variable_any m_waiting;
    std::jthread m_watch; // ends before what it uses does
};

// Where the libraries leave what they have to do later. In the default context it would pile up, as
// nobody need run that one; this one is emptied and goes away with the call.
class CallContext {
public:
    CallContext()
        : m_context(g_main_context_new())
    {
        g_main_context_push_thread_default(m_context);
    }
    CallContext(const CallContext&) = delete;
    CallContext& operator=(const CallContext&) = delete;
    ~CallContext()
    {
        while (g_main_context_iteration(m_context, FALSE) != FALSE) {
        }
        g_main_context_pop_thread_default(m_context);
        g_main_context_unref(m_context);
    }

private:
    GMainContext* m_context;
};

} // namespace vellumor
