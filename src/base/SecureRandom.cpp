#include "base/SecureRandom.h"

#include <fmt/format.h>
#include <sodium.h>

#include <array>

namespace vellumor::SecureRandom {

std::uint32_t below(std::uint32_t bound)
{
    return randombytes_uniform(bound);
}

std::string uuid()
{
    std::array<unsigned char, 16> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80); // the RFC's variant
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += fmt::format("{:02X}", bytes[i]);
    }
    return text;
}

} // namespace vellumor::SecureRandom
