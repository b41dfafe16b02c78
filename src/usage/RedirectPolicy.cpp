#include "usage/RedirectPolicy.h"

#include <algorithm>

namespace vellumor::RedirectPolicy {

namespace {

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool shouldStripAuthorization(const std::optional<std::string>& fromHost,
                              const std::optional<std::string>& toHost)
{
    if (!fromHost || !toHost || fromHost->empty() || toHost->empty())
        return true;
    return !std::equal(fromHost->begin(), fromHost->end(), toHost->begin(), toHost->end(),
                       [](char from, char to) { return lowered(from) == lowered(to); });
}

} // namespace vellumor::RedirectPolicy
