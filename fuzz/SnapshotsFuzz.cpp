#include "Fuzz.h"

#include "base/Json.h"
#include "usage/caches/UsageSnapshotStore.h"

using namespace vellumor;
using fuzz::require;

namespace {

using File = UsageSnapshotStore::File;

std::string written(const File& file)
{
    Json snapshots = Json::object();
    for (const auto& [configDir, snapshot] : file.snapshots)
        snapshots[configDir] = snapshot.encode();
    return writeJson({{"schemaVersion", 1}, {"snapshots", std::move(snapshots)}},
                     JsonLayout::pretty)
        .value();
}

} // namespace

// The last good reading of every account.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const File file = File::decode(fuzz::textOf(bytes, size));
    for (const auto& [configDir, snapshot] : file.snapshots)
        require(snapshot.usage().windows.size() <= snapshot.windows.size());
    // The first text cuts the moments to milliseconds; from there on nothing is lost.
    const std::string text = written(file);
    const File again = File::decode(text);
    require(again.snapshots.size() == file.snapshots.size());
    require(written(again) == text);
    require(File::decode(written(again)).snapshots == again.snapshots);
    return 0;
}
