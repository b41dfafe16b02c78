#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"
#include "support/private_bus/KeyringDaemon.h"
#include "support/private_bus/PrivateBus.h"

#include "base/Sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
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
constexpr std::string_view expiredMarker = "marker-token-that-expired-c3e0";
constexpr std::string_view refreshMarker = "marker-refresh-token-77ab";

bool hasMarker(const std::string& text)
{
    const auto markers = {fileMarker, keyringMarker, expiredMarker, refreshMarker};
    return std::any_of(markers.begin(), markers.end(), [&](std::string_view marker) {
        return text.find(marker) != std::string::npos;
    });
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

enum class Behaviour {
    good,
    unauthorized,
    rateLimited,
    broken,
    redirecting,
    flooding,
    resetting,
    refusingTheFirst, // and reading well to all others
};

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
        case Behaviour::refusingTheFirst:
            if (server.requests().size() == 1)
                echo.status = 401;
            else
                echo.body = R"({"limits":[{"kind":"session","group":"session","percent":62}],)"
                            R"("echo":")" +
                            authorization + "\"}";
            break;
        case Behaviour::good:
            break;
        }
        return echo;
    }
};

std::string credential(std::string_view token, const std::string& more = "")
{
    return R"({"claudeAiOauth":{"accessToken":")" + std::string(token) + R"(","refreshToken":")" +
           std::string(refreshMarker) + "\"" + more + "}}";
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

// Notes what it was given, and by whom; then it renews the credential, but not that of the default
// directory.
constexpr std::string_view claude = R"(#!/bin/sh
{ env; printf '%s\n' "$@"; tr '\0' ' ' </proc/$PPID/cmdline; } >>"$HOME/note"
[ -z "$CLAUDE_CONFIG_DIR" ] ||
    sed -i 's/"expiresAt":1/"expiresAt":4102444800000/' "$CLAUDE_CONFIG_DIR/.credentials.json"
)";

// The running program between an endpoint that looks around, Claude Code, and the maker's server.
struct RunningSecretsTest : testing::Test {
    ProgramWorld world;
    CuriousEndpoint endpoint;
    LoopbackServer maker{[](const SeenRequest&) { return Answer{200, {}, "{}"}; }};

    RunningSecretsTest()
    {
        endpoint.behaviour = Behaviour::refusingTheFirst;
        world.folder.put("home/.claude/.credentials.json",
                         credential(fileMarker, R"(,"expiresAt":4102444800000)"));
        world.folder.put("home/.claude-work/.credentials.json",
                         credential(expiredMarker, R"(,"expiresAt":1)"));
        const std::string program = world.folder.put("home/claude", claude);
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        world.environment["QT_QPA_PLATFORM"] = "offscreen";
        world.environment["QT_LOGGING_RULES"] = "*=true";
        world.environment["SHELL"] = "/bin/bash";
        world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.environment["VELLUMOR_CLAUDE_PATH"] = program;
        world.environment["VELLUMOR_API_BASE"] =
            "http://127.0.0.1:" + std::to_string(endpoint.server.port());
        world.environment["VELLUMOR_POSTHOG_KEY"] = "phc_test";
        world.environment["VELLUMOR_POSTHOG_HOST"] = maker.url("");
        world.environment["VELLUMOR_TELEMETRY_FORCE"] = "1";
    }
    [[nodiscard]] std::string note() const { return test::contentsOf(world.home + "/note"); }
    // The files, which hold what was read.
    [[nodiscard]] std::string histories() const
    {
        std::string text;
        for (const std::string& path : test::filesBelow(world.home + "/.local/share/Vellumor"))
            text += path.find("/history/") == std::string::npos ? "" : test::contentsOf(path);
        return text;
    }
    [[nodiscard]] std::string told() const
    {
        std::string bodies;
        for (const SeenRequest& request : maker.requests())
            bodies += request.body;
        return bodies;
    }
};

TEST_F(RunningSecretsTest, theRunningProgramKeepsItsTokensToo)
{
    const auto program = world.start();
    // The first account is refused, and Claude Code does not help; the other one it renews.
    EXPECT_TRUE(world.waitUntil([&] { return told().find("usage_401") != std::string::npos; }));
    EXPECT_TRUE(world.waitUntil([&] { return histories().find("62") != std::string::npos; }));
    EXPECT_EQ(endpoint.bearers, (std::set<std::string>{"Bearer " + std::string(fileMarker),
                                                       "Bearer " + std::string(expiredMarker)}));
    EXPECT_NE(note().find("CLAUDE_CONFIG_DIR=" + world.home + "/.claude-work"), std::string::npos);
    EXPECT_NE(note().find("-p\n/usage\n"), std::string::npos);

    EXPECT_FALSE(endpoint.sawMarkerInAProcess);
    EXPECT_FALSE(hasMarker(allProcesses()));
    EXPECT_FALSE(hasMarker(told()));
    for (const std::string& path : test::filesBelow(world.folder.path())) { // the log is one
        if (!path.ends_with("/.credentials.json")) {
            EXPECT_FALSE(hasMarker(test::contentsOf(path))) << path;
        }
    }
}

} // namespace
} // namespace vellumor::secretsTest
