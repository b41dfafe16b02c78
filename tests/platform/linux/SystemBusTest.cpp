#include "platform/linux/SystemBus.h"

#include "support/SilentSocket.h"
#include "support/TempFolder.h"
#include "support/private_bus/PrivateBus.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vellumor::systemBusTest {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using test::PrivateBus;
using test::SilentSocket;
using test::TempFolder;

constexpr auto patience = 60s; // that no test may take

TEST(SystemBus, whoAcceptsAndSaysNothingIsSilentAsSoonAsTheTimeIsOver)
{
    const TempFolder folder;
    const SilentSocket silent(folder.file("bus"));
    const auto begin = steady_clock::now();
    EXPECT_TRUE(SystemBus::isSilent(silent.busAddress(), {}, 200ms));
    EXPECT_GE(steady_clock::now() - begin, 200ms);
    EXPECT_LT(steady_clock::now() - begin, 10s);
}

TEST(SystemBus, aBusThatHasStoppedToAnswerIsSilent)
{
    const TempFolder folder;
    const PrivateBus bus(folder.makeFolder("bus"));
    EXPECT_FALSE(SystemBus::isSilent(bus.address(), {}, patience));
    bus.freeze();
    EXPECT_TRUE(SystemBus::isSilent(bus.address(), {}, 200ms));
}

TEST(SystemBus, whereNobodyListensItIsKnownAtOnce)
{
    const TempFolder folder;
    SilentSocket closed(folder.file("closed"));
    closed.close();
    const std::string addresses[] = {closed.busAddress(), "unix:path=" + folder.file("nowhere"),
                                     "disabled:", "nonsense", "tcp:host=127.0.0.1,port=1"};
    for (const std::string& address : addresses) {
        SCOPED_TRACE(address);
        const auto begin = steady_clock::now();
        EXPECT_FALSE(SystemBus::isSilent(address, {}, patience));
        EXPECT_LT(steady_clock::now() - begin, 30s);
    }
}

TEST(SystemBus, aRealOneAnswersAtOnce)
{
    const TempFolder folder;
    const PrivateBus bus(folder.makeFolder("bus"));
    const auto begin = steady_clock::now();
    EXPECT_FALSE(SystemBus::isSilent(bus.address(), {}, patience));
    EXPECT_LT(steady_clock::now() - begin, 30s);
}

TEST(SystemBus, aServiceThatDoesNotRunIsNoSilence)
{
    const TempFolder folder;
    const PrivateBus bus(folder.makeFolder("bus"));
    const SystemBus::Property property{"org.example.Nobody", "/", "org.example.Nobody", "State"};
    EXPECT_FALSE(SystemBus::isSilent(bus.address(), property, patience));
}

TEST(SystemBus, withoutAnAddressTheUsualOneCounts)
{
    const TempFolder folder;
    const SilentSocket silent(folder.file("bus"));
    const char* const usual = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const std::string before = usual == nullptr ? "disabled:" : usual;
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", silent.busAddress().c_str(), 1);
    EXPECT_TRUE(SystemBus::isSilent("", {}, 200ms));
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", before.c_str(), 1);
}

} // namespace
} // namespace vellumor::systemBusTest
