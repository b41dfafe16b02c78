#pragma once

#include "base/Instant.h"
#include "history/Percents.h"
#include "usage/model/Usage.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What one reading said, as the history keeps it.
struct UsageSample {
    Instant at{};      // the reading's fetchedAt
    Percents percents; // by window kind; neither rounded nor clamped

    bool operator==(const UsageSample&) const = default;

    // Of two windows of one kind the later counts.
    [[nodiscard]] static UsageSample of(const Usage& usage);
};

using UsageSamples = std::vector<UsageSample>; // in the order in which they were appended

// The text of a history file: an array of samples. Nothing when a kind is not valid UTF-8 or a
// percent is no finite number.
[[nodiscard]] std::optional<std::string> encodeSamples(const UsageSamples& samples);

// The samples in the bytes of a history file. One element with a missing key, a wrong type or a bad
// date makes it nothing; unknown keys are passed over. Fast for bytes as readFile gives them, with
// spare room behind. A percent that is written as an integer beyond 64 bits spoils the file.
[[nodiscard]] std::optional<UsageSamples> decodeSamples(const std::string& bytes);

} // namespace vellumor
