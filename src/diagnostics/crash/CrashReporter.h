#pragma once

#include "base/Instant.h"
#include "store/FileStore.h"

#include <functional>
#include <map>
#include <string>

// CrashReporter: tells of the program's crashes, of each once, and of like ones once a day (UTC).
namespace vellumor::CrashReporter {

// What is told of a crash: "exception_type", "signal", "area", "signature", "crashed_version" and
// "uptime".
using Properties = std::map<std::string, std::string, std::less<>>;
using Capture = std::function<void(const Properties& crash)>;

// What came of the reports of one sweep.
struct Summary {
    int reports = 0;    // in the folder
    int captured = 0;   // told of
    int repeated = 0;   // like one that was told of today
    int consumed = 0;   // dealt with in an earlier sweep
    int unreadable = 0; // passed over
    bool operator==(const Summary&) const = default;
};

// Looks through all reports, by file name. What was captured is not asked for again, whatever
// became of it. Blocks; calls `capture` on the calling thread. Writes the state only when it has
// changed.
Summary sweep(const FileStore& files, const std::string& directory, const std::string& stateURL,
              Instant now, const Capture& capture);

} // namespace vellumor::CrashReporter
