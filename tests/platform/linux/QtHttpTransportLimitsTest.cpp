#include "platform/linux/TransportTesting.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vellumor::test {
namespace {

using namespace std::chrono_literals;
using Kind = HttpAnswer::Kind;

constexpr std::uint64_t mebibyte = 1024 * 1024;

struct Timed {
    HttpAnswer answer;
    std::chrono::steady_clock::duration took;
};

Timed askTimed(const LoopbackServer& server, std::chrono::milliseconds idleLimit,
               std::chrono::milliseconds totalLimit)
{
    QtHttpTransport::Options options;
    options.idleLimit = idleLimit;
    options.totalLimit = totalLimit;
    QtHttpTransport transport(options);
    const auto start = std::chrono::steady_clock::now();
    HttpAnswer answer = ask(transport, server.url());
    return {std::move(answer), std::chrono::steady_clock::now() - start};
}

Drip dripping(std::string body, std::chrono::milliseconds every)
{
    Drip drip;
    drip.answer.body = std::move(body);
    drip.every = every;
    return drip;
}

// `size` zero bytes as the server sends them packed.
Answer packed(std::uint64_t size)
{
    const QByteArray bytes = qCompress(QByteArray(static_cast<qsizetype>(size), '\0')).mid(4);
    Answer answer = bodied(bytes.toStdString());
    answer.headers = {{"Content-Encoding", "deflate"}};
    return answer;
}

TEST(QtHttpTransportLimits, areFifteenSecondsWithoutAByteAndTwoMinutesInAll)
{
    const QtHttpTransport::Options options;
    EXPECT_EQ(options.idleLimit, 15s);
    EXPECT_EQ(options.totalLimit, 120s);
}

TEST(QtHttpTransportLimits, anAnswerThatStallsEndsByTheIdleLimit)
{
    const std::pair<const char*, Reaction> rows[] = {
        {"after the head", StallAfterHead{bodied("never sent")}},
        {"before the head", Silence()},
    };
    for (const auto& [when, reaction] : rows) {
        SCOPED_TRACE(when);
        const LoopbackServer server(always(reaction));
        const auto [answer, took] = askTimed(server, 300ms, 20s);
        EXPECT_EQ(answer.kind, Kind::transport);
        EXPECT_EQ(answer.problem, "no data for 0.3 seconds");
        EXPECT_GE(took, 280ms);
        EXPECT_LT(took, 10s);
        EXPECT_EQ(server.requests().size(), 1U);
    }
}

TEST(QtHttpTransportLimits, everyByteThatMovesStartsTheIdleLimitAnew)
{
    const LoopbackServer server(always(dripping("a slow answer", 60ms)));
    const auto [answer, took] = askTimed(server, 400ms, 20s);
    EXPECT_EQ(answer.kind, Kind::answered) << answer.problem;
    EXPECT_EQ(answer.body, "a slow answer");
    EXPECT_GT(took, 600ms);
}

TEST(QtHttpTransportLimits, anAnswerThatDripsWithoutAStallEndsByTheTotalLimit)
{
    const LoopbackServer server(always(dripping(std::string(1000, 'x'), 30ms)));
    const auto [answer, took] = askTimed(server, 5s, 500ms);
    EXPECT_EQ(answer.kind, Kind::transport);
    EXPECT_EQ(answer.problem, "no whole answer within 0.5 seconds");
    EXPECT_EQ(answer.body, "");
    EXPECT_GE(took, 470ms);
    EXPECT_LT(took, 4s);
}

TEST(QtHttpTransportLimits, theTotalLimitIsOneForAllRedirects)
{
    Drip slowRedirect = dripping("slow", 50ms);
    slowRedirect.answer.status = 302;
    slowRedirect.answer.headers = {{"Location", "/on"}};
    const LoopbackServer server(always(slowRedirect));
    const auto [answer, took] = askTimed(server, 5s, 700ms);
    EXPECT_EQ(answer.problem, "no whole answer within 0.7 seconds");
    EXPECT_GE(server.requests().size(), 2U);
    EXPECT_LE(server.requests().size(), 4U);
    EXPECT_LT(took, 3s);
}

TEST(QtHttpTransportLimits, aBodyMayHaveFourMebibytesAndNotAByteMore)
{
    Flood fitting;
    fitting.size = 4 * mebibyte;
    const LoopbackServer fits(always(fitting));
    QtHttpTransport transport;
    const HttpAnswer whole = ask(transport, fits.url());
    EXPECT_EQ(whole.kind, Kind::answered) << whole.problem;
    EXPECT_EQ(whole.body.size(), 4 * mebibyte);

    Flood larger;
    larger.size = 4 * mebibyte + 1;
    const LoopbackServer exceeds(always(larger));
    const HttpAnswer refused = ask(transport, exceeds.url());
    EXPECT_EQ(refused.kind, Kind::tooLarge);
    EXPECT_EQ(refused.body, "");
    EXPECT_EQ(refused.problem, "the answer is too large");
}

TEST(QtHttpTransportLimits, aHugeAnswerIsBrokenOffAndNotReadToItsEnd)
{
    for (const std::uint64_t size : {50 * mebibyte, 1024 * 1024 * mebibyte}) {
        SCOPED_TRACE(size);
        Flood flood;
        flood.size = size;
        const LoopbackServer server(always(flood));
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::tooLarge);
        EXPECT_EQ(answer.status, 200);
        // What the system's own buffers hold counts as taken.
        EXPECT_LT(server.bodyBytesTaken(), 40 * mebibyte);
        EXPECT_EQ(server.requests().size(), 1U);
    }
}

TEST(QtHttpTransportLimits, aPackedBodyCountsUnpacked)
{
    const LoopbackServer fits(always(packed(4 * mebibyte)));
    QtHttpTransport transport;
    const HttpAnswer whole = ask(transport, fits.url());
    EXPECT_EQ(whole.kind, Kind::answered) << whole.problem;
    EXPECT_EQ(whole.body, std::string(4 * mebibyte, '\0'));

    for (const std::uint64_t size : {4 * mebibyte + 1, 20 * mebibyte}) {
        SCOPED_TRACE(size);
        const LoopbackServer server(always(packed(size)));
        EXPECT_EQ(ask(transport, server.url()).kind, Kind::tooLarge);
    }
}

TEST(QtHttpTransportLimits, hugeErrorAndRedirectBodiesAreRefusedToo)
{
    for (const int status : {302, 401, 500}) {
        SCOPED_TRACE(status);
        Answer huge = redirectTo("/on", status);
        huge.body = std::string(5 * mebibyte, 'x');
        const LoopbackServer server(always(huge));
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::tooLarge);
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(server.requests().size(), 1U);
    }
}

} // namespace
} // namespace vellumor::test
