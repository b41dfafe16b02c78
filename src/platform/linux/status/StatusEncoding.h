#pragma once

#include "status/StatusReport.h"

#include <QList>
#include <QVariantMap>

namespace vellumor {

// As the bus carries it: aa{sv}.
using StatusMaps = QList<QVariantMap>;

// StatusEncoding: a report as the bus carries it. docs/bus.md describes it.
namespace StatusEncoding {

// Once in a process, before anything of it is sent.
void registerTypes();

[[nodiscard]] StatusMaps accounts(const StatusReport& report);
// Microseconds since 1970 in UTC; 0 for none.
[[nodiscard]] qlonglong moment(const std::optional<Instant>& instant);

} // namespace StatusEncoding

} // namespace vellumor

Q_DECLARE_METATYPE(vellumor::StatusMaps)
