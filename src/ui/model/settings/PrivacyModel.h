#pragma once

#include "app/state/ChangeNotice.h"
#include "base/PlatformWords.h"
#include "telemetry/TelemetryRecorder.h"
#include "telemetry/TelemetryStore.h"

#include <functional>
#include <string>

namespace vellumor {

// What the user allows to be told about this installation, and who it is. Main thread only.
class PrivacyModel {
public:
    // All outlive it.
    PrivacyModel(TelemetryStore& store, TelemetryRecorder& telemetry, Clock& clock)
        : m_store(store)
        , m_telemetry(telemetry)
        , m_notice(clock)
    {
    }

    // Calls `observer` after changes, once a turn of the event loop.
    void observe(std::function<void()> observer) { m_notice.observe(std::move(observer)); }

    [[nodiscard]] bool diagnosticsEnabled() const { return m_store.current().diagnosticsEnabled; }
    [[nodiscard]] bool productAnalyticsEnabled() const
    {
        return m_store.current().productAnalyticsEnabled;
    }
    [[nodiscard]] const std::string& installID() const { return m_store.current().installID; }

    void setDiagnosticsEnabled(bool on);
    void setProductAnalyticsEnabled(bool on);
    // Makes this installation look brand new.
    void resetAnalyticsID();
    // The user has turned on reading from the local cache alone.
    void noteLocalOnly();
    // The user has been through the first-run flow.
    void noteOnboardingCompleted();
    // The user has followed the note on the sibling application.
    void noteCrossPromoClicked();

    static constexpr const char* diagnosticsTitle = "Send anonymous diagnostics";
    static constexpr const char* diagnosticsHelp =
        "Diagnostics include info about errors and crashes if they occur.";
    static constexpr const char* analyticsTitle = "Send anonymous product analytics";
    static constexpr const char* analyticsHelp =
        "Analytics include coarse info about how the application was used.";
    static constexpr const char* idHelp =
        "This random ID is the only identifier we send. Resetting it makes this install look brand "
        "new.";

private:
    TelemetryStore& m_store;
    TelemetryRecorder& m_telemetry;
    ChangeNotice m_notice;
};

} // namespace vellumor
