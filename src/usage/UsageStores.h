#pragma once

#include "async/Serial.h"
#include "history/ReceiptStore.h"
#include "history/ResetAnchorStore.h"
#include "history/UsageHistoryStore.h"
#include "store/Folders.h"
#include "usage/RateLimitLog.h"
#include "usage/caches/SharedCache.h"
#include "usage/caches/UsageSnapshotStore.h"

namespace vellumor {

// What the program keeps about readings, each store touched by one worker alone. Making it makes
// the folders.
struct UsageStores {
    // Everything borrowed outlives the stores.
    UsageStores(Worker& worker, const FileStore& files, const Folders& folders)
        : cache(worker, files, folders.quorle() + "/usage-cache")
        , snapshots(worker, files, folders.vellumor() + "/usage-snapshots.json")
        , history(worker, files, folders.vellumor() + "/history")
        , anchors(worker, files, folders.vellumor() + "/reset-anchors.json")
        , receipts(worker, files, folders.vellumor() + "/receipts")
        , rateLimitLog(worker, files, folders.vellumor() + "/429-log.jsonl")
    {
    }

    Serial<SharedCache> cache;
    Serial<UsageSnapshotStore> snapshots;
    Serial<UsageHistoryStore> history;
    Serial<ResetAnchorStore> anchors;
    Serial<ReceiptStore> receipts;
    Serial<RateLimitLog> rateLimitLog;
};

} // namespace vellumor
