#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"
#include "support/private_bus/KeyringDaemon.h"
#include "support/private_bus/PrivateBus.h"

#include "base/Sha256.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace vellumor::secretsTest {
namespace {

using test::Answer;
using test::KeyringDaemon;
using test::LoopbackServer;
using test::PrivateBus;
using test::ProgramWorld;
using test::Reaction;
using test::SeenRequest;

constexpr std::string_view fileMarker = "marker-token-of-the-file-8d1f";
constexpr std::string_view keyringMarker = "marker-token-of-the-keyring-41c7";
constexpr std::string_view refreshMarker = "marker-refresh-token-77ab";

bool hasMarker(const std::string& text)
{
    return text.find(fileMarker) != std::string::npos ||
           text.find(keyringMarker) != std::string::npos ||
           text.find(refreshMarker) != std::string::npos;
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

enum class Behaviour { good, unauthorized, rateLimited, broken, redirecting, flooding, resetting };

// An endpoint that looks around while it is asked, and answers in a way that would tempt to quote
// the request.
struct CuriousEndpoint {
    Behaviour behaviour = Behaviour::good;
    bool sawMarkerInAProcess = false;
    std::set<std::string> bearers;
    LoopbackServer server{[this](const SeenRequest& request) { return reactionTo(request); }};

    Reaction reactionTo(const SeenRequest& request)
    {
        const std::string authorization = request.header("authorization").value_or("");
        bearers.insert(authorization);
        sawMarkerInAProcess = sawMarkerInAProcess || hasMarker(allProcesses());
        Answer echo{200, {{"X-Echo", authorization}}, "[\"" + authorization + "\"]"};
        switch (behaviour) {
        case Behaviour::unauthorized:
            echo.status = 401;
            break;
        case Behaviour::rateLimited:
            echo.status = 429;
            break;
        case Behaviour::broken:
            echo.status = 500;
            break;
        case Behaviour::redirecting:
            if (request.path != "/elsewhere")
                return Answer{302, {{"Location", server.url("/elsewhere", "localhost")}}, ""};
            break;
        case Behaviour::flooding:
            return test::Flood();
        case Behaviour::resetting:
            return test::Reset();
        case Behaviour::good:
            break;
        }
        return echo;
    }
};

std::string credential(std::string_view token)
{
    return R"({"claudeAiOauth":{"accessToken":")" + std::string(token) + R"(","refreshToken":")" +
           std::string(refreshMarker) + "\"}}";
}

class SecretsTest : public testing::TestWithParam<Behaviour> {};

TEST_P(SecretsTest, aTokenReachesTheEndpointAndNothingElse)
{
    ProgramWorld world;
    const PrivateBus bus(world.folder.makeFolder("bus"));
    const KeyringDaemon keyring(bus);
    keyring.store("Claude Code-credentials-" + Sha256::first8Hex(world.home + "/.claude-work"),
                  credential(keyringMarker));
    world.folder.makeFolder("home/.claude-work");
    world.folder.put("home/.claude/.credentials.json", credential(fileMarker));
    CuriousEndpoint endpoint;
    endpoint.behaviour = GetParam();
    world.environment["VELLUMOR_DIAG"] = "1";
    world.environment["QT_LOGGING_RULES"] = "*=true";
    world.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    world.environment["VELLUMOR_API_BASE"] =
        "http://127.0.0.1:" + std::to_string(endpoint.server.port());

    EXPECT_EQ(world.run(), 0);

    std::set<std::string> expected = {"Bearer " + std::string(fileMarker),
                                      "Bearer " + std::string(keyringMarker)};
    if (GetParam() == Behaviour::redirecting)
        expected.insert(""); // the other host is asked without it
    EXPECT_EQ(endpoint.bearers, expected);
    EXPECT_FALSE(endpoint.sawMarkerInAProcess);
    EXPECT_FALSE(hasMarker(world.log()));
    for (const std::string& path : test::filesBelow(world.folder.path())) {
        if (!path.ends_with("/.claude/.credentials.json")) {
            EXPECT_FALSE(hasMarker(test::contentsOf(path))) << path;
        }
    }
}

std::string nameOf(const testing::TestParamInfo<Behaviour>& info)
{
    constexpr const char* names[] = {"good",        "unauthorized", "rateLimited", "broken",
                                     "redirecting", "flooding",     "resetting"};
    return names[static_cast<std::size_t>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(WhateverTheAnswer, SecretsTest,
                         testing::Values(Behaviour::good, Behaviour::unauthorized,
                                         Behaviour::rateLimited, Behaviour::broken,
                                         Behaviour::redirecting, Behaviour::flooding,
                                         Behaviour::resetting),
                         nameOf);

} // namespace
} // namespace vellumor::secretsTest
