// The real program when the services around it end.

#include "integration/BusWorld.h"
#include "platform/linux/keyring/FakeSecretService.h"

#include "accounts/DefaultAccount.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace vellumor::lostServicesTest {
namespace {

using namespace std::chrono_literals;
using test::FakeSecretService;
using test::ProgramWorld;

struct LostServicesTest : testing::Test, test::BusWorld {
    [[nodiscard]] bool waitUntilOnDisk(int reading) const
    {
        const std::string text = "\"percent\": " + std::to_string(reading);
        return ProgramWorld::waitUntil(
            [&] { return world.sharedReading().find(text) != std::string::npos; });
    }
};

TEST_F(LostServicesTest, theSessionBusEndsInAFetchAndTheProgramGoesOn)
{
    hasten(60);
    reaction = test::Drip{reading(), 1, 10ms};
    world.signIn(".claude", "a-token");
    const auto program = world.start();
    ASSERT_TRUE(ProgramWorld::waitUntil([this] { return requests() == 1; }));
    bus.kill();
    EXPECT_EQ(shown(), "");
    EXPECT_TRUE(waitUntilOnDisk(62)) << world.log();
    percent = 70;
    reaction = {};
    EXPECT_TRUE(waitUntilOnDisk(70)) << world.log();
    EXPECT_EQ(program->wait(0ms), std::nullopt) << world.log();
    ::kill(program->pid(), SIGTERM);
    EXPECT_EQ(program->wait(5s), 128 + SIGTERM);
}

// An account whose credential is in the keyring alone, beside one with a file.
struct LostKeyringTest : LostServicesTest {
    std::vector<FakeSecretService::Item> items;

    LostKeyringTest()
    {
        hasten(40); // the keyring has an eighth of a second to answer
        const std::string dir = world.home + "/.claude-work";
        items.push_back({DefaultAccount::serviceCandidates(dir, world.home)[0], "unlocked",
                         R"({"claudeAiOauth":{"accessToken":"kept-token",)"
                         R"("expiresAt":4102444800000}})"});
        world.folder.put("home/.claude-work/.claude.json",
                         R"({"oauthAccount":{"emailAddress":"ada@example.org"}})");
        world.signIn(".claude", "well-token");
    }
};

TEST_F(LostKeyringTest, theOtherAccountGoesOnAndTheNextScanReadsTheKeyringAgain)
{
    std::optional<FakeSecretService> keyring(
        std::in_place, bus, items, FakeSecretService::Behaviour{"--end-on", "Item.GetSecret"});
    const auto program = world.start();
    ASSERT_TRUE(waitUntilShown("62%"));
    ASSERT_TRUE(waitUntilShown("noToken")) << shown();
    EXPECT_TRUE(
        ProgramWorld::waitUntil([&] { return keyring->calls().count("Item.GetSecret") == 1; }));
    percent = 70;
    ASSERT_TRUE(refresh());
    ASSERT_TRUE(waitUntilShown("70%"));
    EXPECT_EQ(server.requestsWith("kept-token"), 0U);

    keyring.reset();
    keyring.emplace(bus, items);
    EXPECT_TRUE(ProgramWorld::waitUntil([this] { return server.requestsWith("kept-token") > 0; }));
    EXPECT_TRUE(ProgramWorld::waitUntil([this] {
        return shown().find("\"noToken\"") == std::string::npos;
    })) << shown();
}

} // namespace
} // namespace vellumor::lostServicesTest
