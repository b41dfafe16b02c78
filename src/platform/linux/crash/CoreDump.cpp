#include "platform/linux/crash/CoreDump.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"

#include <fmt/format.h>

#include <charconv>
#include <csignal>

namespace vellumor {

namespace {

constexpr std::size_t bootIdSize = 32;

// The journal writes every field as a text, or as a list where it is none or there are several.
std::string textAt(const Json& entry, const char* key)
{
    const auto found = entry.find(key);
    return found == entry.end() ? std::string() : asString(*found).value_or(std::string());
}

std::optional<std::int64_t> numberAt(const Json& entry, const char* key)
{
    const std::string text = textAt(entry, key);
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end || number < 0)
        return std::nullopt;
    return number;
}

// Microseconds since 1970; nothing beyond the year 9999, which no date can be written of.
std::optional<Instant> timeAt(const Json& entry, const char* key)
{
    const auto micros = numberAt(entry, key);
    const Instant last = *Format::parseISO8601("9999-12-31T23:59:59Z");
    if (!micros || *micros > last.time_since_epoch().count())
        return std::nullopt;
    return Instant(std::chrono::microseconds(*micros));
}

bool isBootId(std::string_view text)
{
    return text.size() == bootIdSize &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Entries of older systems tell the number alone.
std::string signalOf(const Json& entry)
{
    std::string name = textAt(entry, "COREDUMP_SIGNAL_NAME");
    if (!name.empty())
        return name;
    switch (numberAt(entry, "COREDUMP_SIGNAL").value_or(0)) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGABRT:
        return "SIGABRT";
    case SIGTRAP:
        return "SIGTRAP";
    case SIGBUS:
        return "SIGBUS";
    case SIGILL:
        return "SIGILL";
    case SIGFPE:
        return "SIGFPE";
    default:
        return "unknown";
    }
}

} // namespace

std::optional<CoreDump> CoreDump::decode(std::string_view line)
{
    const auto entry = parseJsonObject(line);
    if (!entry)
        return std::nullopt;
    auto crashedAt = timeAt(*entry, "COREDUMP_TIMESTAMP");
    if (!crashedAt) // when the dump was over, then
        crashedAt = timeAt(*entry, "__REALTIME_TIMESTAMP");
    const auto pid = numberAt(*entry, "COREDUMP_PID");
    CoreDump dump;
    dump.bootId = textAt(*entry, "_BOOT_ID");
    if (!crashedAt || !pid || !isBootId(dump.bootId))
        return std::nullopt;
    dump.crashedAt = *crashedAt;
    dump.pid = *pid;
    dump.executable = textAt(*entry, "COREDUMP_EXE");
    dump.signal = signalOf(*entry);
    dump.message = textAt(*entry, "MESSAGE");
    return dump;
}

std::string CoreDump::incidentID() const
{
    return fmt::format("{}-{}-{}", bootId, pid, crashedAt.time_since_epoch().count());
}

std::optional<Instant> journalTime(std::string_view line)
{
    const auto entry = parseJsonObject(line);
    return entry ? timeAt(*entry, "__REALTIME_TIMESTAMP") : std::nullopt;
}

} // namespace vellumor
