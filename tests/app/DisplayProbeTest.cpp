#include "app/DisplayProbe.h"

#include "support/SilentSocket.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::displayProbeTest {
namespace {

TEST(DisplayProbe, withoutAServerThereIsNoScreen)
{
    const Environment rows[] = {
        {},
        {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}},
        {{"DISPLAY", ":7777"}},
        {{"DISPLAY", "nonsense"}},
        {{"WAYLAND_DISPLAY", "wayland-7777"}, {"XDG_RUNTIME_DIR", "/nonexistent"}},
        {{"WAYLAND_DISPLAY", std::string(300, 'w')}},
        {{"QT_QPA_PLATFORM", "xcb"}},
        {{"QT_QPA_PLATFORM", "wayland;xcb"}},
        {{"QT_QPA_PLATFORM", "wayland-egl"}, {"DISPLAY", ":7777"}},
        {{"QT_QPA_PLATFORM", ""}},
    };
    for (const Environment& environment : rows)
        EXPECT_FALSE(isDisplayReachable(environment));
}

TEST(DisplayProbe, whatNeedsNoServerIsAlwaysThere)
{
    EXPECT_TRUE(isDisplayReachable({{"QT_QPA_PLATFORM", "offscreen"}}));
    EXPECT_TRUE(isDisplayReachable({{"QT_QPA_PLATFORM", "xcb;offscreen"}}));
}

TEST(DisplayProbe, aServerThatTakesTheCallIsThere)
{
    const test::TempFolder folder;
    const test::SilentSocket server(folder.file("wayland-5"));
    EXPECT_TRUE(
        isDisplayReachable({{"WAYLAND_DISPLAY", "wayland-5"}, {"XDG_RUNTIME_DIR", folder.path()}}));
    EXPECT_TRUE(isDisplayReachable({{"WAYLAND_DISPLAY", folder.file("wayland-5")}}));
    EXPECT_FALSE(isDisplayReachable(
        {{"WAYLAND_DISPLAY", folder.file("wayland-5")}, {"QT_QPA_PLATFORM", "xcb"}}));
}

} // namespace
} // namespace vellumor::displayProbeTest
