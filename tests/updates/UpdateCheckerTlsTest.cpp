#include "updates/UpdateChecker.h"

#include "platform/linux/TransportTesting.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"
#include "support/TestAuthority.h"
#include "updates/FeedTesting.h"

#include <gtest/gtest.h>

// The whole way over TLS, against a server that may do anything.
namespace vellumor::updateCheckerTlsTest {
namespace {

using namespace std::chrono_literals;
using test::always;
using test::bodied;
using test::LoopbackServer;
using test::release;
using Kind = UpdateFailure::Kind;

// Keys take long to make.
const test::TestAuthority& authority()
{
    static const test::TestAuthority one;
    return one;
}

struct UpdateCheckerTlsTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    UpdateStore store{files, folder.file("updates.json"), runAtOnce};
    test::FakeClock clock;
    test::Maker maker;
    QtHttpTransport::Options options;

    UpdateCheckerTlsTest()
    {
        options.tls = authority().trust();
        options.redirects = QtHttpTransport::Redirects::refuse;
        options.idleLimit = 300ms;
        options.totalLimit = 2s;
    }

    static QSslConfiguration certificate() { return authority().issue("127.0.0.1"); }

    UpdateResult check(const LoopbackServer& server)
    {
        QtHttpTransport transport(options);
        UpdateChecker checker(
            transport, store, clock,
            {server.url("/feed.json"), maker.keyText(), std::string(test::website), "1.2.3"});
        return QCoro::waitFor(checker.check());
    }
    UpdateResult checkReaction(test::Reaction reaction)
    {
        const LoopbackServer server(always(std::move(reaction)), certificate());
        return check(server);
    }
    UpdateResult checkRelease(const std::string& version, int serial)
    {
        return checkReaction(bodied(maker.feedOf(release(version, serial))));
    }
    static std::optional<Kind> kindOf(const UpdateResult& result)
    {
        const auto* failure = std::get_if<UpdateFailure>(&result);
        return failure == nullptr ? std::nullopt : std::optional(failure->kind);
    }
};

TEST_F(UpdateCheckerTlsTest, aNewerSignedReleaseIsOffered)
{
    EXPECT_EQ(checkRelease("1.3.0", 1),
              UpdateResult(UpdateAvailable{"1.3.0", "https://maker.example.org/vellumor"}));
}

TEST_F(UpdateCheckerTlsTest, theSameAndAnOlderReleaseAreNot)
{
    EXPECT_EQ(checkRelease("1.2.3", 1), UpdateResult(UpToDate()));
    EXPECT_EQ(checkRelease("1.2.2", 2), UpdateResult(UpToDate()));
}

TEST_F(UpdateCheckerTlsTest, aReplayedOlderFeedIsRefused)
{
    EXPECT_EQ(kindOf(checkRelease("1.3.1", 5)), std::nullopt);
    EXPECT_EQ(kindOf(checkRelease("1.3.0", 4)), Kind::replayed);
}

TEST_F(UpdateCheckerTlsTest, aWrongSignatureIsRefused)
{
    EXPECT_EQ(kindOf(checkReaction(bodied(test::Maker(2).feedOf(release("1.3.0", 1))))),
              Kind::badSignature);
}

TEST_F(UpdateCheckerTlsTest, aFeedThatIsCutIsRefusedHoweverItIsCut)
{
    const std::string feed = maker.feedOf(release("1.3.0", 1));
    const std::string half = feed.substr(0, feed.size() / 2);
    EXPECT_EQ(kindOf(checkReaction(bodied(half))), Kind::malformed);
    const std::string stated =
        "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(feed.size()) + "\r\n\r\n" + half;
    EXPECT_EQ(kindOf(checkReaction(test::RawBytes{stated})), Kind::transport);
    const std::string unstated = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + half;
    EXPECT_TRUE(kindOf(checkReaction(test::RawBytes{unstated})).has_value());
}

TEST_F(UpdateCheckerTlsTest, aRedirectIsNotFollowedNotEvenToTheSameServer)
{
    const LoopbackServer elsewhere(always(bodied(maker.feedOf(release("1.3.0", 1)))),
                                   certificate());
    for (const int status : {301, 302, 303, 307, 308}) {
        EXPECT_EQ(kindOf(checkReaction(test::redirectTo(elsewhere.url(), status))),
                  Kind::redirected);
    }
    EXPECT_EQ(elsewhere.connections(), 0);
    const LoopbackServer same(always(test::redirectTo("/other")), certificate());
    EXPECT_EQ(kindOf(check(same)), Kind::redirected);
    EXPECT_EQ(same.requests().size(), 1U);
}

TEST_F(UpdateCheckerTlsTest, aHugeAnswerIsBrokenOff)
{
    test::Flood flood;
    flood.size = 64ULL * 1024 * 1024 * 1024;
    const LoopbackServer server(always(flood), certificate());
    options.idleLimit = 15s;
    options.totalLimit = 60s;
    EXPECT_EQ(kindOf(check(server)), Kind::tooLarge);
    EXPECT_LT(server.bodyBytesTaken(), 40U * 1024 * 1024);
}

TEST_F(UpdateCheckerTlsTest, aSlowAnswerEndsByTheLimits)
{
    EXPECT_EQ(kindOf(checkReaction(test::Silence())), Kind::transport);
    const std::string feed = maker.feedOf(release("1.3.0", 1));
    EXPECT_EQ(kindOf(checkReaction(test::StallAfterHead{bodied(feed)})), Kind::transport);
    test::Drip drip;
    drip.answer = bodied(feed);
    drip.every = 50ms;
    EXPECT_EQ(kindOf(checkReaction(drip)), Kind::transport);
    drip.count = 100;
    EXPECT_EQ(kindOf(checkReaction(drip)), std::nullopt); // slow, and in time
}

TEST_F(UpdateCheckerTlsTest, aServerThatCannotProveItsNameIsNotAsked)
{
    const auto feed = always(bodied(maker.feedOf(release("1.3.0", 1))));
    for (const QSslConfiguration& tls :
         {authority().selfSigned("127.0.0.1"), authority().issue("localhost")}) {
        const LoopbackServer server(feed, tls);
        EXPECT_EQ(kindOf(check(server)), Kind::transport);
        EXPECT_TRUE(server.requests().empty());
    }
    const LoopbackServer server(feed, certificate());
    options.tls.reset(); // the system's own authorities
    EXPECT_EQ(kindOf(check(server)), Kind::transport);
    EXPECT_TRUE(server.requests().empty());
    EXPECT_EQ(store.current(), UpdateState());
}

TEST_F(UpdateCheckerTlsTest, aServerThatDoesNotAnswerIsAFailure)
{
    EXPECT_EQ(kindOf(checkReaction(test::Reset())), Kind::transport);
    test::Answer missing;
    missing.status = 404;
    EXPECT_EQ(kindOf(checkReaction(missing)), Kind::http);
}

TEST_F(UpdateCheckerTlsTest, whatTheServerGetsToKnowIsTheRequestAlone)
{
    const LoopbackServer server(always(bodied(maker.feedOf(release("1.2.3", 1)))), certificate());
    check(server);
    ASSERT_EQ(server.requests().size(), 1U);
    const auto& request = server.requests().front();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/feed.json");
    EXPECT_EQ(request.body, "");
    EXPECT_EQ(request.header("Authorization"), std::nullopt);
    EXPECT_EQ(request.header("Cookie"), std::nullopt);
}

} // namespace
} // namespace vellumor::updateCheckerTlsTest
