#pragma once

#include "base/Environment.h"

#include <string>
#include <vector>

// LoginShell: the shell whose search path the user sees.
namespace vellumor::LoginShell {

// The first of `shells` that understands "-ilc", which its name tells, and can be run; where none
// does, the first of zsh, bash and sh in /bin. Looks at the disk.
[[nodiscard]] std::string firstUsable(const std::vector<std::string>& shells);

// The first usable of SHELL and of the entry in the password database. May ask the network's user
// database, so it is asked once at the start.
[[nodiscard]] std::string path(const Environment& environment);

} // namespace vellumor::LoginShell
