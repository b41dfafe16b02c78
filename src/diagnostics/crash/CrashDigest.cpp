#include "diagnostics/crash/CrashDigest.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/Sha256.h"
#include "base/StrictReader.h"
#include "base/Text.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace vellumor {

namespace {

constexpr std::string_view ownImage = "Vellumor";
constexpr std::size_t framesLookedAt = 5;
constexpr double launchSeconds = 10.0;
constexpr double shortSeconds = 600.0;

constexpr std::array<std::string_view, 7> exceptionTypes = {
    "EXC_BAD_ACCESS", "EXC_BREAKPOINT", "EXC_CRASH",    "EXC_BAD_INSTRUCTION",
    "EXC_ARITHMETIC", "EXC_GUARD",      "EXC_RESOURCE",
};
constexpr std::array<std::string_view, 6> signals = {
    "SIGSEGV", "SIGABRT", "SIGTRAP", "SIGBUS", "SIGILL", "SIGKILL",
};

struct AreaRow {
    std::string_view substring;
    std::string_view area;
};
// The first that occurs in a frame counts, so that the general words stand behind the particular.
constexpr AreaRow areas[] = {
    {"Poller", "poller"},
    {"PollBudget", "poller"},
    {"ClaimGate", "poller"},
    {"Stagger", "poller"},
    {"UsageClient", "usage"},
    {"UsagePipeline", "usage"},
    {"Projection", "usage"},
    {"RawUsage", "usage"},
    {"Usage", "usage"},
    {"Keychain", "keychain"},
    {"TokenReviver", "keychain"},
    {"SharedCache", "store"},
    {"SharedAccountsStore", "store"},
    {"AccountStore", "store"},
    {"HistoryStore", "store"},
    {"FileStore", "store"},
    {"VscodeStatusCache", "store"},
    {"IdentityFile", "store"},
    {"PresenceMarker", "store"},
    {"AccountDiscovery", "store"},
    {"Notification", "notifications"},
    {"Telemetry", "telemetry"},
    {"SelfTest", "selftest"},
    {"X3Stress", "selftest"},
    {"View", "ui"},
    {"Tab", "ui"},
    {"AppDelegate", "ui"},
    {"AppState", "ui"},
    {"MenuBar", "ui"},
};

// The order counts: after one is removed, the first is tried again.
constexpr std::string_view framePrefixes[] = {
    "partial apply for ",
    "specialized ",
    "thunk for ",
    "reabstraction thunk helper for ",
};

// A member of an object; null pointer when there is none, or `json` is no object.
const Json* member(const Json& json, const char* key)
{
    if (!json.is_object())
        return nullptr;
    const auto found = json.find(key);
    return found == json.end() ? nullptr : &*found;
}

std::optional<std::string> textAt(const Json& json, const char* key)
{
    const Json* value = member(json, key);
    return value == nullptr ? std::nullopt : asString(*value);
}

// The element that the number under `key` of `json` points at in `array`.
const Json* pointedAt(const Json* array, const Json& json, const char* key)
{
    const Json* value = member(json, key);
    const auto index = value == nullptr ? std::nullopt : asInt(*value);
    if (array == nullptr || !array->is_array() || !index || *index < 0 ||
        static_cast<std::size_t>(*index) >= array->size())
        return nullptr;
    return &(*array)[static_cast<std::size_t>(*index)];
}

std::string allowed(std::span<const std::string_view> words, const std::optional<std::string>& word)
{
    const bool isAllowed = word && std::find(words.begin(), words.end(), *word) != words.end();
    return isAllowed ? *word : "other";
}

// The frames of the thread that crashed; null pointer when the report has none.
const Json* faultingFrames(const Json& body)
{
    const Json* thread = pointedAt(member(body, "threads"), body, "faultingThread");
    const Json* frames = thread == nullptr ? nullptr : member(*thread, "frames");
    return frames != nullptr && frames->is_array() ? frames : nullptr;
}

// The name of the image that a frame lies in.
std::optional<std::string> imageName(const Json& body, const Json& frame)
{
    const Json* image = pointedAt(member(body, "usedImages"), frame, "imageIndex");
    return image == nullptr ? std::nullopt : textAt(*image, "name");
}

// The topmost frames of the program itself, normalized.
std::vector<std::string> ownFrames(const Json& body, const Json* frames)
{
    std::vector<std::string> own;
    if (frames == nullptr)
        return own;
    for (const Json& frame : *frames) {
        if (own.size() == framesLookedAt)
            break;
        if (imageName(body, frame) != ownImage)
            continue;
        own.push_back(CrashDigest::normalize(textAt(frame, "symbol").value_or("<unsymbolicated>")));
    }
    return own;
}

std::string signatureText(const Json& body, const Json* frames, const std::vector<std::string>& own)
{
    if (own.empty()) {
        const bool hasFrames = frames != nullptr && !frames->empty();
        return "no-own-frames|" +
               (hasFrames ? imageName(body, frames->front()) : std::nullopt).value_or("unknown");
    }
    std::string text = own.front();
    for (std::size_t i = 1; i < own.size(); ++i)
        text.append("|").append(own[i]);
    return text;
}

std::string areaOf(const std::vector<std::string>& frames)
{
    for (const std::string& frame : frames) {
        for (const AreaRow& row : areas) {
            if (frame.find(row.substring) != std::string::npos)
                return std::string(row.area);
        }
    }
    return "other";
}

bool areDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "2026-03-01 09:30:00.1234 +0100".
std::optional<Instant> parseReportTime(const std::optional<std::string>& text)
{
    constexpr std::string_view form = "2026-03-01 09:30:00.1234 +0100";
    if (!text || text->size() != form.size())
        return std::nullopt;
    const std::string_view all = *text;
    const std::string_view fraction = all.substr(20, 4);
    if (all[10] != ' ' || !areDigits(fraction) || all[24] != ' ')
        return std::nullopt;
    std::string iso(all.substr(0, 10));
    iso.append("T").append(all.substr(11, 9)).append(fraction).append("00"); // six digits
    iso.append(all.substr(25, 3)).append(":").append(all.substr(28, 2));
    return Format::parseISO8601(iso);
}

std::string uptimeBetween(const std::optional<Instant>& launch, const std::optional<Instant>& crash)
{
    const double seconds = launch && crash ? secondsBetween(*launch, *crash) : -1.0;
    if (seconds < 0)
        return "unknown";
    if (seconds < launchSeconds)
        return "launch";
    return seconds < shortSeconds ? "short" : "long";
}

} // namespace

std::optional<CrashDigest> CrashDigest::make(const Json& header, const Json& body,
                                             std::string fileName)
{
    const Json* exception = member(body, "exception");
    if (exception == nullptr || !exception->is_object())
        return std::nullopt;
    const Json* frames = faultingFrames(body);
    const auto own = ownFrames(body, frames);
    CrashDigest digest;
    digest.incidentID =
        textAt(header, "incident_id").value_or(textAt(body, "incident").value_or(std::string()));
    digest.signature = Sha256::first8Hex(signatureText(body, frames, own));
    digest.exceptionType = allowed(exceptionTypes, textAt(*exception, "type"));
    digest.signal = allowed(signals, textAt(*exception, "signal"));
    digest.area = areaOf(own);
    digest.crashedVersion = textAt(header, "app_version").value_or("unknown");
    digest.crashedAt = parseReportTime(textAt(body, "captureTime"));
    digest.uptime = uptimeBetween(parseReportTime(textAt(body, "procLaunch")), digest.crashedAt);
    digest.fileName = std::move(fileName);
    return digest;
}

std::string CrashDigest::normalize(std::string_view frame)
{
    std::string text;
    text.reserve(frame.size());
    for (std::size_t at = 0; at < frame.size();) {
        const char c = frame[at++];
        text += c;
        const auto end =
            c == '#' ? std::min(frame.find_first_not_of("0123456789", at), frame.size()) : at;
        if (end > at)
            text += 'N';
        at = end;
    }
    std::string_view rest = text;
    const auto leads = [&rest](std::string_view prefix) { return rest.starts_with(prefix); };
    for (const auto* prefix = std::begin(framePrefixes); prefix != std::end(framePrefixes);) {
        prefix = std::find_if(std::begin(framePrefixes), std::end(framePrefixes), leads);
        if (prefix != std::end(framePrefixes))
            rest.remove_prefix(prefix->size());
    }
    return std::string(Text::trimmed(rest));
}

} // namespace vellumor
