#pragma once

#include "base/Clock.h"
#include "base/Format.h"

#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace vellumor::test {

// A moment from its text; the text is the test's own, so a bad one throws.
inline Instant instant(std::string_view text)
{
    return Format::parseISO8601(text).value();
}

// Time that moves only when it is told to. Alarms that fall due are called in the order of their
// moments.
class FakeClock final : public Clock {
public:
    explicit FakeClock(Instant at = instant("2026-03-29T00:59:59Z"))
        : m_now(at)
    {
    }

    [[nodiscard]] Instant now() const override { return m_now; }
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                               std::function<void()> then) override
    {
        const Key key{m_elapsed + std::max(delay, std::chrono::milliseconds(0)), m_count++};
        m_pending->emplace(key, std::move(then));
        return std::make_unique<FakeAlarm>(m_pending, key);
    }

    void advance(std::chrono::milliseconds by)
    {
        const auto end = m_elapsed + by;
        const auto start = m_now;
        const auto began = m_elapsed;
        while (!m_pending->empty() && m_pending->begin()->first.first <= end) {
            auto due = m_pending->extract(m_pending->begin());
            m_elapsed = due.key().first;
            m_now = start + (m_elapsed - began);
            due.mapped()();
        }
        m_elapsed = end;
        m_now = start + by;
    }
    // The wall clock alone: a step, as after a correction.
    void jumpTo(Instant at) { m_now = at; }
    [[nodiscard]] std::size_t pendingAlarms() const { return m_pending->size(); }
    // How far the next alarm lies ahead; nothing without one.
    [[nodiscard]] std::optional<std::chrono::milliseconds> untilNextAlarm() const
    {
        if (m_pending->empty())
            return std::nullopt;
        return m_pending->begin()->first.first - m_elapsed;
    }

private:
    using Key = std::pair<std::chrono::milliseconds, unsigned>; // when, and which of those first
    using Pending = std::map<Key, std::function<void()>>;

    class FakeAlarm final : public Alarm {
    public:
        FakeAlarm(std::shared_ptr<Pending> pending, Key key)
            : m_pending(std::move(pending))
            , m_key(key)
        {
        }
        FakeAlarm(const FakeAlarm&) = delete;
        FakeAlarm& operator=(const FakeAlarm&) = delete;
        ~FakeAlarm() override { m_pending->erase(m_key); }

    private:
        std::shared_ptr<Pending> m_pending;
        Key m_key;
    };

    Instant m_now;
    std::chrono::milliseconds m_elapsed{};
    unsigned m_count = 0;
    std::shared_ptr<Pending> m_pending = std::make_shared<Pending>();
};

} // namespace vellumor::test
