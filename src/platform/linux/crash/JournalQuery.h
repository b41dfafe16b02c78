#pragma once

#include "platform/linux/crash/CoreDump.h"

#include <sys/types.h>

#include <string>
#include <vector>

// JournalQuery: what journalctl is asked, as its arguments. Each answer is a line of JSON. Pure.
namespace vellumor::JournalQuery {

// More crashes than that are not looked at, however many there were.
inline constexpr int maxCrashes = 20;

// The last crashes of a program since then, the latest first. `program` is the name of its file.
// Only what the crash handler wrote in this user's name counts: anybody may tell the journal
// anything of somebody else.
[[nodiscard]] std::vector<std::string> crashes(const std::string& program, uid_t user,
                                               Instant since);

// All that the process which crashed has told the journal, the earliest first.
[[nodiscard]] std::vector<std::string> wordsOf(const CoreDump& dump, uid_t user);

} // namespace vellumor::JournalQuery
