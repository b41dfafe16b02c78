// Times the program's own work beside the least that the same work could cost, and prints the ratio
// of the medians. With --check the exit status is 1 when a ratio is above its limit.

#include "Ratio.h"

#include <fmt/core.h>

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string_view>

using namespace vellumor;

namespace {

// Beside the program and not below /tmp, which may lie in memory, where a sync costs nothing.
std::string scratchFolder()
{
    std::string pattern = (std::filesystem::current_path() / "bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        std::abort();
    return pattern;
}

std::vector<bench::Comparison> allComparisons(const std::string& scratch)
{
    std::vector<bench::Comparison> all;
    for (const std::string name : {"files", "history", "home"})
        std::filesystem::create_directory(scratch + "/" + name);
    for (auto& group : {bench::usageDecoding(), bench::fileWriting(scratch + "/files"),
                        bench::usageHistory(scratch + "/history"),
                        bench::accountDiscovery(scratch + "/home"), bench::tick()})
        all.insert(all.end(), group.begin(), group.end());
    return all;
}

} // namespace

int main(int argc, char** argv)
{
    const bool isChecking = argc == 2 && std::string_view(argv[1]) == "--check";
    if (argc > 1 && !isChecking) {
        fmt::print(stderr, "usage: vellumor_bench [--check]\n");
        return 2;
    }
    const QCoreApplication application(argc, argv);
    if (std::freopen("/dev/null", "w", stderr) == nullptr) // for what the program has to say
        return 2;
    const std::string scratch = scratchFolder();
    bool isGood = true;
    fmt::print("{:<42} {:>12} {:>12} {:>7} {:>7}\n", "", "ours", "bare", "ratio", "limit");
    for (const bench::Comparison& comparison : allComparisons(scratch)) {
        const bench::Medians medians = bench::measure(comparison);
        fmt::print("{:<42} {:>9.1f} us {:>9.1f} us {:>7.2f} {:>7.2f}{}\n", comparison.name,
                   medians.oursMicroseconds, medians.bareMicroseconds, medians.ratio(),
                   comparison.limit, medians.ratio() > comparison.limit ? "  above" : "");
        isGood = isGood && medians.ratio() <= comparison.limit;
    }
    std::filesystem::remove_all(scratch);
    return isChecking && !isGood ? 1 : 0;
}
