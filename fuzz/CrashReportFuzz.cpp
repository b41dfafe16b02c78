#include "Fuzz.h"

#include "base/Json.h"
#include "base/Text.h"
#include "diagnostics/crash/CrashReportScanner.h"
#include "diagnostics/crash/CrashReportState.h"
#include "diagnostics/crash/SupportReport.h"

#include <algorithm>
#include <array>

using namespace vellumor;
using fuzz::require;

namespace {

template <std::size_t size>
bool isOneOf(const std::string& word, const std::array<const char*, size>& words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

void checkWords(const CrashDigest& digest)
{
    constexpr std::array<const char*, 9> areas = {"poller",        "usage",     "keychain", "store",
                                                  "notifications", "telemetry", "selftest", "ui",
                                                  "other"};
    require(isOneOf(digest.area, areas));
    constexpr std::array<const char*, 4> uptimes = {"launch", "short", "long", "unknown"};
    require(isOneOf(digest.uptime, uptimes));
    require(digest.uptime == "unknown" || digest.crashedAt.has_value());
    require(digest.exceptionType == "other" || digest.exceptionType.starts_with("EXC_"));
    require(digest.signal == "other" || digest.signal.starts_with("SIG"));
    require(digest.signature.size() == 8);
    require(digest.signature.find_first_not_of("0123456789abcdef") == std::string::npos);
    require(Text::isValidUtf8(SupportReport::body({"1.0.0", "12.0.0"}, digest, 2)));
}

// Once more makes nothing of it but what a second closure's number or prefix left.
void checkNormalized(std::string_view text)
{
    const std::string once = CrashDigest::normalize(text);
    require(once.size() <= text.size() + 1);
    require(Text::trimmed(once) == once);
}

} // namespace

// A crash report, which anybody may have written: a digest of fixed words comes of it, or none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto text = fuzz::textOf(bytes, size);
    checkNormalized(text);
    const auto report = CrashReportScanner::parse(text, "");
    if (!report)
        return 0;
    const auto digest = CrashDigest::make(report->header, report->body, "Vellumor-1.ips");
    if (!digest)
        return 0;
    checkWords(*digest);
    CrashReportState state;
    state.record(*digest, "2026-03-01", CrashReportState::Sent::yes);
    require(state.isConsumed(*digest) == !digest->incidentID.empty());
    const auto written = state.encode();
    require(written.has_value());
    require(CrashReportState::decode(*written) == state);
    return 0;
}
