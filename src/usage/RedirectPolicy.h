#pragma once

#include <optional>
#include <string>

// RedirectPolicy: whether a token may go along with a redirect. Pure.
namespace vellumor::RedirectPolicy {

// True unless both hosts are there and equal but for letter case: a sub-domain is another host.
// `fromHost` is that of the first request, not of the hop before.
[[nodiscard]] bool shouldStripAuthorization(const std::optional<std::string>& fromHost,
                                            const std::optional<std::string>& toHost);

} // namespace vellumor::RedirectPolicy
