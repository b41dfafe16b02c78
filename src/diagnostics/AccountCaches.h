#pragma once

#include "history/ResetAnchor.h"
#include "history/UsageSample.h"
#include "usage/caches/VscodeStatusCache.h"
#include "usage/model/UsageCacheFile.h"

#include <optional>

namespace vellumor {

// What this machine knows about an account without asking the endpoint.
struct AccountCaches {
    std::optional<UsageCacheFile> shared;
    std::optional<VscodeStatusCache::Snapshot> vscode;
    AnchorsByKind anchors;
    UsageSamples history;
};

} // namespace vellumor
