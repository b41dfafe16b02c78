#pragma once

#include "base/Json.h"
#include "status/StatusReport.h"

#include <string>

// StatusJson: a report for scripts, as docs/status.md describes it. Pure.
namespace vellumor::StatusJson {

// Without a line end. A text that is empty is left out, and so is a moment that is not known.
[[nodiscard]] std::string text(const StatusReport& report, StatusOrigin origin, Instant now,
                               JsonLayout layout);

} // namespace vellumor::StatusJson
