#pragma once

#include "store/FileCalls.h"

#include <string>
#include <vector>

// DataRemover: deletes what the program keeps, and what it shares with its sibling. Blocks: for the
// worker that writes, as the last thing that it does.
namespace vellumor::DataRemover {

struct Target {
    std::string name; // as the user is told
    std::string url;  // the path, without a closing slash
    bool operator==(const Target&) const = default;
};

enum class Outcome {
    removed,
    absent, // there was nothing
    failed, // some of it is still there
};

struct Result {
    Target target;
    Outcome outcome = Outcome::failed;
    bool operator==(const Result&) const = default;
};

// The two folders below `applicationSupport`, which is Folders::data: "Vellumor" and "Quorle".
[[nodiscard]] std::vector<Target> targets(const std::string& applicationSupport);

// Tries every target, in order, and in each removes what it can. A link is removed and never
// followed. What somebody else puts into a folder meanwhile is removed, too, a few times.
[[nodiscard]] std::vector<Result> execute(const std::vector<Target>& targets);
[[nodiscard]] std::vector<Result> execute(const std::vector<Target>& targets,
                                          const FileCalls& calls);

} // namespace vellumor::DataRemover
