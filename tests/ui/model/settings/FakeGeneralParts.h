#pragma once

#include "ui/model/settings/GeneralModel.h"
#include "usage/FakeCollaborators.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// What the general settings change, in memory.
struct FakeGeneralParts {
    std::vector<std::string> generalCalls;
    Gate* generalGate = nullptr; // holds back the next answer
    bool isLaunched = false;
    bool isAutomatic = true;
    std::optional<std::string> loginError;
    GeneralModel::Update update;
    std::vector<std::string> left; // of a removal of all data

    // They live no longer than this.
    GeneralModel::Parts generalParts(Clock& clock, bool hasUpdates)
    {
        return {.clock = clock,
                .isLaunchedAtLogin = [this] { return launched(); },
                .setLaunchedAtLogin = [this](bool on) { return launch(on); },
                .hasUpdates = hasUpdates,
                .autoUpdates = [this] { return isAutomatic; },
                .setAutoUpdates = [this](bool on) { isAutomatic = on; },
                .checkForUpdates = [this] { return check(); },
                .removeAllData = [this] { return removeAll(); }};
    }

private:
    Task<bool> launched()
    {
        generalCalls.emplace_back("launched?");
        co_await Through{std::exchange(generalGate, nullptr)};
        const bool answer = isLaunched;
        co_return answer;
    }
    Task<std::optional<std::string>> launch(bool on)
    {
        generalCalls.emplace_back(on ? "launch" : "launch not");
        if (!loginError)
            isLaunched = on;
        auto error = loginError;
        co_return error;
    }
    Task<GeneralModel::Update> check()
    {
        generalCalls.emplace_back("check");
        co_await Through{std::exchange(generalGate, nullptr)};
        auto found = update;
        co_return found;
    }
    Task<std::vector<std::string>> removeAll()
    {
        generalCalls.emplace_back("remove");
        co_await Through{std::exchange(generalGate, nullptr)};
        auto names = left;
        co_return names;
    }
};

} // namespace vellumor::test
