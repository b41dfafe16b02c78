#include "platform/linux/TransportTesting.h"
#include "support/TestAuthority.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vellumor::test {
namespace {

using namespace std::chrono_literals;
using Kind = HttpAnswer::Kind;

HttpAnswer postTo(HttpPoster& poster, std::string url, std::string body = "{}")
{
    HttpPost request;
    request.url = std::move(url);
    request.headers = {{"Content-Type", "application/json"}, {"x-kind", "one"}};
    request.body = std::move(body);
    return QCoro::waitFor(poster.post(std::move(request)));
}

TEST(QtHttpTransportPost, sendsTheBodyAndTheGivenHeadersAndNoToken)
{
    const LoopbackServer server(always(bodied("thanks")));
    QtHttpTransport transport;
    const HttpAnswer answer = postTo(transport, server.url("/batch/"), "{\"a\":1}");
    EXPECT_EQ(answer.kind, Kind::answered) << answer.problem;
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "thanks");
    ASSERT_EQ(server.requests().size(), 1U);
    const SeenRequest& request = server.requests()[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/batch/");
    EXPECT_EQ(request.body, "{\"a\":1}");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(request.header("x-kind"), "one");
    EXPECT_EQ(request.header("Authorization"), std::nullopt);
    EXPECT_EQ(request.header("Cookie"), std::nullopt);
}

TEST(QtHttpTransportPost, aBodyOfAnySizeArrivesWhole)
{
    const LoopbackServer server(always(bodied("")));
    QtHttpTransport transport;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{16384},
                                   std::size_t{16385}, std::size_t{3'000'000}}) {
        std::string body(size, 'x');
        for (std::size_t at = 0; at < size; at += 7)
            body[at] = static_cast<char>('a' + at % 26);
        EXPECT_EQ(postTo(transport, server.url(), body).status, 200) << size;
        EXPECT_TRUE(server.requests().back().body == body) << size;
    }
}

TEST(QtHttpTransportPost, everyStatusIsAnAnswer)
{
    for (const int status : {201, 204, 400, 401, 403, 413, 429, 500, 503}) {
        Answer answer;
        answer.status = status;
        const LoopbackServer server(always(answer));
        QtHttpTransport transport;
        const HttpAnswer got = postTo(transport, server.url());
        EXPECT_EQ(got.kind, Kind::answered) << status << got.problem;
        EXPECT_EQ(got.status, status);
    }
}

TEST(QtHttpTransportPost, aRedirectIsNotFollowed)
{
    for (const int status : {301, 302, 303, 307, 308}) {
        SCOPED_TRACE(status);
        const LoopbackServer elsewhere(always(bodied("there")));
        const LoopbackServer server(always(redirectTo(elsewhere.url(), status)));
        QtHttpTransport transport;
        const HttpAnswer answer = postTo(transport, server.url());
        // Qt gives up on a status that asks for the same body elsewhere.
        const bool wantsBodyAgain = status == 307 || status == 308;
        EXPECT_EQ(answer.kind, wantsBodyAgain ? Kind::transport : Kind::answered);
        EXPECT_EQ(answer.status, wantsBodyAgain ? -1 : status);
        EXPECT_EQ(server.requests().size(), 1U);
        EXPECT_EQ(elsewhere.connections(), 0);
    }
}

// What a GET may do, a POST must not: it would count twice.
TEST(QtHttpTransportPost, isSentOnceThoughTheConnectionIsClosedWithoutAnAnswer)
{
    const std::pair<const char*, Reaction> rows[] = {
        {"closed", RawBytes()}, {"reset", Reset()}, {"no HTTP", RawBytes{"x\r\n"}}};
    for (const auto& [name, reaction] : rows) {
        SCOPED_TRACE(name);
        const LoopbackServer server(always(reaction));
        QtHttpTransport transport;
        const HttpAnswer answer = postTo(transport, server.url());
        EXPECT_EQ(answer.kind, Kind::transport);
        EXPECT_NE(answer.problem, "");
        EXPECT_EQ(server.requests().size(), 1U);
    }
}

TEST(QtHttpTransportPost, endsByTheIdleLimitAndTheLimitOfTheAnswersSize)
{
    QtHttpTransport::Options options;
    options.idleLimit = 300ms;
    QtHttpTransport transport(options);
    const LoopbackServer silent(always(Silence()));
    EXPECT_EQ(postTo(transport, silent.url()).problem, "no data for 0.3 seconds");
    const LoopbackServer huge(always(Flood()));
    EXPECT_EQ(postTo(transport, huge.url()).kind, Kind::tooLarge);
}

TEST(QtHttpTransportPost, isNotSentToAServerThatCannotBeTrusted)
{
    TestAuthority authority;
    const LoopbackServer server(always(bodied("ok")), authority.issue("127.0.0.1"));
    QtHttpTransport untrusting;
    const HttpAnswer refused = postTo(untrusting, server.url());
    EXPECT_EQ(refused.kind, Kind::transport);
    EXPECT_TRUE(server.requests().empty());

    QtHttpTransport::Options options;
    options.tls = authority.trust();
    QtHttpTransport trusting(options);
    EXPECT_EQ(postTo(trusting, server.url()).status, 200);
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST(QtHttpTransportPost, anAddressThatIsNotOneOfHttpIsNotAsked)
{
    for (const char* url :
         {"", "file:///etc/hostname", "ftp://127.0.0.1/", "https://", "data:,x"}) {
        QtHttpTransport transport;
        const HttpAnswer answer = postTo(transport, url);
        EXPECT_EQ(answer.kind, Kind::transport) << url;
        EXPECT_EQ(answer.problem, "the address is not one of http or https");
    }
}

TEST(QtHttpTransportPost, endsWithTheTransport)
{
    const LoopbackServer server(always(Silence()));
    auto transport = std::make_unique<QtHttpTransport>();
    HttpPost request;
    request.url = server.url();
    auto task = transport->post(std::move(request));
    transport.reset();
    EXPECT_EQ(QCoro::waitFor(task).kind, Kind::transport);
}

} // namespace
} // namespace vellumor::test
