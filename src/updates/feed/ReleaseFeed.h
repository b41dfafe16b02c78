#pragma once

#include "updates/feed/ReleaseVersion.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vellumor {

// What the maker says is the newest release. It comes over the network as
//     {"schemaVersion": 1, "release": "<the release's JSON, in base64>", "signature": "<base64>"}
// with an Ed25519 signature of the very bytes of the release's JSON, which are not looked at before
// the signature is found good. docs/releasing.md tells the whole format. Pure.
struct ReleaseFeed {
    static constexpr std::string_view product = "dev.quorle.vellumor";
    static constexpr std::size_t maxSize = std::size_t{16} * 1024;

    using Key = std::array<unsigned char, 32>; // the public half

    enum class Problem {
        tooLarge,
        malformed,    // not of this form
        badSignature, // nobody who has the maker's key wrote it
        newerSchema,  // signed, and of a form that only a newer program knows
        otherProduct, // signed, and about another program
        badRelease,   // signed, and not of the form of a release
        badPage,      // signed, and its page is not one of the maker's website
    };

    int serial = 0; // grows with every feed that is published; at least 1
    ReleaseVersion version;
    std::string page; // https, where the release can be had
    bool operator==(const ReleaseFeed&) const = default;

    // Of 44 characters of base64.
    [[nodiscard]] static std::optional<Key> parseKey(std::string_view base64);

    // `website` is the maker's, of https; the page must lie on that very host.
    [[nodiscard]] static std::variant<ReleaseFeed, Problem>
    decode(std::string_view bytes, const Key& key, std::string_view website);

    // What `decode` does behind the signature.
    [[nodiscard]] static std::variant<ReleaseFeed, Problem> decodeRelease(std::string_view json,
                                                                          std::string_view website);

    // An address that cannot lead anywhere but to `website`, and holds nothing but plain letters,
    // figures and what separates the parts of a path or query.
    [[nodiscard]] static bool isPageOf(std::string_view website, std::string_view page);
};

} // namespace vellumor
