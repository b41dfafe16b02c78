// The transport on a real network: what stands on the wire is read by other programs' readers.

#include "telemetry/sending/TelemetryTransport.h"

#include "platform/linux/QtHttpTransport.h"
#include "support/LoopbackServer.h"
#include "telemetry/TelemetryTesting.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

namespace vellumor::telemetryTransportWireTest {
namespace {

using namespace std::chrono_literals;
using test::LoopbackServer;
using test::Reaction;
using test::SeenRequest;

using Strings = std::vector<std::string>;

bool waitUntil(const std::function<bool()>& condition)
{
    const QDeadlineTimer limit(20s);
    while (!condition() && !limit.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    return condition();
}

Reaction status(int code)
{
    test::Answer answer;
    answer.status = code;
    answer.body = "{\"status\":1}";
    return answer;
}

QJsonObject bodyOf(const SeenRequest& request)
{
    QJsonParseError error;
    const auto json = QJsonDocument::fromJson(QByteArray::fromStdString(request.body), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << request.body;
    return json.object();
}

Strings namesIn(const SeenRequest& request)
{
    Strings names;
    const QJsonArray batch = bodyOf(request).value("batch").toArray();
    for (const auto& event : batch)
        names.push_back(event.toObject().value("event").toString().toStdString());
    return names;
}

// The real network, and how many posts have ended.
struct WatchedNetwork final : HttpPoster {
    QtHttpTransport network;
    int ended = 0;

    explicit WatchedNetwork(QtHttpTransport::Options options)
        : network(std::move(options))
    {
    }
    Task<HttpAnswer> post(HttpPost request) override
    {
        HttpAnswer answer = co_await network.post(std::move(request));
        ++ended;
        co_return answer;
    }
};

struct TelemetryTransportWireTest : testing::Test, test::TelemetryWorld {
    Reaction reaction = status(200);
    LoopbackServer server{[this](const SeenRequest&) { return reaction; }};
    WatchedNetwork network{options()};
    bool isOnline = true;
    std::unique_ptr<TelemetryTransport> transport = start();

    static QtHttpTransport::Options options()
    {
        QtHttpTransport::Options options;
        options.idleLimit = 400ms;
        return options;
    }
    [[nodiscard]] std::unique_ptr<TelemetryTransport>
    start(const Environment& environment = {},
          const TelemetryTransport::BuildChoice& build = {"phc_key", ""})
    {
        Environment local = environment;
        local["VELLUMOR_POSTHOG_HOST"] = server.url();
        return TelemetryTransport::standard(
            network, clock, [this] { return isOnline; }, local, build);
    }
    // The facade over the transport as it is now.
    [[nodiscard]] Telemetry facade()
    {
        const auto part = parts();
        return Telemetry({part.config, *transport, part.version, part.os, part.now, part.charge});
    }

    void enqueue(const std::string& name) { transport->enqueue(name, "inst_a", {{"k", "v"}}); }
    [[nodiscard]] bool waitForRequests(std::size_t count)
    {
        return waitUntil([&] { return server.requests().size() >= count; });
    }
    [[nodiscard]] bool waitForBuffered(std::size_t count)
    {
        return waitUntil([&] { return transport->bufferedCount() == count; });
    }
    // True when nothing but what this asks for itself has come to the server.
    [[nodiscard]] bool isServerUntouched()
    {
        const auto probe = start();
        probe->enqueue("probe", "inst_a", {});
        return waitUntil([&] { return probe->bufferedCount() == 0; }) &&
               server.requests().size() == 1 && namesIn(server.requests()[0]) == Strings{"probe"};
    }
};

TEST_F(TelemetryTransportWireTest, anEventOfTheFacadeArrivesWholeAndWithNothingElse)
{
    facade().capture(TelemetryEvent::diagnostic("usage_401", "endpoint"));
    ASSERT_TRUE(waitForBuffered(0));
    ASSERT_EQ(server.requests().size(), 1U);
    const SeenRequest& request = server.requests()[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/batch/");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    const QJsonObject expected{
        {"api_key", "phc_key"},
        {"batch",
         QJsonArray{QJsonObject{{"event", "diagnostic"},
                                {"distinct_id", QString::fromStdString(store.current().installID)},
                                {"timestamp", "2026-03-01T09:30:00.000Z"},
                                {"properties", QJsonObject{{"category", "usage_401"},
                                                           {"layer", "endpoint"},
                                                           {"source", "vellumor"},
                                                           {"version", "1.0.0"},
                                                           {"os", "debian 12"},
                                                           {"environment", "prod"},
                                                           {"$geoip_disable", true},
                                                           {"$process_person_profile", false}}}}}}};
    EXPECT_EQ(bodyOf(request), expected) << request.body;
}

TEST_F(TelemetryTransportWireTest, theHeadersTellNothingOfTheMachineOrItsUser)
{
    enqueue("a");
    ASSERT_TRUE(waitForBuffered(0));
    const SeenRequest& request = server.requests()[0];
    Strings names;
    for (const auto& [name, value] : request.headers)
        names.push_back(name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Strings{"Accept-Encoding", "Accept-Language", "Connection", "Content-Length",
                              "Content-Type", "Host", "User-Agent"}));
    EXPECT_EQ(request.header("Accept-Language"), "*");
    EXPECT_EQ(request.header("User-Agent"), "Mozilla/5.0"); // as with every request of Qt's
}

TEST_F(TelemetryTransportWireTest, pythonReadsWhatWasMeant)
{
    transport->enqueue("a\"b\\c\n", "inst_\xc3\xa4",
                       {{"quote\"", "tab\tslash/</script>"},
                        {"emoji", "\xf0\x9f\x99\x82"},
                        {"empty", ""},
                        {"control", "\x01\x7f"}});
    ASSERT_TRUE(waitForBuffered(0));
    QProcess python;
    python.start("python3", {"-c", "import json,sys\n"
                                   "body = json.load(sys.stdin)\n"
                                   "assert list(body) == ['api_key', 'batch'], list(body)\n"
                                   "event, = body['batch']\n"
                                   "for key in sorted(event): print(key, ascii(event[key]))\n"});
    python.write(QByteArray::fromStdString(server.requests()[0].body));
    python.closeWriteChannel();
    ASSERT_TRUE(python.waitForFinished(20'000));
    EXPECT_EQ(python.readAllStandardError().toStdString(), "");
    EXPECT_EQ(python.readAllStandardOutput().toStdString(),
              R"(distinct_id 'inst_\xe4'
event 'a"b\\c\n'
properties {'$geoip_disable': True, '$process_person_profile': False, 'control': '\x01\x7f', )"
              R"('emoji': '\U0001f642', 'empty': '', 'quote"': 'tab\tslash/</script>', )"
              R"('source': 'vellumor'}
timestamp '2026-03-01T09:30:00.000Z'
)");
}

TEST_F(TelemetryTransportWireTest, whileARequestRunsNewEventsWaitForTheNextBatch)
{
    test::Drip slow;
    slow.answer.body = "slow";
    slow.every = 50ms;
    reaction = slow;
    enqueue("a");
    ASSERT_TRUE(waitForRequests(1));
    enqueue("b");
    enqueue("c");
    reaction = status(200);
    ASSERT_TRUE(waitForBuffered(0));
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_EQ(namesIn(server.requests()[0]), Strings{"a"});
    EXPECT_EQ(namesIn(server.requests()[1]), (Strings{"b", "c"}));
}

TEST_F(TelemetryTransportWireTest, aHundredEventsOfAnOfflineSpellArriveInOneBatchWithoutTheOldest)
{
    isOnline = false;
    for (int i = 1; i <= 101; ++i)
        enqueue("e" + std::to_string(i));
    isOnline = true;
    enqueue("e102");
    ASSERT_TRUE(waitForBuffered(0));
    ASSERT_EQ(server.requests().size(), 1U);
    const Strings names = namesIn(server.requests()[0]);
    ASSERT_EQ(names.size(), 100U);
    EXPECT_EQ(names.front(), "e3");
    EXPECT_EQ(names.back(), "e102");
}

TEST_F(TelemetryTransportWireTest,
       whatIsRefusedRedirectedOrBrokenOffIsAskedOnceAndKeptForTheNextEvent)
{
    test::Answer away;
    away.status = 307;
    away.headers = {{"Location", server.url("/elsewhere")}};
    const std::pair<const char*, Reaction> rows[] = {{"500", status(500)},
                                                     {"429", status(429)},
                                                     {"redirect", away},
                                                     {"reset", test::Reset()},
                                                     {"closed", test::RawBytes()},
                                                     {"silence", test::Silence()},
                                                     {"no HTTP", test::RawBytes{"x\r\n"}},
                                                     {"huge", test::Flood()}};
    for (const auto& [name, refusal] : rows) {
        SCOPED_TRACE(name);
        transport = start();
        reaction = refusal;
        const std::size_t before = server.requests().size();
        const int endedBefore = network.ended;
        enqueue("a");
        ASSERT_TRUE(waitUntil([&] { return network.ended > endedBefore; }));
        EXPECT_EQ(server.requests().size(), before + 1);
        EXPECT_EQ(transport->bufferedCount(), 1U);
        reaction = status(200);
        enqueue("b");
        ASSERT_TRUE(waitForBuffered(0));
        EXPECT_EQ(server.requests().size(), before + 2);
        EXPECT_EQ(namesIn(server.requests().back()), (Strings{"a", "b"}));
        EXPECT_EQ(server.requests().back().path, "/batch/");
    }
}

TEST_F(TelemetryTransportWireTest, aRestartForgetsWhatWaitedAndBeginsClean)
{
    isOnline = false;
    facade().capture(TelemetryEvent::onboardingCompleted());
    EXPECT_EQ(transport->bufferedCount(), 1U);
    const auto filesBefore = test::namesIn(folder.path());
    transport = start();
    isOnline = true;
    EXPECT_EQ(transport->bufferedCount(), 0U);
    facade().capture(TelemetryEvent::switchToLocalOnly());
    ASSERT_TRUE(waitForBuffered(0));
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(namesIn(server.requests()[0]), Strings{"switch_to_local_only"});
    EXPECT_EQ(onDisk().caps.total, 2); // the caps go on
    EXPECT_EQ(filesBefore, Strings{"telemetry.json"});
    EXPECT_EQ(test::namesIn(folder.path()), Strings{"telemetry.json"});
}

TEST_F(TelemetryTransportWireTest, nothingIsSentWithoutAKey)
{
    transport = start({}, {});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(facade().capture(TelemetryEvent::onboardingCompleted()),
                  Telemetry::Outcome::sent);
    EXPECT_EQ(transport->bufferedCount(), 3U);
    EXPECT_TRUE(isServerUntouched());
}

TEST_F(TelemetryTransportWireTest, nothingIsSentOrCountedForDevelopmentWithoutTheForceSwitch)
{
    for (const char* force : {"", "true", "0"}) {
        transport =
            start({{"VELLUMOR_POSTHOG_KEY", "phc_dev"}, {"VELLUMOR_TELEMETRY_FORCE", force}});
        EXPECT_EQ(facade().capture(TelemetryEvent::onboardingCompleted()),
                  Telemetry::Outcome::disabled);
        enqueue("a"); // not even past the facade
    }
    EXPECT_EQ(onDisk().caps, TelemetryCaps());
    EXPECT_TRUE(isServerUntouched());
}

TEST_F(TelemetryTransportWireTest, theForceSwitchSendsForDevelopmentWithTheEnvironmentsKey)
{
    transport = start({{"VELLUMOR_POSTHOG_KEY", "phc_dev"}, {"VELLUMOR_TELEMETRY_FORCE", "1"}});
    facade().capture(TelemetryEvent::onboardingCompleted());
    ASSERT_TRUE(waitForBuffered(0));
    const QJsonObject body = bodyOf(server.requests().at(0));
    EXPECT_EQ(body.value("api_key"), "phc_dev");
    const QJsonObject event = body.value("batch").toArray().at(0).toObject();
    EXPECT_EQ(event.value("properties").toObject().value("environment"), "dev");
}

TEST_F(TelemetryTransportWireTest, nothingIsSentWithTheSwitchesOff)
{
    store.update([](TelemetryConfig& config) {
        config.diagnosticsEnabled = config.productAnalyticsEnabled = false;
    });
    Telemetry telling = facade();
    LiveTelemetryRecorder noting(store, telling);
    noting.noteFailure("usage_401", "endpoint");
    noting.noteAccounts(2);
    noting.capture(TelemetryEvent::crashDetected({{"area", "ui"}}));
    noting.capture(TelemetryEvent::onboardingCompleted());
    EXPECT_FALSE(noting.beginSpineIfDue(clock.now()));
    EXPECT_EQ(transport->bufferedCount(), 0U);
    EXPECT_TRUE(isServerUntouched());
}

TEST_F(TelemetryTransportWireTest, aRequestOutlivesTheTransportAndTheNetworkOutlivesNobody)
{
    reaction = test::Silence();
    enqueue("a");
    ASSERT_TRUE(waitForRequests(1));
    transport.reset();
    const auto other = std::make_unique<QtHttpTransport>();
    TelemetryTransport second({*other,
                               clock,
                               [] { return true; },
                               {"phc_key", TelemetryEnvironment::prod, false},
                               server.url()});
    second.enqueue("b", "inst_a", {});
    ASSERT_TRUE(waitForRequests(2));
    EXPECT_EQ(second.bufferedCount(), 1U);
}

} // namespace
} // namespace vellumor::telemetryTransportWireTest
