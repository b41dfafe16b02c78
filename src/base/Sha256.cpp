#include "base/Sha256.h"

#include "base/Text.h"

#include <sodium.h>

#include <array>

namespace vellumor::Sha256 {

std::string hex(std::string_view bytes)
{
    std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
    crypto_hash_sha256(digest.data(), reinterpret_cast<const unsigned char*>(bytes.data()),
                       bytes.size());
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * digest.size());
    for (const unsigned char byte : digest) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

std::string first8Hex(std::string_view of)
{
    return hex(Text::composed(of)).substr(0, 8);
}

} // namespace vellumor::Sha256
