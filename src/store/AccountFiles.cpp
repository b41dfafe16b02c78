#include "store/AccountFiles.h"

#include "base/Sha256.h"

#include <filesystem>
#include <set>

namespace vellumor::AccountFiles {

namespace {

std::string fileName(const std::string& configDir)
{
    return Sha256::first8Hex(configDir) + ".json";
}

// The names of the entries to remove: read first, so that removing does not disturb the listing.
std::vector<std::filesystem::path> forgottenEntries(const std::string& dir,
                                                    const std::set<std::string>& keptNames)
{
    std::vector<std::filesystem::path> forgotten;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(dir, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.ends_with(".json") && !keptNames.contains(name))
            forgotten.push_back(entry->path());
    }
    if (error)
        return {};
    return forgotten;
}

} // namespace

std::string path(const std::string& dir, const std::string& configDir)
{
    return dir + "/" + fileName(configDir);
}

void prune(const std::string& dir, const std::vector<std::string>& keptConfigDirs)
{
    std::set<std::string> keptNames;
    for (const std::string& configDir : keptConfigDirs)
        keptNames.insert(fileName(configDir));
    for (const auto& entry : forgottenEntries(dir, keptNames)) {
        std::error_code ignored;
        std::filesystem::remove(entry, ignored);
    }
}

} // namespace vellumor::AccountFiles
