#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace vellumor::reportTest {
namespace {

using test::Answer;
using test::LoopbackServer;
using test::ProgramWorld;
using test::SeenRequest;

struct ReportTest : testing::Test {
    ProgramWorld world;
    Answer answer{
        200, {}, R"({"five_hour":{"utilization":62,"resets_at":"2100-01-01T00:00:00Z"}})"};
    LoopbackServer server{[this](const SeenRequest&) { return answer; }};

    ReportTest()
    {
        world.environment["VELLUMOR_DIAG"] = "1";
        world.environment["VELLUMOR_API_BASE"] =
            "http://127.0.0.1:" + std::to_string(server.port());
    }
    [[nodiscard]] bool has(std::string_view text) const
    {
        return world.log().find(text) != std::string::npos;
    }
};

TEST_F(ReportTest, needsNeitherScreenNorBusNorAccount)
{
    EXPECT_EQ(world.run(), 0);
    EXPECT_TRUE(world.log().starts_with("Vellumor 1.0.0 — diagnostics\n"));
    EXPECT_TRUE(has("Discovery: 0 account(s) from scan"));
    EXPECT_TRUE(world.log().ends_with("no 429 ever observed on this install\n"));
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(ReportTest, inAnEmptyHomeItLeavesNoFile)
{
    EXPECT_EQ(world.run(), 0);
    EXPECT_TRUE(test::namesIn(world.home).empty());
}

TEST_F(ReportTest, withAnAccountItLeavesNoFileEither)
{
    world.signIn(".claude", "example-token");
    EXPECT_EQ(world.run(), 0);
    EXPECT_EQ(world.filesInHome(), std::vector<std::string>{".claude/.credentials.json"});
}

TEST_F(ReportTest, showsTheLiveLimitsOfAnAccount)
{
    world.signIn(".claude-work", "example-token");
    EXPECT_EQ(world.run(), 0);
    EXPECT_TRUE(has("\n~/.claude-work\n"));
    EXPECT_TRUE(has("    usage    :  62.0%  resets in "));
    ASSERT_EQ(server.requests().size(), 1U);
    const SeenRequest& request = server.requests().front();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/api/oauth/usage");
    EXPECT_EQ(request.header("authorization"), "Bearer example-token");
    EXPECT_EQ(request.header("anthropic-beta"), "oauth-2025-04-20");
    EXPECT_EQ(request.header("anthropic-version"), "2023-06-01");
    EXPECT_EQ(request.header("cookie"), std::nullopt);
}

TEST_F(ReportTest, asksTheEndpointOnceForEachAccount)
{
    for (const char* dir : {".claude", ".claude-a", ".claude-b"})
        world.signIn(dir, "example-token");
    EXPECT_EQ(world.run(), 0);
    EXPECT_EQ(server.requests().size(), 3U);
}

TEST_F(ReportTest, tellsARefusalInTheWordsOfTheError)
{
    world.signIn(".claude", "example-token");
    answer = {429, {{"Retry-After", "120"}}, "{}"};
    EXPECT_EQ(world.run(), 0);
    EXPECT_TRUE(has("    usage    : FETCH FAILED — rate limited (429, Retry-After 120s)"));
}

TEST_F(ReportTest, anAnswerNestedTooDeepIsRefused)
{
    world.signIn(".claude", "example-token");
    answer.body = R"({"x":)" + std::string(64, '[') + std::string(64, ']') + "}";
    EXPECT_EQ(world.run(), 0);
    EXPECT_TRUE(has("FETCH FAILED — decode: "));
}

} // namespace
} // namespace vellumor::reportTest
