// SecretServiceKeyring where there is no session bus to be reached.
#include "platform/linux/SecretServiceKeyring.h"

#include "support/TempFolder.h"
#include "support/private_bus/ChildProcess.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

namespace vellumor::test::secretServiceWithoutBusTest {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr const char* plainService = "Claude Code-credentials";

TEST(SecretServiceWithoutBus, withoutABusTheKeyringIsEmpty)
{
    for (const char* address : {"", ";", "disabled:", "unix:path=/nonexistent/bus", "nonsense"}) {
        SCOPED_TRACE(address);
        SecretServiceKeyring keyring(address);
        EXPECT_EQ(keyring.read(plainService).status, RawCredential::absent);
        EXPECT_EQ(keyring.services({plainService}), Names{});
    }
}

TEST(SecretServiceWithoutBus, noBusIsEverLaunched)
{
    const TempFolder folder;
    const std::string mark = folder.file("launched");
    const std::string launcher = folder.put("bin/dbus-launch", "#!/bin/sh\ntouch " + mark + "\n");
    ASSERT_EQ(::chmod(launcher.c_str(), 0700), 0);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (folder.file("bin") + ":" + path).c_str(), 1);
    ::setenv("DISPLAY", ":99", 1);

    const char* const addresses[] = {"autolaunch:", "autolaunch:scope=*user",
                                     "unix:path=/nonexistent/bus;autolaunch:", ";autolaunch:"};
    for (const char* address : addresses) {
        SCOPED_TRACE(address);
        EXPECT_EQ(SecretServiceKeyring(address).read(plainService).status, RawCredential::absent);
        EXPECT_FALSE(std::filesystem::exists(mark));
    }

    // Whoever takes such an address as it is does launch one.
    const Environment environment{{"PATH", std::getenv("PATH")}, {"DISPLAY", ":99"}};
    ChildProcess other({{"gdbus", "wait", "--address", "autolaunch:", "--timeout", "1", "a.b"},
                        environment,
                        {},
                        folder.file("log")});
    EXPECT_NE(other.wait(20s), std::nullopt);
    EXPECT_TRUE(std::filesystem::exists(mark));
    ::setenv("PATH", path.c_str(), 1);
    ::unsetenv("DISPLAY");
}

} // namespace
} // namespace vellumor::test::secretServiceWithoutBusTest
