#include "history/Projection.h"

namespace vellumor::Projection {

std::optional<double> windowLength(std::string_view kind, std::string_view group)
{
    if (kind == "session" || group == "session")
        return 18000.0;
    if (group == "weekly" || kind == "weekly_all" || kind.starts_with("seven_day"))
        return 604800.0;
    return std::nullopt;
}

} // namespace vellumor::Projection
