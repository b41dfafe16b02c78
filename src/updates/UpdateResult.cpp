#include "updates/UpdateResult.h"

#include <fmt/format.h>

namespace vellumor {

std::string UpdateFailure::description() const
{
    switch (kind) {
    case Kind::transport:
        return detail;
    case Kind::redirected:
        return "the server sent us somewhere else";
    case Kind::http:
        return fmt::format("the server answered with status {}", status);
    case Kind::tooLarge:
        return "the answer is too large";
    case Kind::malformed:
        return "the answer can't be read";
    case Kind::badSignature:
        return "the answer isn't signed by the maker";
    case Kind::replayed:
        return "the answer is older than one seen before";
    case Kind::unusable:
        return "the answer isn't for this version of Vellumor";
    }
    return {};
}

} // namespace vellumor
