#include "updates/feed/ReleaseFeed.h"

#include "base/Json.h"
#include "base/StrictReader.h"

#include <sodium.h>

#include <algorithm>

namespace vellumor {

namespace {

using Problem = ReleaseFeed::Problem;
using Signature = std::array<unsigned char, crypto_sign_BYTES>;

static_assert(std::tuple_size_v<ReleaseFeed::Key> == crypto_sign_PUBLICKEYBYTES);

// Nothing when a character is out of place or the padding is missing.
std::optional<std::string> fromBase64(std::string_view text)
{
    std::string bytes(text.size(), '\0');
    std::size_t size = 0;
    const char* end = nullptr;
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(),
                          text.size(), nullptr, &size, &end, sodium_base64_VARIANT_ORIGINAL) != 0 ||
        end != text.data() + text.size())
        return std::nullopt;
    bytes.resize(size);
    return bytes;
}

template <std::size_t size>
std::optional<std::array<unsigned char, size>> exactly(const std::optional<std::string>& bytes)
{
    if (!bytes || bytes->size() != size)
        return std::nullopt;
    std::array<unsigned char, size> array{};
    std::copy(bytes->begin(), bytes->end(), array.begin());
    return array;
}

bool isSigned(std::string_view bytes, const Signature& signature, const ReleaseFeed::Key& key)
{
    return crypto_sign_verify_detached(signature.data(),
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       bytes.size(), key.data()) == 0;
}

bool isPageCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/.-_~?&=+%#").find(c) != std::string_view::npos;
}

} // namespace

std::optional<ReleaseFeed::Key> ReleaseFeed::parseKey(std::string_view base64)
{
    return exactly<crypto_sign_PUBLICKEYBYTES>(fromBase64(base64));
}

std::variant<ReleaseFeed, Problem> ReleaseFeed::decode(std::string_view bytes, const Key& key,
                                                       std::string_view website)
{
    if (bytes.size() > maxSize)
        return Problem::tooLarge;
    const auto json = parseJsonObject(bytes);
    if (!json)
        return Problem::malformed;
    StrictReader reader(*json);
    int schemaVersion = 0;
    std::string release;
    std::string signature;
    reader.required("schemaVersion", schemaVersion);
    reader.required("release", release);
    reader.required("signature", signature);
    if (!reader.good() || schemaVersion != 1)
        return Problem::malformed;
    const auto signedBytes = fromBase64(release);
    const auto signatureBytes = exactly<crypto_sign_BYTES>(fromBase64(signature));
    if (!signedBytes || !signatureBytes)
        return Problem::malformed;
    if (!isSigned(*signedBytes, *signatureBytes, key))
        return Problem::badSignature;
    return decodeRelease(*signedBytes, website);
}

std::variant<ReleaseFeed, Problem> ReleaseFeed::decodeRelease(std::string_view json,
                                                              std::string_view website)
{
    const auto object = parseJsonObject(json);
    if (!object)
        return Problem::badRelease;
    StrictReader reader(*object);
    int schemaVersion = 0;
    reader.required("schemaVersion", schemaVersion);
    if (reader.good() && schemaVersion > 1)
        return Problem::newerSchema;
    ReleaseFeed feed;
    std::string of;
    std::string versionText;
    reader.required("product", of);
    reader.required("serial", feed.serial);
    reader.required("version", versionText);
    reader.required("page", feed.page);
    const auto version = ReleaseVersion::parse(versionText);
    if (!reader.good() || schemaVersion != 1 || feed.serial < 1 || !version)
        return Problem::badRelease;
    if (of != product)
        return Problem::otherProduct;
    if (!isPageOf(website, feed.page))
        return Problem::badPage;
    feed.version = *version;
    return feed;
}

bool ReleaseFeed::isPageOf(std::string_view website, std::string_view page)
{
    constexpr std::string_view scheme = "https://";
    if (!website.starts_with(scheme))
        return false;
    // Scheme and host, so that the slash behind them ends the host.
    const auto origin = website.substr(0, website.find('/', scheme.size()));
    if (origin.size() == scheme.size() || !page.starts_with(origin))
        return false;
    const auto path = page.substr(origin.size());
    return path.starts_with('/') && std::all_of(path.begin(), path.end(), isPageCharacter);
}

} // namespace vellumor
