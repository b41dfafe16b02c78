#pragma once

#include "base/Json.h"

#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// A frame of the image with this index: 0 is the program's own, 1 is a library.
inline Json frame(const std::string& symbol, int image = 0)
{
    return {{"symbol", symbol}, {"imageIndex", image}};
}

// The body of a report whose crashed thread, the second, has these frames.
inline Json bodyWith(std::vector<Json> frames)
{
    return {{"exception", {{"type", "EXC_BAD_ACCESS"}, {"signal", "SIGSEGV"}}},
            {"faultingThread", 1},
            {"threads",
             {{{"frames", {frame("idle of Telemetry")}}}, {{"frames", Json(std::move(frames))}}}},
            {"usedImages", {{{"name", "Vellumor"}}, {{"name", "libc.so.6"}}}},
            {"captureTime", "2026-03-01 09:30:00.0000 +0000"},
            {"procLaunch", "2026-03-01 09:29:00.0000 +0000"}};
}

inline Json header(const std::string& incident)
{
    return {{"incident_id", incident}, {"app_version", "1.0.0"}};
}

inline std::string reportText(const Json& head, const Json& body)
{
    return head.dump() + "\n" + body.dump(2);
}

} // namespace vellumor::test
