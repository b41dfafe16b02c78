#pragma once

#include "status/sources/StatusInput.h"
#include "store/Folders.h"

// StatusFiles: what the program has left on the disk, for when it does not run. Writes nothing,
// asks nobody, and reads no credential.
namespace vellumor::StatusFiles {

// The accounts of the last scan whose directory is still there, each with the best reading that can
// be had without a request. What cannot be read counts as not there. Blocks.
[[nodiscard]] StatusInput read(const Folders& folders);

// What is told of it. Nobody is fetching, so an account without a reading has none.
[[nodiscard]] StatusReport report(const Folders& folders, Instant now, const ShortTime& shortTime);

} // namespace vellumor::StatusFiles
