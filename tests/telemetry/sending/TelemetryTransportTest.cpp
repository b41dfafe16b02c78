#include "telemetry/sending/TelemetryTransport.h"

#include "support/FakeClock.h"
#include "telemetry/sending/FakePoster.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace vellumor::telemetryTransportTest {
namespace {

using test::FakeClock;
using test::FakePoster;

using Strings = std::vector<std::string>;

struct TelemetryTransportTest : testing::Test {
    FakeClock clock;
    FakePoster poster;
    bool isOnline = true;
    std::unique_ptr<TelemetryTransport> transport = sending();

    [[nodiscard]] std::unique_ptr<TelemetryTransport> sending()
    {
        return with({"key", TelemetryEnvironment::prod, false});
    }
    [[nodiscard]] std::unique_ptr<TelemetryTransport> with(TelemetryTransport::Key key,
                                                           std::string host = "https://127.0.0.1")
    {
        return std::make_unique<TelemetryTransport>(TelemetryTransport::Parts{
            poster, clock, [this] { return isOnline; }, std::move(key), std::move(host)});
    }

    void enqueue(const std::string& name) { transport->enqueue(name, "inst_a", {{"k", "v"}}); }
    void enqueue(int first, int last)
    {
        for (int i = first; i <= last; ++i)
            enqueue("e" + std::to_string(i));
    }

    // The names of the events of one post.
    [[nodiscard]] Strings names(std::size_t post) const
    {
        Strings names;
        const auto json =
            QJsonDocument::fromJson(QByteArray::fromStdString(poster.posts.at(post).body));
        const QJsonArray batch = json.object().value("batch").toArray();
        for (const auto& event : batch)
            names.push_back(event.toObject().value("event").toString().toStdString());
        return names;
    }
};

TEST_F(TelemetryTransportTest, anEventIsPostedAtOnceAsABatchOfJson)
{
    enqueue("a");
    ASSERT_EQ(poster.posts.size(), 1U);
    EXPECT_EQ(poster.posts[0].url, "https://127.0.0.1/batch/");
    EXPECT_EQ(poster.posts[0].headers,
              (std::vector<std::pair<std::string, std::string>>{
                  {"Content-Type", "application/json"}, {"Accept-Language", "*"}}));
    EXPECT_EQ(names(0), Strings{"a"});
    EXPECT_EQ(transport->bufferedCount(), 1U);
    poster.answer(200);
    EXPECT_EQ(transport->bufferedCount(), 0U);
    EXPECT_EQ(poster.posts.size(), 1U);
}

TEST_F(TelemetryTransportTest, anyAnswerFrom200To299IsADelivery)
{
    const std::pair<int, bool> rows[] = {{199, false}, {200, true},  {201, true},  {204, true},
                                         {299, true},  {300, false}, {302, false}, {400, false},
                                         {401, false}, {429, false}, {500, false}, {-1, false}};
    for (const auto& [status, isDelivered] : rows) {
        transport = sending();
        enqueue("a");
        poster.answer(status);
        EXPECT_EQ(transport->bufferedCount(), isDelivered ? 0U : 1U) << status;
    }
}

TEST_F(TelemetryTransportTest, anAnswerThatIsNotWholeIsAFailureWhateverItsStatus)
{
    for (const auto kind : {HttpAnswer::Kind::transport, HttpAnswer::Kind::tooLarge}) {
        transport = sending();
        enqueue("a");
        poster.answer({kind, 200, "", {}, "broken"});
        EXPECT_EQ(transport->bufferedCount(), 1U);
    }
}

TEST_F(TelemetryTransportTest, whileARequestRunsNewEventsWaitAndOnlyThoseSentAreDeletedAfterwards)
{
    enqueue("a");
    enqueue("b");
    enqueue("c");
    EXPECT_EQ(poster.posts.size(), 1U);
    EXPECT_EQ(transport->bufferedCount(), 3U);
    poster.answer(200);
    EXPECT_EQ(transport->bufferedCount(), 2U);
    ASSERT_EQ(poster.posts.size(), 2U); // by itself, since some remain
    EXPECT_EQ(names(1), (Strings{"b", "c"}));
    EXPECT_EQ(poster.waiting(), 1U);
    poster.answer(200);
    EXPECT_EQ(transport->bufferedCount(), 0U);
    EXPECT_EQ(poster.posts.size(), 2U);
}

TEST_F(TelemetryTransportTest, afterAFailureAllStayAndTheNextEventTriesAgain)
{
    enqueue("a");
    enqueue("b");
    poster.answer(500);
    EXPECT_EQ(transport->bufferedCount(), 2U);
    EXPECT_EQ(poster.posts.size(), 1U); // not by itself
    enqueue("c");
    ASSERT_EQ(poster.posts.size(), 2U);
    EXPECT_EQ(names(1), (Strings{"a", "b", "c"}));
    poster.answer(200);
    EXPECT_EQ(transport->bufferedCount(), 0U);
}

TEST_F(TelemetryTransportTest, theHundredAndFirstEventPushesOutTheOldest)
{
    isOnline = false;
    enqueue(1, 100);
    EXPECT_EQ(transport->bufferedCount(), 100U);
    enqueue("e101");
    EXPECT_EQ(transport->bufferedCount(), 100U);
    isOnline = true;
    enqueue("e102");
    const Strings sent = names(0);
    ASSERT_EQ(sent.size(), 100U);
    EXPECT_EQ(sent.front(), "e3");
    EXPECT_EQ(sent.back(), "e102");
}

TEST_F(TelemetryTransportTest, offlineEventsGatherAndGoOutWithTheNextOneAfterwards)
{
    isOnline = false;
    enqueue(1, 3);
    EXPECT_TRUE(poster.posts.empty());
    isOnline = true;
    EXPECT_TRUE(poster.posts.empty()); // the network's return alone starts nothing
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    enqueue("e4");
    EXPECT_EQ(names(0), (Strings{"e1", "e2", "e3", "e4"}));
}

TEST_F(TelemetryTransportTest, whatRemainsAfterADeliveryWaitsWhenTheNetworkHasGone)
{
    enqueue("a");
    enqueue("b");
    isOnline = false;
    poster.answer(200);
    EXPECT_EQ(transport->bufferedCount(), 1U);
    EXPECT_EQ(poster.posts.size(), 1U);
}

// As many as were sent leave from the front, though the oldest have been pushed out meanwhile.
TEST_F(TelemetryTransportTest, anOverflowWhileARequestRunsCostsAsManyAsWereSent)
{
    isOnline = false;
    enqueue(1, 59);
    isOnline = true;
    enqueue("e60");
    ASSERT_EQ(names(0).size(), 60U);
    enqueue(61, 130); // e1 to e30 are pushed out
    EXPECT_EQ(transport->bufferedCount(), 100U);
    poster.answer(200);
    EXPECT_EQ(transport->bufferedCount(), 40U);
    EXPECT_EQ(names(1).front(), "e91");
    EXPECT_EQ(names(1).back(), "e130");
}

TEST_F(TelemetryTransportTest, everyEventKeepsTheMomentAtWhichItWasTold)
{
    isOnline = false;
    clock.jumpTo(test::instant("2026-03-01T09:30:00.125Z"));
    enqueue("a");
    clock.jumpTo(test::instant("2026-03-01T10:00:00Z"));
    isOnline = true;
    enqueue("b");
    const auto json = QJsonDocument::fromJson(QByteArray::fromStdString(poster.posts[0].body));
    const QJsonArray batch = json.object().value("batch").toArray();
    EXPECT_EQ(batch.at(0).toObject().value("timestamp"), "2026-03-01T09:30:00.125Z");
    EXPECT_EQ(batch.at(1).toObject().value("timestamp"), "2026-03-01T10:00:00.000Z");
}

TEST_F(TelemetryTransportTest, aBatchThatCannotBeEncodedIsForgottenAsAWhole)
{
    isOnline = false;
    enqueue("a");
    isOnline = true;
    transport->enqueue("b", "inst_a", {{"k", "\xff"}});
    EXPECT_TRUE(poster.posts.empty());
    EXPECT_EQ(transport->bufferedCount(), 0U);
    enqueue("c");
    EXPECT_EQ(names(0), Strings{"c"});
}

TEST_F(TelemetryTransportTest, nothingIsPostedWithoutAKeyOrForDevelopmentUnlessForced)
{
    using Key = TelemetryTransport::Key;
    using Environment = TelemetryEnvironment;
    struct Row {
        Key key;
        bool hasKey;
        bool isTransmitting;
    };
    const Row rows[] = {{{{}, Environment::prod, false}, false, false},
                        {{{}, Environment::prod, true}, false, false},
                        {{{}, Environment::dev, true}, false, false},
                        {{"", Environment::prod, true}, false, false},
                        {{"key", Environment::dev, false}, true, false},
                        {{"key", Environment::dev, true}, true, true},
                        {{"key", Environment::prod, false}, true, true},
                        {{"key", Environment::prod, true}, true, true}};
    for (const auto& [key, hasKey, isTransmitting] : rows) {
        poster.posts.clear();
        transport = with(key);
        EXPECT_EQ(transport->hasKey(), hasKey);
        EXPECT_EQ(transport->isTransmitting(), isTransmitting);
        EXPECT_EQ(transport->environment(), key.environment);
        enqueue(1, 101);
        EXPECT_EQ(poster.posts.size(), isTransmitting ? 1U : 0U);
        EXPECT_EQ(transport->bufferedCount(), 100U);
    }
}

TEST_F(TelemetryTransportTest, aKeyWithoutAHostIsNoKey)
{
    for (const char* host : {"", "nonsense", "file:///tmp", "https://", "/batch"}) {
        transport = with({"key", TelemetryEnvironment::prod, true}, host);
        EXPECT_FALSE(transport->hasKey()) << host;
        EXPECT_FALSE(transport->isTransmitting()) << host;
        enqueue("a");
        EXPECT_TRUE(poster.posts.empty());
        EXPECT_EQ(transport->bufferedCount(), 1U);
    }
}

TEST_F(TelemetryTransportTest, aRequestUnderWayKeepsNothingOfItAlive)
{
    auto held = std::make_shared<bool>(true);
    const std::weak_ptr<bool> watched = held;
    transport = std::make_unique<TelemetryTransport>(
        TelemetryTransport::Parts{poster,
                                  clock,
                                  [held] { return *held; },
                                  {"key", TelemetryEnvironment::prod, false},
                                  "https://127.0.0.1"});
    held.reset();
    enqueue("a");
    ASSERT_EQ(poster.waiting(), 1U);
    EXPECT_FALSE(watched.expired());
    transport.reset();
    EXPECT_TRUE(watched.expired()); // while the request is still under way
}

TEST_F(TelemetryTransportTest, whatWaitsGoesWithIt)
{
    enqueue("a");
    enqueue("b");
    transport.reset();
    poster.answer(200);
    EXPECT_EQ(poster.posts.size(), 1U); // b has gone with it
}

TEST_F(TelemetryTransportTest, nothingIsTimed)
{
    enqueue("a");
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    poster.answer(500);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    clock.advance(std::chrono::hours(24));
    EXPECT_EQ(poster.posts.size(), 1U);
}

} // namespace
} // namespace vellumor::telemetryTransportTest
