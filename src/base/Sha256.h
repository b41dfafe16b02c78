#pragma once

#include <string>
#include <string_view>

namespace vellumor::Sha256 {

// The digest of the bytes in 64 lower-case hexadecimal digits (FIPS 180-4).
[[nodiscard]] std::string hex(std::string_view bytes);

// The first eight digits of the digest of the text's composed form (NFC): names the files of one
// account, and the credential of one config directory.
[[nodiscard]] std::string first8Hex(std::string_view of);

} // namespace vellumor::Sha256
