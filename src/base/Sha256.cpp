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
    std::array<char, crypto_hash_sha256_BYTES * 2 + 1> text{};
    sodium_bin2hex(text.data(), text.size(), digest.data(), digest.size());
    return text.data();
}

std::string first8Hex(std::string_view of)
{
    return hex(Text::composed(of)).substr(0, 8);
}

} // namespace vellumor::Sha256
