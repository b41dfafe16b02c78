#pragma once

#include "app/state/AppWorld.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace vellumor::test {

using Names = std::vector<std::string>;

// What the tests of AppState have in common.
struct AppStateTesting : testing::Test, AppWorld {
    [[nodiscard]] static Names namesOf(const std::vector<Account>& accounts)
    {
        Names names;
        for (const Account& account : accounts)
            names.push_back(account.displayName);
        return names;
    }
    static FetchOutcome failed(UsageFetchError::Kind kind)
    {
        FetchOutcome outcome;
        outcome.error = failure(kind);
        return outcome;
    }
    [[nodiscard]] Names pollable() const { return namesOf(state.pollableAccounts(clock.now())); }
    [[nodiscard]] Names revivable() const { return namesOf(state.revivableAccounts(clock.now())); }
    void applyTo(const std::string& name, const FetchOutcome& outcome)
    {
        state.apply(outcome, id(name));
    }
    [[nodiscard]] FetchOutcome read(UsageSource source) const
    {
        FetchOutcome outcome;
        outcome.usage = reading(40, clock.now());
        outcome.source = source;
        return outcome;
    }
    [[nodiscard]] std::string dirOf(const std::string& name) const
    {
        return home.file(".claude-" + name);
    }
    [[nodiscard]] const Account& account(const std::string& name) const
    {
        for (const Account& each : state.accounts()) {
            if (each.displayName == name)
                return each;
        }
        throw std::runtime_error("no account " + name);
    }
    void addAll(const Names& names)
    {
        for (const std::string& name : names)
            add(name);
    }
};

} // namespace vellumor::test
