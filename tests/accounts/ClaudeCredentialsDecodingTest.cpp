#include "accounts/ClaudeCredentials.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace vellumor::claudeCredentialsDecodingTest {
namespace {

const std::string signIn = R"({"claudeAiOauth": {"accessToken": "marker-token-5f1c"}})";

// The token; nothing where the bytes are refused as undecodable.
std::optional<std::string> tokenIn(std::string_view secret)
{
    const auto result =
        ClaudeCredentials::decode({RawCredential::found, SecretBytes(std::string_view(secret))});
    if (const auto* error = std::get_if<KeychainError>(&result)) {
        EXPECT_EQ(*error, KeychainError{KeychainError::Kind::unexpectedData});
        EXPECT_EQ(error->description(), "Keychain item was not decodable JSON");
        return std::nullopt;
    }
    return std::string(std::get<ClaudeCredentials>(result).accessToken.reveal());
}

std::string hex(std::string_view bytes, const char* digits = "0123456789abcdef")
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += digits[byte / 16];
        text += digits[byte % 16];
    }
    return text;
}

std::string mixedHex(std::string_view bytes)
{
    std::string text = hex(bytes);
    for (std::size_t i = 0; i < text.size(); i += 3)
        text[i] = static_cast<char>(std::toupper(text[i]));
    return text;
}

// The decoder, left to itself, reads on behind the end of such a text, where nothing may be read.
TEST(ClaudeCredentials, aHexadecimalItemThatEndsInCutUtf8IsUndecodable)
{
    const auto result = ClaudeCredentials::decode(
        {RawCredential::found, SecretBytes(std::string_view("2266F25d"))});
    ASSERT_TRUE(std::holds_alternative<KeychainError>(result));
    EXPECT_EQ(std::get<KeychainError>(result).kind, KeychainError::Kind::unexpectedData);
}

TEST(ClaudeCredentialsDecoding, theItemIsJsonOrItsHexadecimalForm)
{
    const struct {
        const char* form;
        std::string bytes;
    } rows[] = {
        {"plain", signIn},
        {"a line end behind it", signIn + "\n"},
        {"white space around", " \t\r\n\u00A0\u2028" + signIn + "\u3000 \n\n"},
        {"lower-case hexadecimal", hex(signIn)},
        {"upper-case hexadecimal", hex(signIn, "0123456789ABCDEF")},
        {"mixed hexadecimal", mixedHex(signIn)},
        {"hexadecimal with white space around", "\n " + hex(signIn) + " \n"},
        {"hexadecimal of JSON with white space around", hex(" \n" + signIn + "\n")},
    };
    for (const auto& [form, bytes] : rows) {
        SCOPED_TRACE(form);
        EXPECT_EQ(tokenIn(bytes), "marker-token-5f1c");
    }
}

TEST(ClaudeCredentialsDecoding, whatIsNeitherJsonNorItsHexadecimalFormIsRefused)
{
    using namespace std::string_literals;
    const struct {
        const char* form;
        std::string bytes;
    } rows[] = {
        {"empty", ""},
        {"blanks only", "   "},
        {"white space only", " \n\t\u00A0\u2029\r\n"},
        {"a word", "secret"},
        {"hexadecimal of an odd length", hex(signIn) + "0"},
        {"hexadecimal with a blank inside", hex(signIn).insert(4, "  ")},
        {"hexadecimal with a foreign digit", hex(signIn) + "0g"},
        {"hexadecimal with a prefix", "0x" + hex(signIn)},
        {"hexadecimal of a word", hex("secret")},
        {"hexadecimal of blanks", hex("  ")},
        {"hexadecimal twice over", hex(hex(signIn))},
        {"hexadecimal of an array", hex("[" + signIn + "]")},
        {"hexadecimal of invalid UTF-8", hex("{\"claudeAiOauth\":{\"accessToken\":\"\xFF\"}}")},
        {"invalid UTF-8 in the token", "{\"claudeAiOauth\":{\"accessToken\":\"\xC3\"}}"},
        {"invalid UTF-8 outside the texts", signIn + "\xFF"},
        {"a byte order mark", "\uFEFF" + signIn},
        {"half of it", signIn.substr(0, signIn.size() / 2)},
        {"all but the last brace", signIn.substr(0, signIn.size() - 1)},
        {"something behind it", signIn + "{}"},
        {"a zero byte behind it", signIn + "\0"s},
        {"a zero byte and more behind it", signIn + "\0x"s},
        {"zero bytes alone", "\0\0"s},
        {"a zero byte between", "{\0\"claudeAiOauth\":{\"accessToken\":\"a\"}}"s},
        {"a zero byte in the token", "{\"claudeAiOauth\":{\"accessToken\":\"a\0b\"}}"s},
        {"hexadecimal with a zero byte behind it", hex(signIn + "\0"s)},
        {"a line end in the token", "{\"claudeAiOauth\":{\"accessToken\":\"a\nb\"}}"},
        {"single quotes", "{'claudeAiOauth':{'accessToken':'a'}}"},
        {"a comment", "/**/" + signIn},
        {"a comma too many", R"({"claudeAiOauth": {"accessToken": "a",}})"},
        {"a leading half of a pair", R"({"claudeAiOauth": {"accessToken": "\ud83d"}})"},
        {"a trailing half of a pair", R"({"claudeAiOauth": {"accessToken": "\ude00"}})"},
        {"half a pair in the plan",
         R"({"claudeAiOauth": {"accessToken": "a", "subscriptionType": "\ude00"}})"},
        {"half a pair in a scope",
         R"({"claudeAiOauth": {"accessToken": "a", "scopes": ["\ude00"]}})"},
    };
    for (const auto& [form, bytes] : rows) {
        SCOPED_TRACE(form);
        EXPECT_EQ(tokenIn(bytes), std::nullopt);
    }
}

TEST(ClaudeCredentialsDecoding, jsonWithoutAnAccessTokenIsRefusedAndNotTakenForSignedOut)
{
    for (const char* bytes : {"{}",
                              "[]",
                              "null",
                              "true",
                              "12",
                              "\"accessToken\"",
                              "[{}]",
                              R"({"claudeAiOauth": null})",
                              R"({"claudeAiOauth": []})",
                              R"({"claudeAiOauth": "a"})",
                              R"({"claudeAiOauth": {}})",
                              R"({"accessToken": "a"})",
                              R"({"claudeaioauth": {"accessToken": "a"}})",
                              R"({"claudeAiOauth": {"accesstoken": "a"}})",
                              R"({"claudeAiOauth": {"accessToken": null}})",
                              R"({"claudeAiOauth": {"accessToken": 1}})",
                              R"({"claudeAiOauth": {"accessToken": false}})",
                              R"({"claudeAiOauth": {"accessToken": ["a"]}})",
                              R"({"claudeAiOauth": {"accessToken": {}}})",
                              R"({"claudeAiOauth": {"refreshToken": "r", "expiresAt": 0}})"}) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(tokenIn(bytes), std::nullopt);
    }
}

TEST(ClaudeCredentialsDecoding, anyKeyOfAnotherTypeSpoilsTheItem)
{
    for (const char* field :
         {R"("refreshToken": 1)", R"("refreshToken": ["r"])", R"("expiresAt": "1774746000000")",
          R"("expiresAt": true)", R"("expiresAt": [1])", R"("expiresAt": 1e400)",
          R"("expiresAt": NaN)", R"("expiresAt": Infinity)", R"("scopes": "a b")",
          R"("scopes": {})", R"("scopes": 1)", R"("scopes": ["a", 1])", R"("scopes": ["a", null])",
          R"("subscriptionType": 1)", R"("subscriptionType": ["max"])", R"("rateLimitTier": false)",
          R"("rateLimitTier": {})"}) {
        SCOPED_TRACE(field);
        EXPECT_EQ(tokenIn(fmt::format(R"({{"claudeAiOauth": {{"accessToken": "a", {}}}}})", field)),
                  std::nullopt);
    }
}

TEST(ClaudeCredentialsDecoding, nestingOfSixtyFourIsReadAndOfSixtyFiveRefused)
{
    const auto nested = [](std::size_t depth) { // the two objects around it count
        return R"({"claudeAiOauth": {"accessToken": "a", "deep": )" + std::string(depth - 2, '[') +
               std::string(depth - 2, ']') + "}}";
    };
    EXPECT_EQ(tokenIn(nested(64)), "a");
    EXPECT_EQ(tokenIn(nested(65)), std::nullopt);
    EXPECT_EQ(tokenIn(hex(nested(65))), std::nullopt);
    EXPECT_EQ(tokenIn(std::string(1'000'000, '[')), std::nullopt);
    // Brackets in a text are no nesting.
    EXPECT_EQ(tokenIn(R"({"claudeAiOauth": {"accessToken": ")" + std::string(100, '[') + "\"}}"),
              std::string(100, '['));
}

} // namespace
} // namespace vellumor::claudeCredentialsDecodingTest
