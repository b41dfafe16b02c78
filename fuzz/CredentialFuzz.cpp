#include "Fuzz.h"

#include "accounts/ClaudeCredentials.h"

#include <string>

using namespace vellumor;
using fuzz::require;

namespace {

using Result = std::variant<ClaudeCredentials, KeychainError>;

Result decode(std::string_view text)
{
    return ClaudeCredentials::decode({RawCredential::found, SecretBytes(text)});
}

std::string hexOf(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        hex += digits[byte >> 4U];
        hex += digits[byte & 15U];
    }
    return hex;
}

} // namespace

// The bytes of one credential item, from whichever source.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    const Result result = decode(text);
    if (const auto* error = std::get_if<KeychainError>(&result)) {
        require(*error == KeychainError{KeychainError::Kind::unexpectedData});
        return 0;
    }
    const auto& credentials = std::get<ClaudeCredentials>(result);
    const TokenStatus status = credentials.tokenStatus(fuzz::now);
    require((status == TokenStatus::signedOut) == credentials.accessToken.empty());
    require(credentials.expiry().has_value() == credentials.expiresAt.has_value());
    if (text.front() == '{' && text.back() == '}') {
        const Result fromHex = decode(hexOf(text));
        require(std::holds_alternative<ClaudeCredentials>(fromHex));
        const auto& same = std::get<ClaudeCredentials>(fromHex);
        require(same.accessToken.reveal() == credentials.accessToken.reveal());
        require(same.expiresAt == credentials.expiresAt && same.scopes == credentials.scopes);
        require(same.subscriptionType == credentials.subscriptionType);
    }
    return 0;
}
