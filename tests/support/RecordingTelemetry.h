#pragma once

#include "async/Task.h"
#include "telemetry/TelemetryRecorder.h"

#include <string>
#include <vector>

namespace vellumor::test {

// Notes what it is told: events by their names, counters in words.
class RecordingTelemetry final : public TelemetryRecorder {
public:
    explicit RecordingTelemetry(std::vector<std::string>& steps)
        : m_steps(steps)
    {
    }

    void capture(const TelemetryEvent& event) override { m_steps.emplace_back(event.name()); }
    void noteServed(std::string_view layer) override { note("served " + std::string(layer)); }
    void noteFailure(const std::string& category, const std::string& layer) override
    {
        note("failed " + category + " in " + layer);
    }
    void noteReviveUnavailable() override { note("revive unavailable"); }
    void noteNotification() override { note("notification"); }
    void notePopoverOpened() override { note("popover opened"); }
    void noteAccounts(std::size_t count) override { note("accounts " + std::to_string(count)); }

private:
    void note(std::string step) { m_steps.push_back(std::move(step)); }

    std::vector<std::string>& m_steps;
};

template <typename T>
Task<T> ready(T value)
{
    co_return value;
}

} // namespace vellumor::test
