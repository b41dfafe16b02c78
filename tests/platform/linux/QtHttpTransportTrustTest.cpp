#include "platform/linux/TransportTesting.h"
#include "support/TestAuthority.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vellumor::test {
namespace {

using Kind = HttpAnswer::Kind;

// A proxy of the environment, for one test.
class ScopedProxy {
public:
    explicit ScopedProxy(const std::string& url)
    {
        for (const char* name : names)
            ::setenv(name, url.c_str(), 1);
        ::unsetenv("no_proxy");
    }
    ScopedProxy(const ScopedProxy&) = delete;
    ScopedProxy& operator=(const ScopedProxy&) = delete;
    ~ScopedProxy()
    {
        for (const char* name : names)
            ::unsetenv(name);
    }

private:
    static constexpr const char* names[] = {"http_proxy", "https_proxy"};
};

HttpAnswer askTrusting(const LoopbackServer& server, std::optional<QSslConfiguration> tls,
                       std::string_view host = "127.0.0.1")
{
    QtHttpTransport::Options options;
    options.tls = std::move(tls);
    QtHttpTransport transport(options);
    return ask(transport, server.url("/", host));
}

TEST(QtHttpTransportTrust, aCertificateOfATrustedAuthorityIsAccepted)
{
    const TestAuthority authority;
    const LoopbackServer server(always(bodied("{}")), authority.issue("127.0.0.1"));
    const HttpAnswer answer = askTrusting(server, authority.trust());
    EXPECT_EQ(answer.kind, Kind::answered) << answer.problem;
    EXPECT_EQ(answer.body, "{}");
    EXPECT_EQ(server.requests().at(0).header("Authorization"), "Bearer " + std::string(token));
}

TEST(QtHttpTransportTrust, aSelfSignedCertificateIsRefused)
{
    const TestAuthority authority;
    const LoopbackServer server(always(bodied("{}")), authority.selfSigned("127.0.0.1"));
    for (const auto& tls : {std::optional(authority.trust()), std::optional<QSslConfiguration>()}) {
        const HttpAnswer answer = askTrusting(server, tls);
        EXPECT_EQ(answer.kind, Kind::transport);
        EXPECT_EQ(answer.problem,
                  "SSL handshake failed: The certificate is self-signed, and untrusted");
    }
    EXPECT_TRUE(server.requests().empty());
    EXPECT_EQ(server.connections(), 2);
}

TEST(QtHttpTransportTrust, aCertificateForAnotherNameIsRefused)
{
    const TestAuthority authority;
    const LoopbackServer server(always(bodied("{}")), authority.issue("localhost"));
    EXPECT_EQ(askTrusting(server, authority.trust(), "localhost").kind, Kind::answered);
    EXPECT_EQ(askTrusting(server, authority.trust(), "127.0.0.1").kind, Kind::transport);
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST(QtHttpTransportTrust, anAuthorityThatTheSystemDoesNotKnowIsRefusedByDefault)
{
    const TestAuthority authority;
    const LoopbackServer server(always(bodied("{}")), authority.issue("127.0.0.1"));
    QtHttpTransport transport;
    EXPECT_EQ(ask(transport, server.url()).kind, Kind::transport);
    EXPECT_TRUE(server.requests().empty());
}

TEST(QtHttpTransportTrust, aServerOnThisMachineIsAskedWithoutTheProxy)
{
    const LoopbackServer proxy(always(bodied("by proxy")));
    const LoopbackServer server(always(bodied("directly")));
    const ScopedProxy environment(proxy.url());
    for (const char* host : {"127.0.0.1", "localhost", "LOCALHOST"}) {
        SCOPED_TRACE(host);
        QtHttpTransport transport;
        const HttpAnswer answer = ask(transport, server.url("/", host));
        EXPECT_EQ(answer.body, "directly") << answer.problem;
    }
    // Nothing listens at these two, so that an answer could be the proxy's alone.
    for (const char* host : {"[::1]", "127.1.2.3"}) {
        SCOPED_TRACE(host);
        QtHttpTransport transport;
        EXPECT_EQ(ask(transport, server.url("/", host)).kind, Kind::transport);
    }
    EXPECT_EQ(proxy.connections(), 0);
}

TEST(QtHttpTransportTrust, everyOtherServerIsAskedThroughTheSystemsProxy)
{
    const LoopbackServer proxy(always(bodied("by proxy")));
    const ScopedProxy environment(proxy.url());
    QtHttpTransport transport;
    const HttpAnswer answer = ask(transport, "http://usage.invalid/path");
    EXPECT_EQ(answer.body, "by proxy") << answer.problem;
    EXPECT_EQ(proxy.requests().at(0).path, "http://usage.invalid/path");
}

} // namespace
} // namespace vellumor::test
