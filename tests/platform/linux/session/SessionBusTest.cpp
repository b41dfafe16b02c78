#include "platform/linux/SessionBus.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace vellumor::sessionBusTest {
namespace {

using test::TempFolder;

TEST(SessionBus, aGivenAddressIsTakenAsItIs)
{
    EXPECT_EQ(SessionBus::address({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/x"},
                                   {"XDG_RUNTIME_DIR", "/run/user/1"}}),
              "unix:path=/x");
}

TEST(SessionBus, anEntryThatWouldStartABusIsLeftOut)
{
    const std::pair<const char*, const char*> rows[] = {
        {"autolaunch:", "disabled:"},
        {"autolaunch:scope=*user", "disabled:"},
        {"unix:path=/x;autolaunch:", "unix:path=/x"},
        {";autolaunch:;unix:path=/x;;unix:path=/y", "unix:path=/x;unix:path=/y"},
    };
    for (const auto& [given, kept] : rows)
        EXPECT_EQ(SessionBus::address({{"DBUS_SESSION_BUS_ADDRESS", given}}), kept);
}

TEST(SessionBus, withoutABusThereIsAnAddressThatStartsNone)
{
    const TempFolder folder;
    EXPECT_EQ(SessionBus::address({}), "disabled:");
    EXPECT_EQ(SessionBus::address({{"DBUS_SESSION_BUS_ADDRESS", ""}}), "disabled:");
    EXPECT_EQ(SessionBus::address({{"XDG_RUNTIME_DIR", folder.path()}}), "disabled:");
    folder.put("bus", "not a socket");
    EXPECT_EQ(SessionBus::address({{"XDG_RUNTIME_DIR", folder.path()}}), "disabled:");
}

TEST(SessionBus, theUsersOwnBusIsFoundByItsSocket)
{
    const TempFolder folder;
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    const std::string path = folder.file("bus");
    ASSERT_LT(path.size(), sizeof name.sun_path);
    std::strcpy(name.sun_path, path.c_str());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    EXPECT_EQ(SessionBus::address({{"XDG_RUNTIME_DIR", folder.path()}}), "unix:path=" + path);
    ::close(socket);
}

} // namespace
} // namespace vellumor::sessionBusTest
