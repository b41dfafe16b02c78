#include "platform/linux/crash/CrashReportText.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "platform/linux/crash/StackTrace.h"
#include "platform/linux/crash/SymbolName.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

namespace vellumor::CrashReportText {

namespace {

constexpr const char* programName = "Vellumor";        // however its file is called
constexpr std::string_view deletedMark = " (deleted)"; // the file was replaced since the start

struct SignalRow {
    std::string_view signal;
    const char* exception;
};
constexpr std::array<SignalRow, 6> exceptions = {{
    {"SIGSEGV", "EXC_BAD_ACCESS"},
    {"SIGBUS", "EXC_BAD_ACCESS"},
    {"SIGABRT", "EXC_CRASH"},
    {"SIGTRAP", "EXC_BREAKPOINT"},
    {"SIGILL", "EXC_BAD_INSTRUCTION"},
    {"SIGFPE", "EXC_ARITHMETIC"},
}};

std::string exceptionType(std::string_view signal)
{
    const auto* row = std::find_if(exceptions.begin(), exceptions.end(),
                                   [&](const SignalRow& each) { return each.signal == signal; });
    return row == exceptions.end() ? "other" : row->exception;
}

// In whole seconds, since the journal tells no more of a crash: of two moments within one second
// neither is the later.
std::string reportTime(Instant instant)
{
    const std::string iso = Format::isoWholeSeconds(instant);
    return iso.substr(0, 10) + " " + iso.substr(11, 8) + ".0000 +0000";
}

// The name of the program's file, which is that of its frames' module.
std::string moduleOf(std::string_view executable)
{
    if (executable.ends_with(deletedMark))
        executable.remove_suffix(deletedMark.size());
    return std::string(executable.substr(executable.rfind('/') + 1)); // npos + 1 is 0
}

// The modules in the order in which the stacks name them, behind the program itself.
class Images {
public:
    explicit Images(std::string own)
        : m_own(std::move(own))
    {
    }

    [[nodiscard]] bool isOwn(const std::string& module) const
    {
        return !module.empty() && module == m_own;
    }

    std::size_t indexOf(const std::string& module)
    {
        if (isOwn(module))
            return 0;
        const std::string name = module.empty() ? "unknown" : module;
        const auto found = std::find(m_names.begin() + 1, m_names.end(), name);
        if (found != m_names.end())
            return static_cast<std::size_t>(found - m_names.begin());
        m_names.push_back(name);
        return m_names.size() - 1;
    }

    [[nodiscard]] Json json() const
    {
        Json images = Json::array();
        for (const std::string& name : m_names)
            images.push_back({{"name", name}});
        return images;
    }

private:
    std::string m_own;
    std::vector<std::string> m_names = {programName};
};

Json frameJson(const StackTrace::Frame& frame, Images& images)
{
    Json json = {{"imageIndex", images.indexOf(frame.module)}};
    if (frame.offset)
        json["imageOffset"] = *frame.offset;
    if (frame.symbol)
        json["symbol"] =
            images.isOwn(frame.module) ? SymbolName::readable(*frame.symbol) : *frame.symbol;
    else if (frame.offset && images.isOwn(frame.module)) // a build without its symbols: the place
        json["symbol"] = fmt::format("+0x{:x}", *frame.offset); // tells crashes of it apart as well
    return json;
}

Json threadsJson(const std::string& message, Images& images)
{
    Json threads = Json::array();
    for (const StackTrace::Thread& thread : StackTrace::parse(message)) {
        Json frames = Json::array();
        for (const StackTrace::Frame& frame : thread)
            frames.push_back(frameJson(frame, images));
        threads.push_back({{"frames", std::move(frames)}});
    }
    return threads;
}

} // namespace

std::optional<std::string> make(const CoreDump& dump, const Known& known)
{
    Json header = {{"app_name", programName},
                   {"incident_id", dump.incidentID()},
                   {"timestamp", reportTime(dump.crashedAt)}};
    if (known.version)
        header["app_version"] = *known.version;
    Images images(moduleOf(dump.executable));
    Json body = {{"captureTime", reportTime(dump.crashedAt)},
                 {"exception", {{"type", exceptionType(dump.signal)}, {"signal", dump.signal}}},
                 {"faultingThread", 0},
                 {"pid", dump.pid},
                 {"threads", threadsJson(dump.message, images)}};
    body["usedImages"] = images.json();
    if (known.launchedAt)
        body["procLaunch"] = reportTime(*known.launchedAt);
    const auto first = writeJson(std::move(header), JsonLayout::compact, JsonSlashes::plain);
    const auto second = writeJson(std::move(body), JsonLayout::pretty, JsonSlashes::plain);
    if (!first || !second)
        return std::nullopt;
    return *first + "\n" + *second + "\n";
}

std::string fileName(Instant crashedAt, int number)
{
    std::string stamp = Format::isoWholeSeconds(crashedAt);
    stamp[10] = '-';
    stamp.pop_back();
    std::erase(stamp, ':');
    const std::string suffix = number > 1 ? fmt::format("-{}", number) : std::string();
    return fmt::format("{}-{}{}.ips", programName, stamp, suffix);
}

std::optional<std::string> incidentOf(const std::string& report)
{
    const auto header = parseJsonObject(std::string_view(report).substr(0, report.find('\n')));
    if (!header || !header->contains("incident_id"))
        return std::nullopt;
    return asString(header->at("incident_id"));
}

} // namespace vellumor::CrashReportText
