#pragma once

#include "support/FakeClock.h"
#include "support/TempFolder.h"
#include "telemetry/LiveTelemetryRecorder.h"

#include <string>
#include <vector>

namespace vellumor::test {

// Notes what it is given.
struct FakeOutlet final : TelemetryOutlet {
    struct Given {
        std::string name;
        std::string distinctID;
        TelemetryProperties properties;
    };

    bool isKeyed = true;
    bool isSending = true;
    TelemetryEnvironment kind = TelemetryEnvironment::prod;
    std::vector<Given> given;

    [[nodiscard]] bool hasKey() const override { return isKeyed; }
    [[nodiscard]] bool isTransmitting() const override { return isSending; }
    [[nodiscard]] TelemetryEnvironment environment() const override { return kind; }
    void enqueue(std::string name, std::string distinctID, TelemetryProperties properties) override
    {
        given.push_back({std::move(name), std::move(distinctID), std::move(properties)});
    }

    [[nodiscard]] std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const Given& event : given)
            names.push_back(event.name);
        return names;
    }
};

// SHA-256 of "secret_word", which stands for a word that must not leave.
inline constexpr std::string_view secretWord[] = {
    "9d84e32090d61daf87f44d50e6c680c0f9039a4f560100c4a791d1bd1fe59e1a"};

// The store, the facade and the recorder, on a clock that moves when it is told to.
struct TelemetryWorld {
    TempFolder folder;
    FileStore files;
    FakeClock clock{instant("2026-03-01T09:30:00Z")};
    std::string path = folder.file("telemetry.json");
    bool isWriting = true; // off where thousands of changes would each wait for the disk
    TelemetryStore store{files, clock, path, [this](const std::function<void()>& job) {
                             if (isWriting)
                                 job();
                         }};
    FakeOutlet outlet;
    Telemetry telemetry{parts()};
    LiveTelemetryRecorder recorder{store, telemetry};

    [[nodiscard]] Telemetry::Parts parts()
    {
        return {[this] { return store.current(); },
                outlet,
                "1.0.0",
                "debian 12",
                [this] { return clock.now(); },
                [this](const Telemetry::ChangeCaps& change) {
                    store.update([&](TelemetryConfig& config) { change(config.caps); });
                }};
    }
    [[nodiscard]] TelemetryConfig onDisk() const { return TelemetryStore::load(path, clock.now()); }
    [[nodiscard]] const TelemetryCaps& caps() const { return store.current().caps; }
};

} // namespace vellumor::test
