#pragma once

#include "simulation/Watch.h"

namespace vellumor::simulation {

struct FixedPollScenario {
    int accounts = 1;
    int programs = 1;     // that poll, each for itself
    double interval = 60; // seconds
    double days = 7;
};

// What a plain program does: all accounts at once, at a fixed interval, as long as the machine
// runs; what was refused is simply asked again the next time. Against the same endpoint.
[[nodiscard]] Figures fixedPoll(const FixedPollScenario& scenario);

} // namespace vellumor::simulation
