#include "Fuzz.h"

#include "base/Json.h"
#include "base/Text.h"
#include "diagnostics/crash/CrashReportScanner.h"
#include "platform/linux/crash/CoreDump.h"
#include "platform/linux/crash/CrashReportText.h"
#include "platform/linux/crash/StackTrace.h"
#include "platform/linux/crash/SymbolName.h"

using namespace vellumor;
using fuzz::require;

namespace {

void checkStack(std::string_view text)
{
    const auto threads = StackTrace::parse(text);
    require(threads.size() <= StackTrace::maxThreads);
    for (const StackTrace::Thread& thread : threads) {
        require(thread.size() <= StackTrace::maxFrames);
        for (const StackTrace::Frame& frame : thread) {
            require(Text::isValidUtf8(frame.module));
            require(frame.module.find('/') == std::string::npos);
            require(!frame.symbol || Text::isValidUtf8(*frame.symbol));
        }
    }
}

} // namespace

// An entry of the journal about a crash: what can be read becomes a report that can be read, and
// that tells the same crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto text = fuzz::textOf(bytes, size);
    checkStack(text);
    (void)SymbolName::readable(text);
    require(SymbolName::withoutParameters(text).size() <= text.size());
    const auto dump = CoreDump::decode(text);
    if (!dump)
        return 0;
    const auto report = CrashReportText::make(*dump, {journalTime(text), "1.0.0"});
    require(report.has_value());
    require(CrashReportText::incidentOf(*report) == dump->incidentID());
    const auto parsed = CrashReportScanner::parse(*report, "");
    require(parsed.has_value());
    const auto digest = CrashDigest::make(parsed->header, parsed->body, "");
    require(digest.has_value());
    require(digest->incidentID == dump->incidentID());
    require(digest->crashedAt == std::chrono::floor<std::chrono::seconds>(dump->crashedAt));
    return 0;
}
