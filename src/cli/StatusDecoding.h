#pragma once

#include "status/StatusReport.h"

#include <gio/gio.h>

#include <optional>

// StatusDecoding: what the bus carries, as a report.
namespace vellumor::StatusDecoding {

// The answer to GetAll of dev.quorle.Vellumor1, of type (a{sv}). Nothing when it is no such answer;
// a key that is missing, or of another type, counts as empty, since another program may have the
// name.
[[nodiscard]] std::optional<StatusReport> report(GVariant* answer);

} // namespace vellumor::StatusDecoding
