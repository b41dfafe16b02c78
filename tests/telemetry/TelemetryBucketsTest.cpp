#include "telemetry/TelemetryBuckets.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor {

TEST(TelemetryBuckets, theDayIsThatOfUtcWhateverTheZone)
{
    struct Row {
        const char* moment;
        const char* day;
    };
    const Row rows[] = {
        {"2026-03-01T00:00:00Z", "2026-03-01"},        {"2026-03-01T23:59:59.999Z", "2026-03-01"},
        {"2026-03-02T00:00:00Z", "2026-03-02"},        {"2026-03-01T04:30:00+05:30", "2026-02-28"},
        {"2026-12-31T22:00:00-05:00", "2027-01-01"},   {"2024-02-29T12:00:00Z", "2024-02-29"},
        {"1969-12-31T23:59:59.999999Z", "1969-12-31"}, {"0001-01-01T00:00:00Z", "0001-01-01"},
        {"9999-12-31T23:59:59Z", "9999-12-31"},
    };
    for (const auto& [moment, day] : rows) {
        SCOPED_TRACE(moment);
        EXPECT_EQ(TelemetryBuckets::utcDay(test::instant(moment)), day);
    }
}

} // namespace vellumor
