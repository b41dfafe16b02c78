#pragma once

#include <string>

// ExportPanel: asks where a file is to go, in the desktop's own dialog, and writes it there.
namespace vellumor::ExportPanel {

// Comes back at once. The file is written beside the main thread, and takes the place of one that
// is there only when it is whole; a failure is one log line. Cancelling does nothing.
void save(const std::string& suggestedName, std::string bytes);

} // namespace vellumor::ExportPanel
