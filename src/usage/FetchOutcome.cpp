#include "usage/FetchOutcome.h"

namespace vellumor {

std::string_view name(UsageSource source)
{
    switch (source) {
    case UsageSource::endpoint:
        return "endpoint";
    case UsageSource::cli:
        return "cli";
    case UsageSource::sharedCache:
        return "sharedCache";
    case UsageSource::vscodeCache:
        return "vscodeCache";
    case UsageSource::snapshot:
        break;
    }
    return "snapshot";
}

} // namespace vellumor
