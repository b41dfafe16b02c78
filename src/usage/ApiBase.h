#pragma once

#include "base/Environment.h"

#include <optional>
#include <string>

// ApiBase: where the usage endpoint is.
namespace vellumor::ApiBase {

// `text` without a closing slash when it is an http or https address on this very machine: host
// "localhost", one of 127.0.0.0/8, or ::1; no user, query or fragment. Otherwise nothing.
[[nodiscard]] std::optional<std::string> loopback(const std::string& text);

// The whole address of the usage endpoint. VELLUMOR_API_BASE takes the place of the built-in base
// when it names this machine, so that no variable can send a token anywhere else; any other value
// is ignored with one log line.
[[nodiscard]] std::string usageEndpoint(const Environment& environment,
                                        const std::string& builtInBase);

} // namespace vellumor::ApiBase
