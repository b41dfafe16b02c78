#include "telemetry/sending/TelemetryTransport.h"

#include "async/OrEnd.h"
#include "base/Format.h"
#include "base/Json.h"

#include <QUrl>

#include <algorithm>

namespace vellumor {

namespace {

using PendingEvent = TelemetryTransport::PendingEvent;

Json encoded(const PendingEvent& event)
{
    Json properties = Json::object();
    for (const auto& [key, value] : event.properties)
        properties[key] = value;
    properties["source"] = "vellumor";
    properties["$geoip_disable"] = true;
    properties["$process_person_profile"] = false;
    return {{"event", event.name},
            {"distinct_id", event.distinctID},
            {"properties", std::move(properties)},
            {"timestamp", Format::isoFractional(event.timestamp)}};
}

bool isDelivered(const HttpAnswer& answer)
{
    return answer.kind == HttpAnswer::Kind::answered && answer.status >= 200 &&
           answer.status <= 299;
}

} // namespace

// What waits, and what a request under way comes back to.
class TelemetryTransport::Queue {
public:
    explicit Queue(Parts parts)
        : m_parts(std::move(parts))
        , m_url(batchUrl(m_parts.host))
    {
        if (!m_url || (m_parts.key.apiKey && m_parts.key.apiKey->empty()))
            m_parts.key.apiKey.reset();
    }

    [[nodiscard]] const Key& key() const { return m_parts.key; }
    [[nodiscard]] bool isTransmitting() const
    {
        return key().apiKey &&
               (key().environment == TelemetryEnvironment::prod || key().overrideActive);
    }
    [[nodiscard]] std::size_t size() const { return m_buffer.size(); }

    void add(PendingEvent event)
    {
        event.timestamp = m_parts.clock.now();
        m_buffer.push_back(std::move(event));
        if (m_buffer.size() > mostBuffered)
            m_buffer.erase(m_buffer.begin());
    }

    // Sends batches until nothing waits or one fails. Holds nothing while it waits but what it
    // needs to find out whether the queue is still there.
    [[nodiscard]] static Task<> flush(std::weak_ptr<Queue> weak)
    {
        while (true) {
            std::shared_ptr<Queue> queue = weak.lock();
            if (!queue)
                co_return;
            std::optional<HttpPost> batch = queue->takeUp();
            if (!batch)
                co_return;
            HttpPoster& poster = queue->m_parts.poster;
            const std::size_t count = queue->size();
            queue.reset();
            const HttpAnswer answer = co_await poster.post(*std::move(batch));
            queue = weak.lock();
            if (!queue || !queue->settle(answer, count))
                co_return;
        }
    }

private:
    // The whole buffer as one request, which is then under way; nothing when none may go.
    [[nodiscard]] std::optional<HttpPost> takeUp()
    {
        if (!isTransmitting() || !m_parts.isOnline() || m_inFlight || m_buffer.empty())
            return std::nullopt;
        auto body = encodeBatch(m_buffer, *m_parts.key.apiKey);
        if (!body) {
            m_buffer.clear(); // it never will be
            return std::nullopt;
        }
        m_inFlight = true;
        // Without the second header the user's language would go along.
        return HttpPost{*m_url,
                        {{"Content-Type", "application/json"}, {"Accept-Language", "*"}},
                        *std::move(body)};
    }

    // False when the batch has to be sent again.
    [[nodiscard]] bool settle(const HttpAnswer& answer, std::size_t count)
    {
        m_inFlight = false;
        if (!isDelivered(answer))
            return false;
        const auto sent = static_cast<std::ptrdiff_t>(std::min(count, m_buffer.size()));
        m_buffer.erase(m_buffer.begin(), m_buffer.begin() + sent);
        return true;
    }

    Parts m_parts;
    std::optional<std::string> m_url;
    std::vector<PendingEvent> m_buffer; // oldest first
    bool m_inFlight = false;
};

TelemetryTransport::TelemetryTransport(Parts parts)
    : m_queue(std::make_shared<Queue>(std::move(parts)))
{
}

TelemetryTransport::~TelemetryTransport() = default;

std::unique_ptr<TelemetryTransport>
TelemetryTransport::standard(HttpPoster& poster, const Clock& clock, std::function<bool()> isOnline,
                             const Environment& environment, const BuildChoice& build)
{
    const auto wish = value(environment, "VELLUMOR_POSTHOG_HOST");
    const std::string host = wish && batchUrl(*wish) ? *wish : build.host;
    return std::make_unique<TelemetryTransport>(
        Parts{poster, clock, std::move(isOnline), resolveKey(environment, build.apiKey), host});
}

TelemetryTransport::Key TelemetryTransport::resolveKey(const Environment& environment,
                                                       const std::optional<std::string>& bundleKey)
{
    Key key;
    key.overrideActive = value(environment, "VELLUMOR_TELEMETRY_FORCE") == "1";
    key.apiKey = value(environment, "VELLUMOR_POSTHOG_KEY");
    if (!key.apiKey && bundleKey && !bundleKey->empty()) {
        key.apiKey = bundleKey;
        key.environment = TelemetryEnvironment::prod;
    }
    return key;
}

std::optional<std::string> TelemetryTransport::batchUrl(const std::string& host)
{
    const QUrl url(QString::fromStdString(host), QUrl::StrictMode);
    const bool isWeb = url.scheme() == u"https" || url.scheme() == u"http";
    if (!url.isValid() || !isWeb || url.host().isEmpty() || url.hasQuery() || url.hasFragment())
        return std::nullopt;
    std::string base = url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo).toStdString();
    while (base.ends_with('/'))
        base.pop_back();
    return base + "/batch/";
}

std::optional<std::string> TelemetryTransport::encodeBatch(const std::vector<PendingEvent>& events,
                                                           const std::string& apiKey)
{
    Json batch = Json::array();
    for (const PendingEvent& event : events)
        batch.push_back(encoded(event));
    return writeJson({{"api_key", apiKey}, {"batch", std::move(batch)}}, JsonLayout::compact,
                     JsonSlashes::plain);
}

bool TelemetryTransport::hasKey() const
{
    return m_queue->key().apiKey.has_value();
}

bool TelemetryTransport::isTransmitting() const
{
    return m_queue->isTransmitting();
}

TelemetryEnvironment TelemetryTransport::environment() const
{
    return m_queue->key().environment;
}

void TelemetryTransport::enqueue(std::string name, std::string distinctID,
                                 TelemetryProperties properties)
{
    m_queue->add({std::move(name), std::move(distinctID), std::move(properties), {}});
    [[maybe_unused]] const Task<> sending = orEnd(Queue::flush(m_queue));
}

std::size_t TelemetryTransport::bufferedCount() const
{
    return m_queue->size();
}

} // namespace vellumor
