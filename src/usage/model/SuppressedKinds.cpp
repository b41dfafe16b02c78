#include "usage/model/SuppressedKinds.h"

#include "base/Sha256.h"

#include <algorithm>

namespace vellumor::SuppressedKinds {

bool isSuppressed(std::string_view kind, Digests digests)
{
    return std::find(digests.begin(), digests.end(), Sha256::hex(kind)) != digests.end();
}

} // namespace vellumor::SuppressedKinds
