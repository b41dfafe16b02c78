#pragma once

#include <string>

// DesktopProgram: the real program, which stands in the panel.
namespace vellumor::DesktopProgram {

// Where it lies beside the file at `front`.
[[nodiscard]] std::string pathBeside(const std::string& front);

// Becomes it, with the same arguments and environment. Comes back only when that fails, with errno.
[[nodiscard]] int become(char** arguments);

} // namespace vellumor::DesktopProgram
