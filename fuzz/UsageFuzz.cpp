#include "Fuzz.h"

#include "base/Json.h"
#include "base/Text.h"
#include "usage/model/Usage.h"
#include "usage/model/UsageCacheFile.h"

using namespace vellumor;
using fuzz::require;

namespace {

void checkWindow(const LimitWindow& window)
{
    require(!window.scope || !window.scope->empty());
    const std::string title = LimitWindow::title(window.kind, window.scope);
    require(!title.empty() && Text::isValidUtf8(title));
    require(!SuppressedKinds::isSuppressed(window.kind));
}

void checkCredits(const ExtraUsage& extra)
{
    const auto line = extra.creditsLine();
    require(line.has_value() == (extra.display() != ExtraUsage::CreditDisplay::hidden));
    require(!line || Text::isValidUtf8(*line));
}

void checkSelection(const Usage& usage)
{
    const auto others = usage.nonSessionWindows();
    require((usage.worstNonSession() == nullptr) == others.empty());
    for (const LimitWindow& window : others)
        require(window.percent <= usage.worstNonSession()->percent);
    require(usage.sessionWindow() != nullptr || others.size() == usage.windows.size());
}

// What is written reads back, and writes the same again.
void checkRoundTrip(const UsageCacheFile& file)
{
    const Json json = file.encode();
    const auto bytes = writeJson(json, JsonLayout::pretty);
    require(bytes.has_value());
    const auto again = UsageCacheFile::decode(std::string_view(*bytes));
    require(std::holds_alternative<UsageCacheFile>(again));
    require(std::get<UsageCacheFile>(again).encode() == json);
}

} // namespace

// The endpoint's answer, and all that the program makes of it; the same bytes as a cache file, too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    const auto answer = Usage::decode(text, fuzz::now);
    if (const auto* usage = std::get_if<Usage>(&answer)) {
        for (const LimitWindow& window : usage->windows)
            checkWindow(window);
        if (usage->extraUsage)
            checkCredits(*usage->extraUsage);
        checkSelection(*usage);
        const UsageCacheFile file = UsageCacheFile::of(*usage, fuzz::now);
        checkRoundTrip(file);
        require(file.usage().windows.size() == usage->windows.size());
    }
    const auto cached = UsageCacheFile::decode(text);
    if (const auto* file = std::get_if<UsageCacheFile>(&cached)) {
        checkRoundTrip(*file);
        checkSelection(file->usage());
    }
    return 0;
}
