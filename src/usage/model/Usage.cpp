#include "usage/model/Usage.h"

#include "base/Format.h"
#include "base/Json.h"
#include "usage/model/RawUsage.h"

#include <iterator>
#include <set>

namespace vellumor {

namespace {

// The older shape's objects as windows, in this order.
struct SynthesisSlot {
    const char* key;
    const char* kind;
    const char* group;
};

constexpr SynthesisSlot synthesisSlots[] = {
    {"five_hour", "session", "session"},
    {"seven_day", "weekly_all", "weekly"},
    {"seven_day_opus", "seven_day_opus", "weekly"},
    {"seven_day_sonnet", "seven_day_sonnet", "weekly"},
    {"seven_day_oauth_apps", "seven_day_oauth_apps", "weekly"},
    {"seven_day_cowork", "seven_day_cowork", "weekly"},
};

std::optional<Instant> parsedDate(const std::optional<std::string>& text)
{
    return text ? Format::parseISO8601(*text) : std::nullopt;
}

LimitWindow windowOf(RawUsage::Limit limit)
{
    LimitWindow window;
    window.resetsAt = parsedDate(limit.resetsAt);
    window.kind = std::move(limit.kind).value_or("unknown");
    window.group = std::move(limit.group).value_or("");
    window.percent = limit.percent.value_or(0);
    window.severity = std::move(limit.severity).value_or("normal");
    window.isActive = limit.isActive.value_or(window.resetsAt.has_value());
    window.scope = std::move(limit.scope);
    return window;
}

LimitWindow windowOf(const RawUsage::Slot& slot, const SynthesisSlot& synthesis)
{
    LimitWindow window;
    window.kind = synthesis.kind;
    window.group = synthesis.group;
    window.percent = slot.utilization.value_or(0);
    window.resetsAt = parsedDate(slot.resetsAt);
    window.isActive = window.resetsAt.has_value();
    return window;
}

} // namespace

const LimitWindow* Usage::sessionWindow() const
{
    for (const LimitWindow& window : windows) {
        if (window.kind == "session")
            return &window;
    }
    return nullptr;
}

std::vector<LimitWindow> Usage::nonSessionWindows() const
{
    std::vector<LimitWindow> others;
    for (const LimitWindow& window : windows) {
        if (window.kind != "session")
            others.push_back(window);
    }
    return others;
}

const LimitWindow* Usage::worstNonSession() const
{
    const LimitWindow* worst = nullptr;
    for (const LimitWindow& window : windows) {
        if (window.kind != "session" && (worst == nullptr || window.percent > worst->percent))
            worst = &window;
    }
    return worst;
}

std::variant<Usage, Usage::DecodeError> Usage::decode(std::string_view bytes, Instant fetchedAt,
                                                      SuppressedKinds::Digests suppressed)
{
    const auto json = RawUsage::parse(bytes);
    if (!json)
        return DecodeError{"the answer is not JSON that can be read"};
    if (!json->is_object())
        return DecodeError{"the answer is not a JSON object"};
    const RawUsage raw(*json);
    Usage usage;
    usage.fetchedAt = fetchedAt;
    std::set<std::string, std::less<>> seen;
    auto limits = raw.limits();
    usage.windows.reserve(limits.size() + std::size(synthesisSlots));
    for (RawUsage::Limit& limit : limits) {
        if (limit.kind && SuppressedKinds::isSuppressed(*limit.kind, suppressed))
            continue;
        usage.windows.push_back(windowOf(std::move(limit)));
        seen.insert(usage.windows.back().kind);
    }
    for (const SynthesisSlot& synthesis : synthesisSlots) {
        const auto slot = raw.slot(synthesis.key);
        if (!slot || seen.contains(synthesis.kind) ||
            SuppressedKinds::isSuppressed(synthesis.kind, suppressed))
            continue;
        usage.windows.push_back(windowOf(*slot, synthesis));
        seen.insert(synthesis.kind);
    }
    usage.extraUsage = raw.extraUsage();
    return usage;
}

} // namespace vellumor
