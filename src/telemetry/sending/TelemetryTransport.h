#pragma once

#include "base/Clock.h"
#include "base/Environment.h"
#include "platform/HttpPoster.h"
#include "telemetry/TelemetryOutlet.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// Sends events in batches. They wait in memory alone: a full buffer costs the oldest, the end of
// the program all. Nothing runs while nothing is sent: a batch that failed is tried again with the
// next event. Main thread only; a request may outlive this object, whose buffer it then leaves
// alone.
class TelemetryTransport final : public TelemetryOutlet {
public:
    static constexpr std::size_t mostBuffered = 100;

    struct PendingEvent {
        std::string name;
        std::string distinctID; // of the installation
        TelemetryProperties properties;
        Instant timestamp{}; // when it was told
    };

    // Who may send.
    struct Key {
        std::optional<std::string> apiKey;
        TelemetryEnvironment environment = TelemetryEnvironment::dev;
        bool overrideActive = false; // send from a build for development too
        bool operator==(const Key&) const = default;
    };

    // What the person who builds the program chooses; empty for none.
    struct BuildChoice {
        std::string apiKey;
        std::string host;
    };

    // The poster and the clock outlive this.
    struct Parts {
        HttpPoster& poster;
        const Clock& clock;
        std::function<bool()> isOnline;
        Key key;
        std::string host; // "https://host"; without a usable one there is no key either
    };

    explicit TelemetryTransport(Parts parts);
    TelemetryTransport(const TelemetryTransport&) = delete;
    TelemetryTransport& operator=(const TelemetryTransport&) = delete;
    ~TelemetryTransport() override;

    // As the environment and the build say.
    [[nodiscard]] static std::unique_ptr<TelemetryTransport>
    standard(HttpPoster& poster, const Clock& clock, std::function<bool()> isOnline,
             const Environment& environment, const BuildChoice& build);

    // VELLUMOR_POSTHOG_KEY makes a build for development of any build. The environment is the
    // process's own; `bundleKey` that of the build.
    [[nodiscard]] static Key resolveKey(const Environment& environment,
                                        const std::optional<std::string>& bundleKey);

    // Where a batch goes at this host; nothing when it is no address of http or https.
    [[nodiscard]] static std::optional<std::string> batchUrl(const std::string& host);

    // The body of a request; nothing when a text in it is not UTF-8.
    [[nodiscard]] static std::optional<std::string>
    encodeBatch(const std::vector<PendingEvent>& events, const std::string& apiKey);

    [[nodiscard]] bool hasKey() const override;
    [[nodiscard]] bool isTransmitting() const override;
    [[nodiscard]] TelemetryEnvironment environment() const override;
    void enqueue(std::string name, std::string distinctID, TelemetryProperties properties) override;

    // Events that wait, those under way included.
    [[nodiscard]] std::size_t bufferedCount() const;

private:
    class Queue;

    std::shared_ptr<Queue> m_queue;
};

} // namespace vellumor
