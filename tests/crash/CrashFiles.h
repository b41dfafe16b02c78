#pragma once

#include <array>
#include <string>

// What the writer of the crash test and its judge agree on.
namespace vellumor::test {

// The files that the writer keeps writing, each with a number that only grows.
enum class CrashFile : int { preferences, onboarding, accounts, sharedAccounts, counters };

inline constexpr std::array allCrashFiles = {CrashFile::preferences, CrashFile::onboarding,
                                             CrashFile::accounts, CrashFile::sharedAccounts,
                                             CrashFile::counters};

inline std::string crashPath(const std::string& base, CrashFile file)
{
    switch (file) {
    case CrashFile::preferences:
        return base + "/Vellumor/preferences.json";
    case CrashFile::onboarding:
        return base + "/Vellumor/onboarding.json";
    case CrashFile::accounts:
        return base + "/Vellumor/accounts.json";
    case CrashFile::sharedAccounts:
        return base + "/Quorle/accounts.json";
    case CrashFile::counters:
        return base + "/Quorle/counters.json";
    }
    return {};
}

// The writer's report on standard output: this number stands in this file by now.
struct CrashReport {
    CrashFile file;
    int number;
};

inline const std::string crashAccountDir = "/home/user/.claude-crash";

} // namespace vellumor::test
