#include "accounts/ClaudeCredentials.h"

#include "base/InPlaceJson.h"
#include "base/Text.h"

#include <fmt/format.h>

namespace vellumor {

namespace {

constexpr double sparedSeconds = 60.0; // a token that ends this soon is of no more use

std::optional<KeychainError> errorOf(int status)
{
    switch (status) {
    case RawCredential::found:
        return std::nullopt;
    case RawCredential::absent:
        return KeychainError{KeychainError::Kind::notFound};
    case RawCredential::denied:
    case 51:  // no interaction allowed
    case 128: // the user cancelled
        return KeychainError{KeychainError::Kind::userDenied};
    default:
        return KeychainError{KeychainError::Kind::osStatus, status};
    }
}

std::optional<int> hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

// Nothing when the length is odd or a pair is no hexadecimal byte.
std::optional<SecretBytes> dataFromHex(std::string_view text)
{
    if (text.size() % 2 != 0)
        return std::nullopt;
    SecretBytes bytes(text.size() / 2);
    for (std::size_t i = 0; i < text.size() / 2; ++i) {
        const auto high = hexDigit(text[2 * i]);
        const auto low = hexDigit(text[2 * i + 1]);
        if (!high || !low)
            return std::nullopt;
        bytes.bytes()[i] = static_cast<char>(*high * 16 + *low);
    }
    return bytes;
}

// Where the item's text lies in `buffer`: trimmed, out of its hexadecimal form, and with a zero
// byte behind it for the decoder. Null pointer when there is no text.
char* itemText(SecretBytes& buffer)
{
    std::string_view text = Text::trimmed(buffer.view());
    if (text.empty())
        return nullptr;
    if (text.front() != '{') {
        if (auto bytes = dataFromHex(text)) {
            buffer = *std::move(bytes);
            text = buffer.view();
        }
    }
    const auto begin = static_cast<std::size_t>(text.data() - buffer.view().data());
    buffer.keepOnly(begin, text.size());
    return buffer.bytes().data();
}

// Reads optional fields: absent or null leaves `into` empty, another type spoils the item.
class Fields {
public:
    explicit Fields(const InPlaceJson::Value& object)
        : m_object(object)
    {
    }

    [[nodiscard]] const InPlaceJson::Value* find(std::string_view key) const
    {
        return InPlaceJson::find(&m_object, key);
    }

    void text(const char* key, std::optional<std::string>& into)
    {
        const auto* value = find(key);
        if (value == nullptr)
            return;
        if (const auto text = InPlaceJson::textOf(*value))
            into = *text;
        else
            fail();
    }

    void number(const char* key, std::optional<double>& into)
    {
        const auto* value = find(key);
        if (value != nullptr && value->IsNumber())
            into = value->GetDouble();
        else
            m_good = m_good && value == nullptr;
    }

    void texts(const char* key, std::vector<std::string>& into)
    {
        const auto* value = find(key);
        if (value == nullptr)
            return;
        if (!value->IsArray())
            return fail();
        for (const auto& element : value->GetArray()) {
            const auto text = InPlaceJson::textOf(element);
            if (!text)
                return fail();
            into.emplace_back(*text);
        }
    }

    // Checked, and not taken over.
    void unusedText(const char* key)
    {
        const auto* value = find(key);
        m_good = m_good && (value == nullptr || value->IsString());
    }

    void fail() { m_good = false; }
    [[nodiscard]] bool good() const { return m_good; }

private:
    const InPlaceJson::Value& m_object;
    bool m_good = true;
};

// What was decoded; the token still lies in the buffer.
struct Decoded {
    ClaudeCredentials credentials;
    std::string_view token;
};

std::optional<Decoded> decodedFrom(const InPlaceJson& json)
{
    const auto* oauth = InPlaceJson::find(json.root(), "claudeAiOauth");
    if (oauth == nullptr || !oauth->IsObject())
        return std::nullopt;
    Fields fields(*oauth);
    const auto* value = fields.find("accessToken");
    const auto token = value == nullptr ? std::nullopt : InPlaceJson::textOf(*value);
    if (!token)
        return std::nullopt;
    Decoded decoded{{}, *token};
    ClaudeCredentials& credentials = decoded.credentials;
    fields.unusedText("refreshToken");
    fields.number("expiresAt", credentials.expiresAt);
    fields.texts("scopes", credentials.scopes);
    fields.text("subscriptionType", credentials.subscriptionType);
    fields.text("rateLimitTier", credentials.rateLimitTier);
    if (!fields.good())
        return std::nullopt;
    return decoded;
}

} // namespace

std::string KeychainError::description() const
{
    switch (kind) {
    case Kind::osStatus:
        return fmt::format("Keychain OSStatus {}", status);
    case Kind::notFound:
        return "no matching Keychain item";
    case Kind::userDenied:
        return "access denied (Always-Allow not granted)";
    case Kind::unexpectedData:
        break;
    }
    return "Keychain item was not decodable JSON";
}

TokenStatus ClaudeCredentials::tokenStatus(Instant now) const
{
    if (accessToken.empty())
        return TokenStatus::signedOut;
    if (expiresAt && *expiresAt / 1000.0 < secondsSince1970(now) + sparedSeconds)
        return TokenStatus::expired;
    return TokenStatus::readable;
}

std::optional<Instant> ClaudeCredentials::expiry() const
{
    if (!expiresAt)
        return std::nullopt;
    return instantFromSeconds(*expiresAt / 1000.0);
}

std::variant<ClaudeCredentials, KeychainError> ClaudeCredentials::decode(RawCredential raw)
{
    if (const auto error = errorOf(raw.status))
        return *error;
    const KeychainError undecodable{KeychainError::Kind::unexpectedData};
    char* text = itemText(raw.secret);
    if (text == nullptr)
        return undecodable;
    const InPlaceJson json(text, raw.secret.view().size());
    auto decoded = decodedFrom(json);
    if (!decoded)
        return undecodable;
    // The buffer becomes the token's, and all else in it is forgotten.
    raw.secret.keepOnly(static_cast<std::size_t>(decoded->token.data() - text),
                        decoded->token.size());
    decoded->credentials.accessToken = Token(std::move(raw.secret));
    return std::move(decoded->credentials);
}

} // namespace vellumor
