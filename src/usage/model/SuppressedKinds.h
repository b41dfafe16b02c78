#pragma once

#include <array>
#include <span>
#include <string_view>

namespace vellumor {

namespace SharedLists {

// SHA-256 of each kind that must never reach the user, the history or telemetry. The kinds
// themselves are nowhere in the program.
inline constexpr std::array<std::string_view, 8> suppressedKindHashes = {
    "25220735ae27540c0aa89c8f8cb678be31212c528af1c24e0c40dbd46e1b2588",
    "5aa29a9fbc9866e9460f549453ca87ed9d798b03c5dca4dfb90ecb342e704391",
    "6f5617aaa54db4278d2183c0b3b539be00d0a675f2e65e19cca3d087115c122c",
    "78ff8a19f64a780a9e156fc4ca88efd4f671b55bcd4ef301535e9787ce956285",
    "9bbc112d2d8c6c961600b34674d97c092aebffc44ac4c96b35227ee88644552e",
    "a97fe0fbc627519db7de48e10710660a0ad48dd02793eff5dcf48661c745a61f",
    "be6089ac02d935e5c2fcb65c817cc76a025a6a9a9c2d5a1282d50ff97bffbb91",
    "ccda1943c59be382794c8b0bf7891cb464df595b343715b8b9216c1ec817d176",
};

} // namespace SharedLists

namespace SuppressedKinds {

using Digests = std::span<const std::string_view>;

[[nodiscard]] bool isSuppressed(std::string_view kind,
                                Digests digests = SharedLists::suppressedKindHashes);

} // namespace SuppressedKinds

} // namespace vellumor
