// What SecretServiceKeyring asks of a service, and what it makes of one that misbehaves.
#include "platform/linux/SecretServiceKeyring.h"

#include "accounts/KeychainReader.h"
#include "platform/linux/keyring/FakeSecretService.h"
#include "platform/linux/keyring/Trap.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <set>

namespace vellumor::test::secretServiceCallsTest {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Calls = std::set<std::string>;

constexpr const char* plainService = "Claude Code-credentials";
// Far less than the library's own 25 s, and far more than anything that answers needs.
constexpr auto atOnce = 3s;
// Long enough for the steps before the one that is not answered.
constexpr auto shortTimeout = 800ms;

class SecretServiceCalls : public testing::Test {
protected:
    [[nodiscard]] static std::chrono::steady_clock::duration
    timeOf(const std::function<void()>& work)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::steady_clock::now() - start;
    }

    TempFolder folder;
};

// The calls that neither open a secret nor ask the user.
bool asksForAttributesAlone(const Calls& calls)
{
    static const Calls harmless{"Service.GetAll", "Service.SearchItems", "Collection.GetAll",
                                "Item.GetAll"};
    return std::includes(harmless.begin(), harmless.end(), calls.begin(), calls.end());
}

TEST_F(SecretServiceCalls, listingAsksForAttributesAlone)
{
    const PrivateBus bus(folder.path());
    const FakeSecretService service(bus,
                                    {{plainService, "unlocked", "{}"}, {"other", "locked", "{}"}});
    SecretServiceKeyring keyring(bus.address());

    EXPECT_EQ(keyring.services({plainService, "other", "none"}), (Names{plainService, "other"}));
    EXPECT_TRUE(service.calls().contains("Item.GetAll"));
    EXPECT_TRUE(asksForAttributesAlone(service.calls())) << testing::PrintToString(service.calls());
}

TEST_F(SecretServiceCalls, aLockedItemIsDeniedWithoutUnlockingPromptingOrReading)
{
    const PrivateBus bus(folder.path());
    const FakeSecretService service(bus, {{plainService, "locked", "{}"}});
    SecretServiceKeyring keyring(bus.address());

    EXPECT_EQ(keyring.read(plainService).status, RawCredential::denied);
    EXPECT_TRUE(service.calls().contains("Service.SearchItems"));
    EXPECT_TRUE(asksForAttributesAlone(service.calls())) << testing::PrintToString(service.calls());

    const ServiceDirectories directories(folder.path());
    const FakeClock clock;
    const KeychainReader reader(directories, keyring, clock);
    EXPECT_EQ(reader.probe(plainService).status, TokenStatus::needsApproval);
    EXPECT_TRUE(asksForAttributesAlone(service.calls())) << testing::PrintToString(service.calls());
}

TEST_F(SecretServiceCalls, ofALockedAndAnUnlockedItemTheUnlockedOneIsRead)
{
    const PrivateBus bus(folder.path());
    const FakeSecretService service(
        bus, {{plainService, "locked", "first"}, {plainService, "unlocked", "second"}});
    SecretServiceKeyring keyring(bus.address());

    const RawCredential raw = keyring.read(plainService);
    EXPECT_EQ(raw.status, RawCredential::found);
    EXPECT_EQ(raw.secret.view(), "second");
    EXPECT_EQ(service.calls(), (Calls{"Service.GetAll", "Service.SearchItems", "Item.GetAll",
                                      "Service.OpenSession", "Item.GetSecret"}));
}

TEST_F(SecretServiceCalls, anItemThatCannotBeReadIsDeniedWhenLockedMeanwhileElseFailed)
{
    const std::pair<const char*, int> rows[] = {{"refused", RawCredential::denied},
                                                {"broken", RawCredential::failed}};
    for (const auto& [state, status] : rows) {
        SCOPED_TRACE(state);
        const TempFolder own;
        const PrivateBus bus(own.path());
        const FakeSecretService service(bus, {{plainService, state, "{}"}});
        const RawCredential raw = SecretServiceKeyring(bus.address()).read(plainService);
        EXPECT_EQ(raw.status, status);
        EXPECT_TRUE(raw.secret.view().empty());
    }
}

TEST_F(SecretServiceCalls, aSecretOfEightMebibytesIsTakenAndOneOfAByteMoreHasFailed)
{
    constexpr std::size_t most = 8388608;
    const PrivateBus bus(folder.path());
    const FakeSecretService service(bus, {{"most", "unlocked", std::string(most, 'x')},
                                          {"more", "unlocked", std::string(most + 1, 'x')}});
    SecretServiceKeyring keyring(bus.address());

    const RawCredential raw = keyring.read("most");
    EXPECT_EQ(raw.status, RawCredential::found);
    EXPECT_TRUE(raw.secret.view() == std::string(most, 'x'));
    EXPECT_EQ(keyring.read("more").status, RawCredential::failed);
}

TEST_F(SecretServiceCalls, aCallMayTakeFiveSecondsUnlessToldOtherwise)
{
    EXPECT_EQ(SecretServiceKeyring::defaultTimeout, 5s);
    const PrivateBus bus(folder.path());
    const FakeSecretService service(bus, {}, {"--silent", "Service.SearchItems"});
    const auto taken = timeOf([&] {
        EXPECT_EQ(SecretServiceKeyring(bus.address()).read(plainService).status,
                  RawCredential::failed);
    });
    EXPECT_GE(taken, 5s);
    EXPECT_LT(taken, 5s + atOnce);
}

TEST_F(SecretServiceCalls, aServiceThatDoesNotAnswerHasFailedInTimeAtEveryStep)
{
    for (const char* call : {"Service.GetAll", "Service.SearchItems", "Item.GetAll",
                             "Service.OpenSession", "Item.GetSecret"}) {
        SCOPED_TRACE(call);
        const TempFolder own;
        const PrivateBus bus(own.path());
        const FakeSecretService service(bus, {{plainService, "unlocked", "{}"}},
                                        {"--silent", call});
        SecretServiceKeyring keyring(bus.address(), shortTimeout);
        const auto taken =
            timeOf([&] { EXPECT_EQ(keyring.read(plainService).status, RawCredential::failed); });
        EXPECT_TRUE(service.calls().contains(call));
        EXPECT_GE(taken, shortTimeout);
        EXPECT_LT(taken, shortTimeout + atOnce);
    }
}

TEST_F(SecretServiceCalls, aListingThatTakesTooLongGivesWhatWasFoundUntilThen)
{
    const std::pair<const char*, Names> rows[] = {
        {"Service.GetAll", {}}, {"Service.SearchItems", {}}, {"Collection.GetAll", {plainService}}};
    for (const auto& [call, found] : rows) {
        SCOPED_TRACE(call);
        const TempFolder own;
        const PrivateBus bus(own.path());
        const FakeSecretService service(
            bus, {{plainService, "unlocked", "{}"}, {"other", "unlocked", "{}"}},
            {"--silent", call});
        SecretServiceKeyring keyring(bus.address(), shortTimeout);
        const auto taken = timeOf([&] {
            EXPECT_EQ(keyring.services({plainService, "none"}), found);
        });
        EXPECT_TRUE(service.calls().contains(call));
        EXPECT_LT(taken, shortTimeout + atOnce);
    }
}

TEST_F(SecretServiceCalls, aBusThatDoesNotAnswerHasFailedInTime)
{
    const PrivateBus bus(folder.path());
    bus.freeze();
    SecretServiceKeyring keyring(bus.address(), shortTimeout);
    const auto taken = timeOf([&] {
        EXPECT_EQ(keyring.read(plainService).status, RawCredential::failed);
        EXPECT_EQ(keyring.services({plainService}), Names{});
    });
    EXPECT_GE(taken, 2 * shortTimeout);
    EXPECT_LT(taken, 2 * shortTimeout + atOnce);
}

TEST_F(SecretServiceCalls, aServiceThatEndsMidwayHasFailedAndIsNotStartedAgain)
{
    for (const char* call : {"Service.GetAll", "Service.SearchItems", "Item.GetAll",
                             "Service.OpenSession", "Item.GetSecret"}) {
        SCOPED_TRACE(call);
        const TempFolder own;
        const Trap trap(own, "org.freedesktop.secrets");
        const PrivateBus bus(own.path(), {.activatable = {trap.service()}});
        const FakeSecretService service(bus, {{plainService, "unlocked", "{}"}},
                                        {"--end-on", call});
        SecretServiceKeyring keyring(bus.address());
        EXPECT_EQ(keyring.read(plainService).status, RawCredential::failed);
        EXPECT_TRUE(service.calls().contains(call));
        EXPECT_EQ(keyring.read(plainService).status, RawCredential::absent);
        EXPECT_FALSE(trap.sprung());
    }
}

TEST_F(SecretServiceCalls, aServiceThatEndsDuringTheListingIsNotStartedAgain)
{
    for (const char* call : {"Service.SearchItems", "Collection.GetAll", "Item.GetAll"}) {
        SCOPED_TRACE(call);
        const TempFolder own;
        const Trap trap(own, "org.freedesktop.secrets");
        const PrivateBus bus(own.path(), {.activatable = {trap.service()}});
        const FakeSecretService service(bus, {{"other", "unlocked", "{}"}}, {"--end-on", call});
        EXPECT_EQ(SecretServiceKeyring(bus.address()).services({plainService}), Names{});
        EXPECT_TRUE(service.calls().contains(call));
        EXPECT_FALSE(trap.sprung());
    }
}

TEST_F(SecretServiceCalls, aReplyThatMakesNoSenseGivesNoSecret)
{
    for (const char* call :
         {"Service.SearchItems", "Item.GetAll", "Service.OpenSession", "Item.GetSecret"}) {
        SCOPED_TRACE(call);
        const TempFolder own;
        const PrivateBus bus(own.path());
        const FakeSecretService service(bus, {{plainService, "unlocked", "{}"}},
                                        {"--nonsense", call});
        const RawCredential raw = SecretServiceKeyring(bus.address()).read(plainService);
        EXPECT_NE(raw.status, RawCredential::found);
        EXPECT_TRUE(raw.secret.view().empty());
        EXPECT_TRUE(service.calls().contains(call));
    }
}

TEST_F(SecretServiceCalls, aListingThatMakesNoSenseIsLeftOut)
{
    const std::pair<const char*, Names> rows[] = {{"Service.GetAll", {plainService}},
                                                  {"Service.SearchItems", {plainService, "other"}},
                                                  {"Collection.GetAll", {plainService}}};
    for (const auto& [call, found] : rows) {
        SCOPED_TRACE(call);
        const TempFolder own;
        const PrivateBus bus(own.path());
        const FakeSecretService service(
            bus, {{plainService, "unlocked", "{}"}, {"other", "unlocked", "{}"}},
            {"--nonsense", call});
        EXPECT_EQ(SecretServiceKeyring(bus.address()).services({plainService}), found);
        EXPECT_TRUE(service.calls().contains(call));
    }
}

} // namespace
} // namespace vellumor::test::secretServiceCallsTest
