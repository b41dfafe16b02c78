#include "accounts/TokenStatus.h"

namespace vellumor {

std::string_view name(TokenStatus status)
{
    switch (status) {
    case TokenStatus::readable:
        return "readable";
    case TokenStatus::expired:
        return "expired";
    case TokenStatus::signedOut:
        return "signedOut";
    case TokenStatus::needsApproval:
        return "needsApproval";
    case TokenStatus::notFound:
        break;
    }
    return "notFound";
}

} // namespace vellumor
