// Times the program's own work beside the least that the same work could cost, and prints the ratio
// of the medians. With --check the exit status is 1 when a ratio is above its limit, or a time
// above the most that it may be. With --only TEXT just the rows are measured whose name has it.

#include "Ratio.h"

#include <fmt/core.h>

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
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

// No display, and no bus, for which Qt would start a thread.
void isolate(const std::string& scratch)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(scratch));
}

std::vector<bench::Comparison> allComparisons(const std::string& scratch)
{
    std::vector<bench::Comparison> all;
    for (const std::string name : {"files", "history", "home"})
        std::filesystem::create_directory(scratch + "/" + name);
    for (auto& group :
         {bench::usageDecoding(), bench::fileWriting(scratch + "/files"),
          bench::usageHistory(scratch + "/history"), bench::accountDiscovery(scratch + "/home"),
          bench::tick(), bench::labels(), bench::popoverTick(), bench::notifications(),
          bench::charts(), bench::scrubber()})
        all.insert(all.end(), group.begin(), group.end());
    return all;
}

struct Options {
    bool isChecking = false;
    std::string only; // part of a row's name; empty: every row
};

std::optional<Options> read(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "--check")
            options.isChecking = true;
        else if (option == "--only" && i + 1 < argc)
            options.only = argv[++i];
        else
            return std::nullopt;
    }
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    const auto options = read(argc, argv);
    if (!options) {
        fmt::print(stderr, "usage: vellumor_bench [--check] [--only TEXT]\n");
        return 2;
    }
    if (std::freopen("/dev/null", "w", stderr) == nullptr) // for what the program has to say
        return 2;
    const std::string scratch = scratchFolder();
    isolate(scratch);
    const QApplication application(argc, argv);
    bool isGood = true;
    fmt::print("{:<42} {:>12} {:>12} {:>7} {:>7}\n", "", "ours", "bare", "ratio", "limit");
    for (const bench::Comparison& comparison : allComparisons(scratch)) {
        if (comparison.name.find(options->only) == std::string::npos)
            continue;
        const bench::Medians medians = bench::measure(comparison);
        fmt::print("{:<42} {:>9.1f} us {:>9.1f} us {:>7.2f} {:>7.2f}{}\n", comparison.name,
                   medians.oursMicroseconds, medians.bareMicroseconds, medians.ratio(),
                   comparison.limit, medians.isGood(comparison) ? "" : "  above");
        isGood = isGood && medians.isGood(comparison);
    }
    std::filesystem::remove_all(scratch);
    return options->isChecking && !isGood ? 1 : 0;
}
