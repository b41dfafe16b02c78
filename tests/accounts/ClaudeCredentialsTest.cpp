#include "accounts/ClaudeCredentials.h"

#include "support/FakeClock.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <type_traits>

namespace vellumor::claudeCredentialsTest {
namespace {

using Kind = KeychainError::Kind;
using Result = std::variant<ClaudeCredentials, KeychainError>;
using std::chrono::milliseconds;

// What no description may ever hold.
const std::string marker = "marker-token-5f1c";

Result decode(std::string_view secret, int status = RawCredential::found)
{
    return ClaudeCredentials::decode({status, SecretBytes(secret)});
}

std::optional<KeychainError> errorOf(const Result& result)
{
    const auto* error = std::get_if<KeychainError>(&result);
    return error == nullptr ? std::nullopt : std::optional(*error);
}

const KeychainError undecodable{Kind::unexpectedData};

std::string signIn(const std::string& expiresAt = "1774746000000")
{
    return fmt::format(R"({{"claudeAiOauth": {{"accessToken": "{}", "expiresAt": {}}}}})", marker,
                       expiresAt);
}

ClaudeCredentials credentials(const std::string& bytes)
{
    Result result = decode(bytes);
    EXPECT_EQ(errorOf(result), std::nullopt) << bytes;
    return std::get<ClaudeCredentials>(std::move(result));
}

TEST(ClaudeCredentials, theStatusOfReadingDecidesBeforeTheBytes)
{
    const struct {
        int status;
        KeychainError error;
        const char* description;
    } rows[] = {
        {44, {Kind::notFound}, "no matching Keychain item"},
        {45, {Kind::userDenied}, "access denied (Always-Allow not granted)"},
        {51, {Kind::userDenied}, "access denied (Always-Allow not granted)"},
        {128, {Kind::userDenied}, "access denied (Always-Allow not granted)"},
        {1, {Kind::osStatus, 1}, "Keychain OSStatus 1"},
        {-1, {Kind::osStatus, -1}, "Keychain OSStatus -1"},
        {36, {Kind::osStatus, 36}, "Keychain OSStatus 36"},
    };
    for (const auto& [status, error, description] : rows) {
        SCOPED_TRACE(status);
        for (const std::string& bytes : {signIn(), std::string(), marker}) {
            const Result result = decode(bytes, status);
            ASSERT_EQ(errorOf(result), error);
            EXPECT_EQ(errorOf(result)->description(), description);
        }
    }
    EXPECT_EQ(errorOf(decode(signIn(), 0)), std::nullopt);
}

TEST(ClaudeCredentials, everyKeyOfASignInIsTakenOverButTheRefreshToken)
{
    const ClaudeCredentials all = credentials(
        R"({"claudeAiOauth": {"accessToken": "a", "refreshToken": "r", "expiresAt": 1774746000000,
            "scopes": ["user:inference", ""], "subscriptionType": "max", "rateLimitTier": "t5",
            "later": {"deep": [null]}}, "mcpOAuth": {"accessToken": 5}})");
    EXPECT_EQ(all.accessToken.reveal(), "a");
    EXPECT_EQ(all.expiresAt, 1774746000000.0);
    EXPECT_EQ(all.scopes, (std::vector<std::string>{"user:inference", ""}));
    EXPECT_EQ(all.subscriptionType, "max");
    EXPECT_EQ(all.rateLimitTier, "t5");
}

TEST(ClaudeCredentials, theAccessTokenAloneSuffices)
{
    for (const char* rest : {"", R"(, "refreshToken": null, "expiresAt": null, "scopes": null,
                                    "subscriptionType": null, "rateLimitTier": null)"}) {
        SCOPED_TRACE(rest);
        const auto bare =
            credentials(fmt::format(R"({{"claudeAiOauth": {{"accessToken": "a"{}}}}})", rest));
        EXPECT_EQ(bare.accessToken.reveal(), "a");
        EXPECT_EQ(bare.expiresAt, std::nullopt);
        EXPECT_EQ(bare.expiry(), std::nullopt);
        EXPECT_TRUE(bare.scopes.empty());
        EXPECT_EQ(bare.subscriptionType, std::nullopt);
        EXPECT_EQ(bare.rateLimitTier, std::nullopt);
        EXPECT_EQ(bare.tokenStatus(test::instant("2026-03-29T00:00:00Z")), TokenStatus::readable);
    }
}

TEST(ClaudeCredentials, escapedCharactersInTheTokenAreTheCharactersThemselves)
{
    const auto escaped =
        credentials(R"({"claudeAiOauth": {"accessToken": "\"\\\/\n\u00e9\ud83d\ude00|\u0000|"}})");
    EXPECT_EQ(escaped.accessToken.reveal(), std::string_view("\"\\/\n\u00E9\U0001F600|\0|", 13));
}

TEST(ClaudeCredentials, ofARepeatedKeyTheLastCounts)
{
    const auto repeated = credentials(
        R"({"claudeAiOauth": 1, "claudeAiOauth": {"accessToken": 1, "accessToken": "old",
            "expiresAt": 5, "accessToken": "new"}})");
    EXPECT_EQ(repeated.accessToken.reveal(), "new");
    EXPECT_EQ(errorOf(decode(R"({"claudeAiOauth": {"accessToken": "a", "accessToken": null}})")),
              undecodable);
}

TEST(ClaudeCredentials, aTokenCannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<Token>);
    EXPECT_FALSE(std::is_copy_assignable_v<Token>);
    EXPECT_FALSE(std::is_copy_constructible_v<ClaudeCredentials>);
    EXPECT_FALSE((std::is_convertible_v<Token, std::string_view>));
}

TEST(ClaudeCredentials,
     aTokenThatEndsExactlySixtySecondsFromNowIsReadableAndOneMillisecondLessExpired)
{
    const Instant second = test::instant("2026-03-29T00:59:59Z");
    for (int part = 0; part < 1000; ++part) {
        SCOPED_TRACE(part);
        const Instant now = second + milliseconds(part);
        const auto limit =
            std::chrono::duration_cast<milliseconds>(now.time_since_epoch()).count() + 60'000;
        ClaudeCredentials token = credentials(signIn(std::to_string(limit)));
        EXPECT_EQ(token.tokenStatus(now), TokenStatus::readable);
        token.expiresAt = static_cast<double>(limit - 1);
        EXPECT_EQ(token.tokenStatus(now), TokenStatus::expired);
    }
}

TEST(ClaudeCredentials, anEmptyTokenIsSignedOutWhateverTheDate)
{
    const Instant now = test::instant("2026-03-29T00:59:59Z");
    for (const char* expiresAt : {"0", "null", "-1", "1e300", "1774746000000", "4102444800000"}) {
        SCOPED_TRACE(expiresAt);
        const auto left = credentials(fmt::format(
            R"({{"claudeAiOauth": {{"accessToken": "", "expiresAt": {}}}}})", expiresAt));
        EXPECT_EQ(left.tokenStatus(now), TokenStatus::signedOut);
    }
    EXPECT_EQ(credentials(R"({"claudeAiOauth": {"accessToken": ""}})").tokenStatus(now),
              TokenStatus::signedOut);
    EXPECT_EQ(ClaudeCredentials().tokenStatus(now), TokenStatus::signedOut);
}

TEST(ClaudeCredentials, anOddDateOfExpiryIsHeldToWhatADateCanBe)
{
    const Instant now = test::instant("2026-03-29T00:59:59Z");
    const struct {
        const char* expiresAt;
        TokenStatus status;
        Instant expiry;
    } rows[] = {
        {"0", TokenStatus::expired, Instant()},
        {"-1000", TokenStatus::expired, test::instant("1969-12-31T23:59:59Z")},
        {"1774746000000.5", TokenStatus::expired,
         Instant(std::chrono::microseconds(1774746000000500))},
        {"1e300", TokenStatus::readable, test::instant("9999-12-31T23:59:59Z")},
        {"18446744073709551615", TokenStatus::readable, test::instant("9999-12-31T23:59:59Z")},
        {"-1e300", TokenStatus::expired, test::instant("0001-01-01T00:00:00Z")},
    };
    for (const auto& [expiresAt, status, expiry] : rows) {
        SCOPED_TRACE(expiresAt);
        const auto odd = credentials(signIn(expiresAt));
        EXPECT_EQ(odd.tokenStatus(now), status);
        EXPECT_EQ(odd.expiry(), expiry);
    }
}

TEST(ClaudeCredentials, noDescriptionHoldsTheToken)
{
    for (const Kind kind : {Kind::osStatus, Kind::notFound, Kind::userDenied, Kind::unexpectedData})
        EXPECT_EQ((KeychainError{kind, 7}.description().find(marker)), std::string::npos);
    testing::internal::CaptureStderr();
    const std::string broken[] = {
        marker,
        signIn() + "x",
        signIn("true"),
        signIn("\"" + marker + "\""),
        "[" + signIn() + "]",
        fmt::format(R"({{"claudeAiOauth": {{"accessToken": "a", "scopes": "{}"}}}})", marker),
        fmt::format(R"({{"claudeAiOauth": {{"token": "{}"}}}})", marker),
    };
    for (const std::string& bytes : broken) {
        SCOPED_TRACE(bytes);
        const auto error = errorOf(decode(bytes));
        ASSERT_EQ(error, undecodable);
        EXPECT_EQ(error->description(), "Keychain item was not decodable JSON");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace vellumor::claudeCredentialsTest
