#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"
#include "support/private_bus/KeyringDaemon.h"
#include "support/private_bus/PrivateBus.h"

#include "base/Sha256.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor {
namespace {

using test::Answer;
using test::KeyringDaemon;
using test::LoopbackServer;
using test::PrivateBus;
using test::ProgramWorld;
using test::SeenRequest;

constexpr std::string_view fileMarker = "marker-token-of-the-file-8d1f";
constexpr std::string_view keyringMarker = "marker-token-of-the-keyring-41c7";

bool hasMarker(const std::string& text)
{
    return text.find(fileMarker) != std::string::npos ||
           text.find(keyringMarker) != std::string::npos;
}

// The command line and environment of every process on the machine that this one may look at.
std::string allProcesses()
{
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos)
            text += test::contentsOf(entry.path() / "cmdline") +
                    test::contentsOf(entry.path() / "environ");
    }
    return text;
}

// An endpoint that looks around while it is asked, and answers in a way that would tempt to quote
// the request.
struct CuriousEndpoint {
    bool sawMarkerInAProcess = false;
    std::vector<std::string> bearers;
    int status = 200;
    LoopbackServer server{[this](const SeenRequest& request) { return answerTo(request); }};

    Answer answerTo(const SeenRequest& request)
    {
        const std::string authorization = request.header("authorization").value_or("");
        bearers.push_back(authorization);
        sawMarkerInAProcess = sawMarkerInAProcess || hasMarker(allProcesses());
        return {status, {{"X-Echo", authorization}}, "[\"" + authorization + "\"]"};
    }
};

class SecretsTest : public testing::TestWithParam<int> {};

TEST_P(SecretsTest, aTokenReachesTheEndpointAndNothingElse)
{
    ProgramWorld world;
    const PrivateBus bus(world.folder.makeFolder("bus"));
    const KeyringDaemon keyring(bus);
    keyring.store("Claude Code-credentials-" + Sha256::first8Hex(world.home + "/.claude-work"),
                  R"({"claudeAiOauth":{"accessToken":")" + std::string(keyringMarker) + "\"}}");
    world.folder.makeFolder("home/.claude-work");
    world.signIn(".claude", fileMarker);
    CuriousEndpoint endpoint;
    endpoint.status = GetParam();
    world.environment["VELLUMOR_DIAG"] = "1";
    world.environment["QT_LOGGING_RULES"] = "*=true";
    world.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    world.environment["VELLUMOR_API_BASE"] =
        "http://127.0.0.1:" + std::to_string(endpoint.server.port());

    EXPECT_EQ(world.run(), 0);

    EXPECT_EQ(endpoint.bearers, (std::vector<std::string>{"Bearer " + std::string(fileMarker),
                                                          "Bearer " + std::string(keyringMarker)}));
    EXPECT_FALSE(endpoint.sawMarkerInAProcess);
    EXPECT_FALSE(hasMarker(world.log()));
    for (const std::string& path : test::filesBelow(world.home)) {
        if (!path.ends_with("/.claude/.credentials.json")) {
            EXPECT_FALSE(hasMarker(test::contentsOf(path))) << path;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(WhateverTheAnswer, SecretsTest, testing::Values(200, 401, 429, 500));

} // namespace
} // namespace vellumor
