#pragma once

#include <string_view>

namespace vellumor {

// The part of the program that speaks. The text of each tag stands in Log.cpp.
enum class Tag {
    main,
    accounts,
    usage,
    poller,
    stagger,
    pipeline,
    revive,
    fileStore,
    sharedAccountsStore
};

// Writes "[tag] text" as one line to standard error, which the journal takes up where there is one.
// Control characters are replaced, so that no name can forge a line. Callable from any thread.
// Never give it a token, a mail address or an organisation's name.
void log(Tag tag, std::string_view text);

// The same about one account, by its display name: "[tag] name: text".
void log(Tag tag, std::string_view accountName, std::string_view text);

} // namespace vellumor
