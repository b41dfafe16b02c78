#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

namespace vellumor::test {

// What loop_watch tells of a program: the bytes of the file that VELLUMOR_LOOP_REPORT names, always
// up to date, whatever becomes of the program.
struct LoopReport {
    static constexpr const char* variable = "VELLUMOR_LOOP_REPORT";

    std::uint64_t turns = 0; // spans measured so far
    std::uint64_t longestMicroseconds = 0;
    std::uint64_t longestTurn = 0; // the one that took so long
};

// Nothing while the program has not come to its event loop.
inline std::optional<LoopReport> readLoopReport(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    LoopReport report;
    file.read(reinterpret_cast<char*>(&report), sizeof report);
    return file.gcount() == sizeof report && report.turns > 0 ? std::optional(report)
                                                              : std::nullopt;
}

// Begins anew with the longest, in the file of a program that goes on.
inline void forgetLongest(const std::string& path)
{
    constexpr auto begin = offsetof(LoopReport, longestMicroseconds);
    const std::string nothing(sizeof(LoopReport) - begin, '\0');
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(begin).write(nothing.data(), static_cast<std::streamsize>(nothing.size()));
}

} // namespace vellumor::test
