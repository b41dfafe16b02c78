#include "usage/UsageClient.h"

#include "support/FakeClock.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <thread>
#include <vector>

namespace vellumor::usageClientTest {
namespace {

using Kind = UsageFetchError::Kind;
using test::FakeClock;

constexpr std::string_view marker = "marker-token-5f1c";

// Answers what it is told to, and notes what it was asked.
struct FakeTransport final : HttpTransport {
    HttpAnswer answer;
    std::vector<std::string> urls;
    std::vector<std::string> bearers;
    std::vector<std::pair<std::string, std::string>> headers;

    Task<HttpAnswer> get(HttpRequest request) override
    {
        urls.push_back(request.url);
        bearers.emplace_back(request.bearer.view());
        headers = request.headers;
        auto copy = answer;
        co_return copy;
    }
};

HttpAnswer answered(int status, std::string body = "", std::optional<std::string> retryAfter = {})
{
    return {HttpAnswer::Kind::answered, status, std::move(body), std::move(retryAfter), ""};
}

struct UsageClientTest : testing::Test {
    FakeTransport transport;
    Worker worker;
    FakeClock clock;
    std::optional<KeychainError> keychainError;
    std::map<std::string, std::string> tokens; // by service; all others have the marker
    std::vector<std::string> servicesRead;
    std::thread::id readOn;
    UsageClient client{transport, worker, clock,
                       [this](const std::string& service) { return read(service); },
                       "http://127.0.0.1:1/api/oauth/usage"};

    std::variant<ClaudeCredentials, KeychainError> read(const std::string& service)
    {
        servicesRead.push_back(service);
        readOn = std::this_thread::get_id();
        if (keychainError)
            return *keychainError;
        ClaudeCredentials credentials;
        const auto known = tokens.find(service);
        credentials.accessToken =
            Token(SecretBytes(known != tokens.end() ? known->second : std::string(marker)));
        return credentials;
    }

    FetchResult fetch()
    {
        Account account;
        account.resolvedService = "Claude Code-credentials";
        return QCoro::waitFor(client.fetch(account));
    }

    UsageFetchError failure()
    {
        const FetchResult result = fetch();
        const auto* error = std::get_if<UsageFetchError>(&result);
        return error != nullptr ? *error
                                : UsageFetchError{Kind::transport, "no error at all", {}, 0};
    }
};

TEST_F(UsageClientTest, sendsTheTokenAndTheTwoHeadersToTheEndpoint)
{
    transport.answer = answered(200, "{}");
    fetch();
    EXPECT_EQ(transport.urls, std::vector<std::string>{"http://127.0.0.1:1/api/oauth/usage"});
    EXPECT_EQ(transport.bearers, std::vector<std::string>{std::string(marker)});
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"anthropic-beta", "oauth-2025-04-20"}, {"anthropic-version", "2023-06-01"}};
    EXPECT_EQ(transport.headers, expected);
}

TEST_F(UsageClientTest, accountsInFlightEachSendTheirOwnToken)
{
    tokens = {{"service of ada", "token-of-ada"}, {"service of ben", "token-of-ben"}};
    Account ada;
    ada.resolvedService = "service of ada";
    Account ben;
    ben.resolvedService = "service of ben";
    auto first = client.fetch(ada);
    auto second = client.fetch(ben);
    QCoro::waitFor(std::move(first));
    QCoro::waitFor(std::move(second));
    EXPECT_EQ(transport.bearers, (std::vector<std::string>{"token-of-ada", "token-of-ben"}));
}

TEST_F(UsageClientTest, theCredentialIsReadOffTheMainThread)
{
    fetch();
    EXPECT_NE(readOn, std::thread::id());
    EXPECT_NE(readOn, std::this_thread::get_id());
}

TEST_F(UsageClientTest, anAccountWithoutAServiceTouchesNeitherKeyringNorNetwork)
{
    const FetchResult result = QCoro::waitFor(client.fetch(Account()));
    ASSERT_TRUE(std::holds_alternative<UsageFetchError>(result));
    EXPECT_EQ(std::get<UsageFetchError>(result).kind, Kind::noService);
    EXPECT_TRUE(servicesRead.empty());
    EXPECT_TRUE(transport.urls.empty());
}

TEST_F(UsageClientTest, aCredentialThatCannotBeReadIsToldInItsOwnWords)
{
    keychainError = KeychainError{KeychainError::Kind::userDenied};
    const UsageFetchError error = failure();
    EXPECT_EQ(error.kind, Kind::keychain);
    EXPECT_EQ(error.description(), "keychain: access denied (Always-Allow not granted)");
    EXPECT_TRUE(transport.urls.empty());
}

TEST_F(UsageClientTest, aGoodAnswerIsStampedWithTheTimeOfItsConversion)
{
    transport.answer = answered(200, R"({"five_hour":{"utilization":12.5}})");
    const FetchResult result = fetch();
    ASSERT_TRUE(std::holds_alternative<Usage>(result));
    EXPECT_EQ(std::get<Usage>(result).fetchedAt, clock.now());
    EXPECT_EQ(std::get<Usage>(result).windows.size(), 1U);
}

TEST_F(UsageClientTest, anEmptyObjectIsAReadingWithoutWindows)
{
    transport.answer = answered(200, "{}");
    const FetchResult result = fetch();
    ASSERT_TRUE(std::holds_alternative<Usage>(result));
    EXPECT_TRUE(std::get<Usage>(result).windows.empty());
}

TEST_F(UsageClientTest, everyStatusHasItsFailure)
{
    const std::pair<int, Kind> rows[] = {
        {401, Kind::unauthorized}, {403, Kind::forbidden}, {429, Kind::rateLimited},
        {204, Kind::http},         {201, Kind::http},      {302, Kind::http},
        {404, Kind::http},         {500, Kind::http},      {-1, Kind::http},
    };
    for (const auto& [status, kind] : rows) {
        SCOPED_TRACE(status);
        transport.answer = answered(status, "{}");
        const UsageFetchError error = failure();
        EXPECT_EQ(error.kind, kind);
        EXPECT_EQ(error.status, kind == Kind::http ? status : 0);
    }
}

TEST_F(UsageClientTest, aBodyThatIsNoReadingIsADecodingFailure)
{
    for (const char* body : {"", "[]", "null", "garbage", "{", "{}x"}) {
        SCOPED_TRACE(body);
        transport.answer = answered(200, body);
        EXPECT_EQ(failure().kind, Kind::decode);
    }
}

TEST_F(UsageClientTest, aBodyThatIsTooLargeIsADecodingFailure)
{
    transport.answer.kind = HttpAnswer::Kind::tooLarge;
    EXPECT_EQ(failure().kind, Kind::decode);
}

TEST_F(UsageClientTest, aNetworkFailureKeepsItsReason)
{
    transport.answer = {};
    transport.answer.problem = "Connection refused";
    EXPECT_EQ(failure().description(), "transport: Connection refused");
}

TEST_F(UsageClientTest, retryAfterCountsOnlyAsAPlainNumber)
{
    const std::pair<const char*, std::optional<double>> rows[] = {
        {"120", 120.0},
        {"1.5", 1.5},
        {"0", 0.0},
        {"-3", -3.0},
        {"1e3", 1000.0},
        {"inf", HUGE_VAL},
        {"1e400", HUGE_VAL},
        {"-1e400", -HUGE_VAL},
        {"1e-400", 0.0},
        {"+5", 5.0},
        {"+-5", std::nullopt},
        {"", std::nullopt},
        {" 120", std::nullopt},
        {"120 ", std::nullopt},
        {"120s", std::nullopt},
        {"abc", std::nullopt},
        {"Wed, 21 Oct 2026 07:28:00 GMT", std::nullopt},
    };
    for (const auto& [header, seconds] : rows) {
        SCOPED_TRACE(header);
        transport.answer = answered(429, "", std::string(header));
        EXPECT_EQ(failure().retryAfter, seconds);
    }
    transport.answer = answered(429, "", "nan");
    const auto notANumber = failure().retryAfter;
    EXPECT_TRUE(notANumber && std::isnan(*notANumber));
}

TEST_F(UsageClientTest, a429WithoutTheHeaderHasNoRetryAfter)
{
    transport.answer = answered(429);
    const UsageFetchError error = failure();
    EXPECT_EQ(error.retryAfter, std::nullopt);
    EXPECT_EQ(error.description(), "rate limited (429)");
}

TEST_F(UsageClientTest, noDescriptionHoldsTheToken)
{
    for (const int status : {200, 401, 403, 429, 500}) {
        transport.answer = answered(status, "[\"" + std::string(marker) + "\"]");
        EXPECT_EQ(failure().description().find(marker), std::string::npos) << status;
    }
}

} // namespace
} // namespace vellumor::usageClientTest
