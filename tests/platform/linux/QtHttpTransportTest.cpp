#include "platform/linux/TransportTesting.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace vellumor::test {
namespace {

using Kind = HttpAnswer::Kind;

Answer withStatus(int status)
{
    Answer answer;
    answer.status = status;
    return answer;
}

TEST(QtHttpTransport, sendsAGetWithTheTokenAndTheGivenHeaders)
{
    const LoopbackServer server(always(bodied("{}")));
    QtHttpTransport transport;
    const HttpAnswer answer = ask(transport, server.url("/api/usage?x=1"));
    EXPECT_EQ(answer.kind, Kind::answered);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{}");
    EXPECT_EQ(answer.problem, "");

    ASSERT_EQ(server.requests().size(), 1U);
    const SeenRequest& request = server.requests()[0];
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/api/usage?x=1");
    EXPECT_EQ(request.body, "");
    EXPECT_EQ(request.header("Authorization"), "Bearer " + std::string(token));
    EXPECT_EQ(request.header("x-kind"), "one");
    EXPECT_EQ(request.header("x-version"), "2");
}

// What is there beside ours is what Qt says with every request.
TEST(QtHttpTransport, addsNoHeaderOfItsOwn)
{
    const LoopbackServer server(always(bodied("{}")));
    QtHttpTransport transport;
    (void)ask(transport, server.url(), "");
    ASSERT_EQ(server.requests().size(), 1U);
    std::set<std::string> names;
    for (const auto& header : server.requests()[0].headers)
        names.insert(header.first);
    EXPECT_EQ(names, (std::set<std::string>{"Accept-Encoding", "Accept-Language", "Connection",
                                            "Host", "User-Agent", "x-kind", "x-version"}));
}

TEST(QtHttpTransport, aTokenThatIsNotVisibleAsciiIsNeverSent)
{
    const LoopbackServer server(always(bodied("{}")));
    QtHttpTransport transport;
    for (const char* bad :
         {"secret\r\nx-more: 1", "sec ret", "secret\n", "secr\xc3\xa9t", "\x7f"}) {
        SCOPED_TRACE(bad);
        const HttpAnswer answer = ask(transport, server.url(), bad);
        EXPECT_EQ(answer.kind, Kind::transport);
        EXPECT_EQ(answer.problem, "the token holds characters that cannot be sent");
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST(QtHttpTransport, everyStatusIsAnAnswerWithItsBody)
{
    for (const int status : {200, 201, 400, 401, 403, 404, 407, 418, 429, 500, 501, 503, 599}) {
        SCOPED_TRACE(status);
        Answer reply = withStatus(status);
        reply.body = "why";
        const LoopbackServer server(always(reply));
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::answered) << answer.problem;
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.body, "why");
        EXPECT_EQ(server.requests().size(), 1U);
    }
}

TEST(QtHttpTransport, anAnswerMayBeEmpty)
{
    for (const int status : {200, 204, 500}) {
        SCOPED_TRACE(status);
        const LoopbackServer server(always(withStatus(status)));
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::answered) << answer.problem;
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.body, "");
    }
}

TEST(QtHttpTransport, retryAfterArrivesAsItCame)
{
    for (const char* value : {"120", "-1", "1e3", "Wed, 21 Oct 2026 07:28:00 GMT", "soon"}) {
        SCOPED_TRACE(value);
        Answer limited = withStatus(429);
        limited.headers = {{"retry-after", value}};
        const LoopbackServer server(always(limited));
        QtHttpTransport transport;
        EXPECT_EQ(ask(transport, server.url()).retryAfter, value);
    }
    const LoopbackServer server(always(withStatus(429)));
    QtHttpTransport transport;
    EXPECT_EQ(ask(transport, server.url()).retryAfter, std::nullopt);
}

TEST(QtHttpTransport, aChallengeIsNotAnsweredWithTheAddresssNameAndPassword)
{
    Answer challenge = withStatus(401);
    challenge.headers = {{"WWW-Authenticate", "Basic realm=\"x\""}};
    challenge.body = "who are you";
    const LoopbackServer server(always(challenge));
    QtHttpTransport transport;
    const HttpAnswer answer = ask(transport, server.url("/", "me:pass@127.0.0.1"));
    EXPECT_EQ(answer.kind, Kind::answered) << answer.problem;
    EXPECT_EQ(answer.status, 401);
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.requests()[0].header("Authorization"), "Bearer " + std::string(token));
}

TEST(QtHttpTransport, aCookieIsNotSentBack)
{
    Answer baker = bodied("{}");
    baker.headers = {{"Set-Cookie", "id=1; Path=/"}};
    const LoopbackServer server(always(baker));
    QtHttpTransport transport;
    (void)ask(transport, server.url());
    (void)ask(transport, server.url());
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_EQ(server.requests()[1].header("Cookie"), std::nullopt);
}

TEST(QtHttpTransport, aPackedBodyArrivesUnpacked)
{
    Answer packed = bodied(qCompress(QByteArray("{\"a\":1}")).mid(4).toStdString());
    packed.headers = {{"Content-Encoding", "deflate"}};
    const LoopbackServer server(always(packed));
    QtHttpTransport transport;
    EXPECT_EQ(ask(transport, server.url()).body, "{\"a\":1}");
}

TEST(QtHttpTransport, aBodyThatCannotBeUnpackedIsATransportFailure)
{
    Answer packed = bodied("no packed bytes");
    packed.headers = {{"Content-Encoding", "gzip"}};
    const LoopbackServer server(always(packed));
    QtHttpTransport transport;
    const HttpAnswer answer = ask(transport, server.url());
    EXPECT_EQ(answer.kind, Kind::transport);
    EXPECT_EQ(answer.body, "");
}

// Qt tries a GET again by itself when the connection ends without an answer: two connections a
// call, and no third.
TEST(QtHttpTransport, aConnectionClosedWithoutAnAnswerFailsAfterQtsSecondTry)
{
    const std::pair<const char*, Reaction> rows[] = {{"closed", RawBytes()}, {"reset", Reset()}};
    for (const auto& [how, reaction] : rows) {
        SCOPED_TRACE(how);
        const LoopbackServer server(always(reaction));
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::transport);
        EXPECT_EQ(answer.status, -1);
        EXPECT_EQ(answer.problem, "Connection closed");
        EXPECT_EQ(server.connections(), 2);
        EXPECT_EQ(server.requests().size(), 2U);
    }
}

TEST(QtHttpTransport, whatIsNotAWholeHttpAnswerIsATransportFailure)
{
    const std::pair<const char*, std::string> rows[] = {
        {"binary", std::string("\x00\xff\x01 garbage \r\n\r\n", 16)},
        {"another protocol", "SSH-2.0-Server\r\n\r\n"},
        {"no status", "HTTP/1.1 abc\r\n\r\n"},
        {"half a head", "HTTP/1.1 200 OK\r\nContent-Le"},
        {"half a body", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"a\""},
    };
    for (const auto& [what, bytes] : rows) {
        SCOPED_TRACE(what);
        const LoopbackServer server(always(RawBytes{bytes}));
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::transport) << answer.status << answer.body;
        EXPECT_EQ(answer.body, "");
        EXPECT_NE(answer.problem, "");
        EXPECT_EQ(answer.problem.find(token), std::string::npos);
    }
}

TEST(QtHttpTransport, anAnswerInChunksArrivesAsOneBody)
{
    const LoopbackServer server(always(RawBytes{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n"
                                                "\r\n4\r\n{\"a\"\r\n3\r\n:1}\r\n0\r\n\r\n"}));
    QtHttpTransport transport;
    EXPECT_EQ(ask(transport, server.url()).body, "{\"a\":1}");
}

// Depending on when the end of the connection is seen, Qt takes it for the end of the answer.
TEST(QtHttpTransport, anAnswerInChunksThatBreaksOffGivesNoMoreThanWhatCame)
{
    const LoopbackServer server(always(RawBytes{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n"
                                                "\r\nff\r\n{\"a\""}));
    QtHttpTransport transport;
    const HttpAnswer answer = ask(transport, server.url());
    EXPECT_EQ(answer.body, answer.kind == Kind::answered ? "{\"a\"" : "");
    EXPECT_NE(answer.kind, Kind::tooLarge);
}

TEST(QtHttpTransport, aServerThatIsNotThereIsATransportFailure)
{
    auto server = std::make_unique<LoopbackServer>(always(bodied("{}")));
    const std::string url = server->url();
    server.reset();
    QtHttpTransport transport;
    const HttpAnswer answer = ask(transport, url);
    EXPECT_EQ(answer.kind, Kind::transport);
    EXPECT_EQ(answer.problem, "Connection refused");
}

TEST(QtHttpTransport, anAddressOutsideOfHttpIsNotAskedFor)
{
    for (const char* url : {"file:///etc/hostname", "ftp://127.0.0.1/", "data:,x", "", "http://"}) {
        SCOPED_TRACE(url);
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, url);
        EXPECT_EQ(answer.kind, Kind::transport);
        EXPECT_EQ(answer.problem, "the address is not one of http or https");
    }
}

TEST(QtHttpTransport, requestsRunSideBySide)
{
    Drip slow;
    slow.answer.body = "slow";
    const LoopbackServer server([&](const SeenRequest& request) -> Reaction {
        return request.path == "/slow" ? Reaction(slow) : Reaction(bodied("fast"));
    });
    QtHttpTransport transport;
    HttpRequest request;
    request.url = server.url("/slow");
    const Task<HttpAnswer> first = transport.get(std::move(request));
    EXPECT_EQ(ask(transport, server.url("/fast")).body, "fast");
    EXPECT_FALSE(first.isReady());
    EXPECT_EQ(QCoro::waitFor(first).body, "slow");
}

TEST(QtHttpTransport, aTransportThatGoesAwayEndsItsRequests)
{
    const LoopbackServer server(always(Silence()));
    auto transport = std::make_unique<QtHttpTransport>();
    HttpRequest request;
    request.url = server.url();
    const Task<HttpAnswer> task = transport->get(std::move(request));
    EXPECT_FALSE(task.isReady());
    transport.reset();
    ASSERT_TRUE(task.isReady());
    EXPECT_EQ(QCoro::waitFor(task).kind, Kind::transport);
}

} // namespace
} // namespace vellumor::test
