#pragma once

#include "base/Environment.h"
#include "base/RunJob.h"
#include "store/FileStore.h"

#include <optional>
#include <string>

namespace vellumor {

// Which version of the first-run flow the user has been through; 0 means never.
struct OnboardingState {
    static constexpr int currentVersion = 1;

    int schemaVersion = 1;
    int completedVersion = 0;
    bool operator==(const OnboardingState&) const = default;

    // Nothing when a key is missing or of a wrong type, or the version is newer than 1.
    [[nodiscard]] static std::optional<OnboardingState> decode(std::string_view bytes);
    [[nodiscard]] std::optional<std::string> encode() const;
};

// Main thread only. A file that is missing or unusable counts as "never".
class OnboardingStore {
public:
    // Loads; creates nothing. `files` outlives the store.
    OnboardingStore(const FileStore& files, std::string fileURL, RunJob runJob);

    void setCurrent(const OnboardingState& state); // handed to `runJob` at once, to be written
    [[nodiscard]] const OnboardingState& current() const { return m_current; }

    // VELLUMOR_ONBOARDING decides first: "show" or "skip"; otherwise the flow is shown until it was
    // completed once.
    [[nodiscard]] bool shouldShow(const Environment& environment) const;

private:
    const FileStore& m_files;
    std::string m_fileURL;
    RunJob m_runJob;
    OnboardingState m_current;
};

} // namespace vellumor
