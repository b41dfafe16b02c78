#include "Fuzz.h"

#include "history/ResetAnchorStore.h"

using namespace vellumor;
using fuzz::require;

namespace {

constexpr std::chrono::seconds week(604800);

void checkEstimate(const ResetAnchor& anchor, const std::string& kind)
{
    const auto next = nextReset(anchor, kind, "weekly", fuzz::now);
    const bool isTold = !anchor.offCadence && kind != "session";
    require(next.has_value() == isTold);
    if (!next)
        return;
    require(*next > fuzz::now && *next <= fuzz::now + week);
    require((*next - anchor.resetsAt) % week == std::chrono::seconds(0));
}

} // namespace

// The anchors of all accounts, and what is told from them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const ResetAnchors anchors = ResetAnchorStore::decode(fuzz::textOf(bytes, size));
    for (const auto& [configDir, byKind] : anchors) {
        for (const auto& [kind, anchor] : byKind)
            checkEstimate(anchor, kind);
    }
    return 0;
}
