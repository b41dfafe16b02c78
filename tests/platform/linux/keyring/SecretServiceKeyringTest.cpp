// SecretServiceKeyring against the desktop's real keyring service, on a bus of each test's own.
#include "platform/linux/SecretServiceKeyring.h"

#include "accounts/KeychainReader.h"
#include "platform/linux/keyring/Trap.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"
#include "support/private_bus/KeyringDaemon.h"
#include "support/private_bus/PrivateBus.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>

namespace vellumor::test::secretServiceKeyringTest {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr const char* plainService = "Claude Code-credentials";
constexpr const char* credential =
    R"({"claudeAiOauth":{"accessToken":"not a token","expiresAt":4102444800000,)"
    R"("scopes":["user:profile"],"subscriptionType":"max"}})";

std::string hexadecimal(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        text += digits[number / 16U];
        text += digits[number % 16U];
    }
    return text;
}

// Fails the test when the libraries complain of how they are used.
class NoComplaints {
public:
    NoComplaints()
    {
        g_log_set_default_handler(
            [](const char*, GLogLevelFlags level, const char* text, void*) {
                if ((level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) != 0)
                    ADD_FAILURE() << text;
            },
            nullptr);
    }
    NoComplaints(const NoComplaints&) = delete;
    NoComplaints& operator=(const NoComplaints&) = delete;
    ~NoComplaints() { g_log_set_default_handler(g_log_default_handler, nullptr); }
};

class SecretServiceKeyringTest : public testing::Test {
protected:
    // What the program makes of the keyring, with `.claude` in the folder as the default directory.
    [[nodiscard]] KeychainReader reader(Keyring& keyring)
    {
        directories.rebuild({folder.file(".claude")});
        return {directories, keyring, clock};
    }

    NoComplaints noComplaints;
    TempFolder folder;
    ServiceDirectories directories{folder.path()};
    FakeClock clock;
};

TEST_F(SecretServiceKeyringTest, anItemIsFoundByItsServiceAlone)
{
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    daemon.store(plainService, credential);
    daemon.store("Claude Code-credentials-01234567", "another");
    SecretServiceKeyring keyring(bus.address());

    const RawCredential raw = keyring.read(plainService);
    EXPECT_EQ(raw.status, RawCredential::found);
    EXPECT_EQ(raw.secret.view(), credential);
    EXPECT_EQ(keyring.read("Claude Code-credentials-01234567").secret.view(), "another");
}

TEST_F(SecretServiceKeyringTest, anItemInHexadecimalIsTheSameCredential)
{
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    daemon.store("plain", credential);
    daemon.store("hexadecimal", hexadecimal(credential));
    SecretServiceKeyring keyring(bus.address());

    for (const char* service : {"plain", "hexadecimal"}) {
        SCOPED_TRACE(service);
        const auto result = reader(keyring).readCredentials(service);
        const auto* credentials = std::get_if<ClaudeCredentials>(&result);
        ASSERT_NE(credentials, nullptr);
        EXPECT_EQ(credentials->accessToken.reveal(), "not a token");
        EXPECT_EQ(credentials->expiresAt, 4102444800000.0);
        EXPECT_EQ(credentials->scopes, Names{"user:profile"});
        EXPECT_EQ(credentials->subscriptionType, "max");
        EXPECT_EQ(credentials->rateLimitTier, std::nullopt);
    }
}

TEST_F(SecretServiceKeyringTest, anyOtherNameThanTheItemsOwnIsAbsent)
{
    using namespace std::string_literals;
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    daemon.store(plainService, credential);
    SecretServiceKeyring keyring(bus.address());

    const Names others{"",
                       "Claude Code",
                       "claude code-credentials",
                       "Claude Code-credentials ",
                       "Claude Code-credentials\0tail"s,
                       "Claude Code-credentials\xff"};
    for (const std::string& other : others) {
        SCOPED_TRACE(testing::PrintToString(other));
        EXPECT_EQ(keyring.read(other).status, RawCredential::absent);
    }
    EXPECT_EQ(keyring.services(others), Names{plainService});
    EXPECT_EQ(keyring.read(plainService).status, RawCredential::found);
}

TEST_F(SecretServiceKeyringTest, everyServiceIsListedOnceAndItemsWithoutOneAreLeftOut)
{
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    daemon.store("b", "1");
    daemon.store("a", "2");
    runToEnd(bus.command({"secret-tool", "store", "--label=x", "user", "c"}, "store.log"));
    runToEnd(bus.command({"secret-tool", "store", "--label=x", "service", "a", "user", "d"},
                         "store.log"));
    SecretServiceKeyring keyring(bus.address());

    EXPECT_EQ(keyring.services({}), (Names{"a", "b"}));
    EXPECT_EQ(keyring.services({"a", "none"}), (Names{"a", "b"}));
}

TEST_F(SecretServiceKeyringTest, aBusWithoutTheServiceIsAnEmptyKeyringAndStartsNone)
{
    const Trap trap(folder, "org.freedesktop.secrets");
    const PrivateBus bus(folder.path(), {.activatable = {trap.service()}});
    SecretServiceKeyring keyring(bus.address());

    EXPECT_EQ(keyring.read(plainService).status, RawCredential::absent);
    EXPECT_EQ(keyring.services({plainService}), Names{});
    EXPECT_FALSE(trap.sprung());

    // The bus would have started it for anyone who had called the name.
    EXPECT_THROW(bus.call("org.freedesktop.secrets", "/", "org.freedesktop.DBus.Peer.Ping"),
                 std::runtime_error);
    EXPECT_TRUE(trap.sprung());
}

TEST_F(SecretServiceKeyringTest, aLockedItemIsDeniedAtOnceAndNobodyIsAsked)
{
    const Trap trap(folder, "org.gnome.keyring.SystemPrompter");
    const PrivateBus bus(folder.path(), {.activatable = {trap.service()}});
    const KeyringDaemon daemon(bus);
    daemon.store(plainService, credential);
    daemon.lock();
    SecretServiceKeyring keyring(bus.address());

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(keyring.read(plainService).status, RawCredential::denied);
    EXPECT_EQ(keyring.services({plainService}), Names{plainService});
    EXPECT_EQ(reader(keyring).probe(plainService).status, TokenStatus::needsApproval);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    EXPECT_FALSE(trap.sprung());

    // Whoever reads it in the common way does have the user asked.
    ChildProcess other(
        bus.command({"secret-tool", "lookup", "service", plainService}, "lookup.log"));
    for (int i = 0; i < 2000 && !trap.sprung(); ++i)
        (void)other.wait(10ms);
    EXPECT_TRUE(trap.sprung());
}

TEST_F(SecretServiceKeyringTest, aKeyringThatWasNeverUnlockedTellsOfTheExpectedItemsAlone)
{
    const PrivateBus bus(folder.path());
    KeyringDaemon first(bus);
    first.store(plainService, credential);
    first.store("other", "1");
    first.stop();
    const KeyringDaemon second(bus, KeyringDaemon::Start::locked);
    SecretServiceKeyring keyring(bus.address());

    EXPECT_EQ(keyring.services({}), Names{});
    EXPECT_EQ(keyring.services({"none", plainService}), Names{plainService});
    EXPECT_EQ(reader(keyring).enumerateClaudeServices(), Names{plainService});
    EXPECT_EQ(keyring.read(plainService).status, RawCredential::denied);
}

TEST_F(SecretServiceKeyringTest, aCredentialFileComesBeforeTheKeyring)
{
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    daemon.store(plainService, credential);
    SecretServiceKeyring keyring(bus.address());
    const KeychainReader both = reader(keyring);
    const auto planOf = [&] { return both.probe(plainService).plan; };

    EXPECT_EQ(planOf(), "max");
    folder.put(".claude/.credentials.json",
               R"({"claudeAiOauth":{"accessToken":"x","subscriptionType":"pro"}})");
    EXPECT_EQ(planOf(), "pro");
    EXPECT_EQ(both.enumerateClaudeServices(), Names{plainService});
}

TEST_F(SecretServiceKeyringTest, aBusThatEndsTakesNothingWithItAndTheNextOneServes)
{
    PrivateBus bus(folder.path());
    KeyringDaemon daemon(bus);
    daemon.store(plainService, credential);
    SecretServiceKeyring keyring(bus.address());
    EXPECT_EQ(keyring.read(plainService).status, RawCredential::found);

    daemon.stop();
    bus.stop();
    EXPECT_EQ(keyring.read(plainService).status, RawCredential::absent);
    EXPECT_EQ(keyring.services({plainService}), Names{});

    const PrivateBus nextBus(folder.path());
    const KeyringDaemon nextDaemon(nextBus);
    EXPECT_EQ(keyring.read(plainService).status, RawCredential::found);
}

TEST_F(SecretServiceKeyringTest, callsFromSeveralThreadsDoNotDisturbEachOther)
{
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    const Names services{"a", "b", "c", "d"};
    for (const std::string& service : services)
        daemon.store(service, "secret of " + service);
    SecretServiceKeyring keyring(bus.address());

    std::vector<std::future<void>> threads;
    for (const std::string& service : services) {
        threads.push_back(std::async(std::launch::async, [&] {
            for (int i = 0; i < 10; ++i) {
                EXPECT_EQ(keyring.read(service).secret.view(), "secret of " + service);
                EXPECT_EQ(keyring.services({service}), services);
            }
        }));
    }
    for (auto& thread : threads)
        thread.get();
}

// Nobody need run the default context: what waited there would do so for ever.
TEST_F(SecretServiceKeyringTest, aCallLeavesNothingBehind)
{
    const PrivateBus bus(folder.path());
    const KeyringDaemon daemon(bus);
    daemon.store(plainService, credential);
    SecretServiceKeyring keyring(bus.address());
    const auto callOnce = [&] {
        EXPECT_EQ(keyring.read(plainService).status, RawCredential::found);
        EXPECT_EQ(keyring.services({plainService}), Names{plainService});
    };
    callOnce();
    const auto before = namesIn("/proc/self/fd").size() + namesIn("/proc/self/task").size();
    for (int i = 0; i < 20; ++i)
        callOnce();
    EXPECT_LE(namesIn("/proc/self/fd").size() + namesIn("/proc/self/task").size(), before + 4);
    EXPECT_EQ(g_main_context_pending(nullptr), FALSE);
}

} // namespace
} // namespace vellumor::test::secretServiceKeyringTest
