#include "Fuzz.h"

#include "updates/feed/ReleaseFeed.h"

#include <sodium.h>

#include <string>

using namespace vellumor;
using fuzz::require;

namespace {

constexpr std::string_view website = "https://maker.example.org";

struct Maker {
    ReleaseFeed::Key key{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secret{};

    Maker()
    {
        const std::array<unsigned char, crypto_sign_SEEDBYTES> seed{1};
        require(crypto_sign_seed_keypair(key.data(), secret.data(), seed.data()) == 0);
    }
};

std::string toBase64(const unsigned char* bytes, std::size_t size)
{
    constexpr int variant = sodium_base64_VARIANT_ORIGINAL;
    std::string text(sodium_base64_encoded_len(size, variant), '\0');
    sodium_bin2base64(text.data(), text.size(), bytes, size, variant);
    text.pop_back();
    return text;
}

std::string signedFeed(const Maker& maker, const std::uint8_t* bytes, std::size_t size)
{
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    crypto_sign_detached(signature.data(), nullptr, bytes, size, maker.secret.data());
    return R"({"schemaVersion":1,"release":")" + toBase64(bytes, size) + R"(","signature":")" +
           toBase64(signature.data(), signature.size()) + R"("})";
}

void checkRelease(const std::variant<ReleaseFeed, ReleaseFeed::Problem>& decoded)
{
    const auto* feed = std::get_if<ReleaseFeed>(&decoded);
    if (feed == nullptr)
        return;
    require(feed->serial >= 1);
    require(ReleaseVersion::parse(feed->version.text()) == feed->version);
    require(feed->page.starts_with("https://maker.example.org/"));
    for (const char c : feed->page)
        require(c > ' ' && c < '\x7f' && c != '"' && c != '\\' && c != '@');
}

} // namespace

// A release feed. As a whole nothing of it gets past the signature; signed, it is what is in it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const Maker maker;
    const auto text = fuzz::textOf(bytes, size);
    require(!std::holds_alternative<ReleaseFeed>(ReleaseFeed::decode(text, maker.key, website)));
    const auto release = ReleaseFeed::decodeRelease(text, website);
    checkRelease(release);
    require(ReleaseFeed::decode(signedFeed(maker, bytes, size), maker.key, website) == release);
    (void)ReleaseFeed::parseKey(text);
    return 0;
}
