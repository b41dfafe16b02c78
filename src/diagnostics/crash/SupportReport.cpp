#include "diagnostics/crash/SupportReport.h"

#include "base/Format.h"
#include "base/PlatformWords.h"
#include "base/Text.h"
#include "base/Version.h"
#include "store/FileReader.h"
#include "telemetry/OsRelease.h"

#include <fmt/format.h>

#include <sys/utsname.h>

#include <algorithm>
#include <array>

namespace vellumor::SupportReport {

namespace {

constexpr const char* digits = "0123456789";

// The first three numbers of "6.1.0-18-amd64", with 0 for each that is missing; nothing when it
// begins with none.
std::optional<std::string> threeNumbers(std::string_view version)
{
    std::array<std::string_view, 3> numbers = {"", "0", "0"};
    for (std::string_view& number : numbers) {
        const auto end = std::min(version.find_first_not_of(digits), version.size());
        if (end == 0)
            break;
        number = version.substr(0, end);
        version.remove_prefix(end);
        if (!version.starts_with('.'))
            break;
        version.remove_prefix(1);
    }
    if (numbers.front().empty())
        return std::nullopt;
    return fmt::format("{}.{}.{}", numbers[0], numbers[1], numbers[2]);
}

// "2026-03-01 09:30:00 UTC"
std::string utcText(Instant instant)
{
    const std::string iso = Format::isoWholeSeconds(instant);
    return iso.substr(0, 10) + " " + iso.substr(11, 8) + " UTC";
}

std::string encoded(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (unreserved.find(c) != std::string_view::npos)
            result += c;
        else
            result += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return result;
}

} // namespace

Environment Environment::current()
{
    std::string release;
    for (const std::string_view file : OsRelease::files) {
        FileContents contents = readFile(std::string(file));
        if (contents.status == ReadStatus::ok) {
            release = std::move(contents.bytes);
            break;
        }
    }
    utsname names{};
    const bool isNamed = ::uname(&names) == 0;
    return {std::string(version), SupportReport::osVersion(release, isNamed ? names.release : "")};
}

std::string osVersion(std::string_view osRelease, std::string_view kernelRelease)
{
    if (auto numbers = threeNumbers(OsRelease::value(osRelease, "VERSION_ID")))
        return *std::move(numbers);
    return threeNumbers(kernelRelease).value_or("0.0.0");
}

std::string subject(std::string_view appVersion, const Crash& crash)
{
    if (!crash)
        return fmt::format("Vellumor {} — problem report", appVersion);
    return fmt::format("Vellumor {} — crash report [{}]", appVersion, crash->signature);
}

std::string facts(const Environment& environment, const Crash& crash, int crashCount)
{
    std::string text = fmt::format("app: {}\n{}: {}", environment.appVersion,
                                   PlatformWords::systemName, environment.osVersion);
    if (!crash)
        return text;
    text += crashCount <= 1 ? "\ncrash:" : fmt::format("\nmost recent crash (of {}):", crashCount);
    return text + fmt::format("\n  - ref: {}\n  - timestamp: {}", crash->signature,
                              crash->crashedAt ? utcText(*crash->crashedAt) : "unknown");
}

std::string body(const Environment& environment, const Crash& crash, int crashCount)
{
    std::string text;
    if (crash)
        text = fmt::format("--- Please attach the crash report file to this email ---\n\n"
                           "1. In Vellumor, open Settings → About and click \"Show Reports\".\n"
                           "2. Attach the file named {} to this email.\n\n{}\n\n",
                           crash->fileName, PlatformWords::crashReportHolds);
    text += "--- Details (please describe the problem here) ---\n\n"
            "- What happened?\n- What were you doing at the time?\n\n"
            "--- Facts (please keep this section as is) ---\n\n";
    return text + facts(environment, crash, crashCount);
}

std::string instructions(std::string_view fileName)
{
    return fmt::format(
        "\"Copy Details\" puts a report template on your clipboard — paste it into your email, "
        "fill in the details, and attach the crash report: {} "
        "(\"Show Reports\" will take you to it).",
        fileName);
}

std::string statusLine(int crashCount)
{
    if (crashCount == 0)
        return "Vellumor reported no recent issues.";
    if (crashCount == 1)
        return "Vellumor stopped working unexpectedly once recently.";
    return fmt::format("Vellumor stopped working unexpectedly {} times recently.", crashCount);
}

std::string mailtoLink(std::string_view subject, std::string_view body)
{
    // The lines of a mail end in both characters, in a link too.
    const std::string lines = Text::replaced(std::string(body), "\n", "\r\n");
    return fmt::format("mailto:?subject={}&body={}", encoded(subject), encoded(lines));
}

} // namespace vellumor::SupportReport
