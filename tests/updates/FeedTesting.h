#pragma once

#include "updates/feed/ReleaseFeed.h"

#include <sodium.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace vellumor::test {

inline std::string toBase64(std::string_view bytes)
{
    constexpr int variant = sodium_base64_VARIANT_ORIGINAL;
    std::string text(sodium_base64_encoded_len(bytes.size(), variant), '\0');
    sodium_bin2base64(text.data(), text.size(),
                      reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), variant);
    text.pop_back(); // the null byte
    return text;
}

// A pair of keys of the test's own, the same for the same seed.
class Maker {
public:
    explicit Maker(unsigned char seed = 1)
    {
        std::array<unsigned char, crypto_sign_SEEDBYTES> bytes{seed};
        if (crypto_sign_seed_keypair(m_publicKey.data(), m_secretKey.data(), bytes.data()) != 0)
            throw std::runtime_error("no keys can be made");
    }

    [[nodiscard]] const ReleaseFeed::Key& key() const { return m_publicKey; }
    [[nodiscard]] std::string keyText() const
    {
        return toBase64({reinterpret_cast<const char*>(m_publicKey.data()), m_publicKey.size()});
    }
    [[nodiscard]] std::string signatureOf(std::string_view bytes) const
    {
        std::string signature(crypto_sign_BYTES, '\0');
        crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                             reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                             m_secretKey.data());
        return signature;
    }
    // The feed around a release's JSON.
    [[nodiscard]] std::string feedOf(std::string_view release) const
    {
        return R"({"schemaVersion": 1, "release": ")" + toBase64(release) + R"(", "signature": ")" +
               toBase64(signatureOf(release)) + R"("})";
    }

private:
    ReleaseFeed::Key m_publicKey{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> m_secretKey{};
};

inline constexpr std::string_view website = "https://maker.example.org";

inline std::string release(const std::string& version, int serial,
                           const std::string& page = "https://maker.example.org/vellumor")
{
    return R"({"schemaVersion": 1, "product": "dev.quorle.vellumor", "serial": )" +
           std::to_string(serial) + R"(, "version": ")" + version + R"(", "page": ")" + page +
           R"("})";
}

} // namespace vellumor::test
