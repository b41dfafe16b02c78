#include "accounts/KeychainServiceResolver.h"

#include "base/Sha256.h"
#include "base/Text.h"

#include <algorithm>

namespace vellumor::KeychainServiceResolver {

namespace {

bool contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isOverridden(const Choices& choices)
{
    return choices.override && !choices.override->empty();
}

std::optional<std::string> shortestWithHash(const Choices& choices)
{
    const std::string hash = Sha256::first8Hex(choices.absConfigDir);
    std::optional<std::string> shortest;
    for (const std::string& name : choices.enumerated) {
        if (name.find(hash) != std::string::npos &&
            (!shortest || Text::length(name) < Text::length(*shortest)))
            shortest = name;
    }
    return shortest;
}

Resolved resolved(const std::string& service, const Probe& probe)
{
    return {service, probe.status, probe.plan, probe.expiresAt, std::nullopt};
}

} // namespace

std::optional<std::string> resolve(const Choices& choices)
{
    if (isOverridden(choices))
        return choices.override;
    for (const std::string& candidate : choices.candidates) {
        if (contains(choices.enumerated, candidate))
            return candidate;
    }
    if (auto match = shortestWithHash(choices))
        return match;
    if (choices.candidates.empty())
        return std::nullopt;
    return choices.candidates.front();
}

std::vector<std::string> presentCandidates(const Choices& choices)
{
    std::vector<std::string> present;
    if (isOverridden(choices))
        return present;
    for (const std::string& candidate : choices.candidates) {
        if (contains(choices.enumerated, candidate))
            present.push_back(candidate);
    }
    return present;
}

Resolved resolveLiving(const Choices& choices,
                       const std::function<Probe(const std::string&)>& probe)
{
    const auto service = resolve(choices);
    if (!service)
        return {};
    Resolved primary = resolved(*service, probe(*service));
    const auto present = presentCandidates(choices);
    if (primary.status == TokenStatus::readable || present.size() < 2)
        return primary;
    for (const std::string& other : present) {
        if (other == *service)
            continue;
        Resolved living = resolved(other, probe(other));
        if (living.status == TokenStatus::readable) {
            living.switchedFrom = service;
            return living;
        }
    }
    return primary;
}

} // namespace vellumor::KeychainServiceResolver
