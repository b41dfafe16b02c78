#pragma once

#include "accounts/TokenStatus.h"
#include "base/Instant.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// KeychainServiceResolver: which credential service belongs to a config directory. Pure but for the
// probe it is given.
namespace vellumor::KeychainServiceResolver {

// What trying one service gave.
struct Probe {
    TokenStatus status = TokenStatus::notFound;
    std::optional<std::string> plan;
    std::optional<Instant> expiresAt;
    bool operator==(const Probe&) const = default;
};

// What came out for a directory.
struct Resolved {
    std::optional<std::string> service;
    TokenStatus status = TokenStatus::notFound;
    std::optional<std::string> plan;
    std::optional<Instant> expiresAt;
    std::optional<std::string> switchedFrom; // the service picked first, when another one was taken
    bool operator==(const Resolved&) const = default;
};

// What is known about the services of one directory.
struct Choices {
    std::string absConfigDir;
    std::vector<std::string> candidates; // best first
    std::optional<std::string> override; // the user's choice; empty counts as none
    std::vector<std::string> enumerated; // what exists
};

// The override; else the first candidate that exists; else the shortest existing name with the
// directory's hash in it; else the first candidate, or nothing.
[[nodiscard]] std::optional<std::string> resolve(const Choices& choices);

// The candidates that exist; none when the user has chosen.
[[nodiscard]] std::vector<std::string> presentCandidates(const Choices& choices);

// Resolves, probes, and takes another present candidate if that one is readable while the first is
// not.
[[nodiscard]] Resolved resolveLiving(const Choices& choices,
                                     const std::function<Probe(const std::string&)>& probe);

} // namespace vellumor::KeychainServiceResolver
