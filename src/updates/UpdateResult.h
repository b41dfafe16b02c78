#pragma once

#include <string>
#include <variant>

namespace vellumor {

// No feed or no key was built in, so nothing is ever asked.
struct UpdatesNotConfigured {
    bool operator==(const UpdatesNotConfigured&) const = default;
};

struct UpToDate {
    bool operator==(const UpToDate&) const = default;
};

struct UpdateAvailable {
    std::string version; // three numbers
    std::string page;    // of the maker's website, where it can be had
    bool operator==(const UpdateAvailable&) const = default;
};

struct UpdateFailure {
    enum class Kind {
        transport,    // no answer: `detail` says why
        redirected,   // the answer sent us elsewhere, where nobody goes
        http,         // the answer was of `status`
        tooLarge,     // more than a feed may have
        malformed,    // no feed
        badSignature, // not the maker's
        replayed,     // the maker's, and older than one that was seen before
        unusable,     // the maker's, and not for this program
    };

    Kind kind = Kind::transport;
    int status = 0;
    std::string detail;
    bool operator==(const UpdateFailure&) const = default;

    // What the user reads behind "Couldn't check for updates: ".
    [[nodiscard]] std::string description() const;
};

using UpdateResult = std::variant<UpdatesNotConfigured, UpToDate, UpdateAvailable, UpdateFailure>;

} // namespace vellumor
