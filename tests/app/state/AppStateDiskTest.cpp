// AppState on a disk that takes nothing more.
#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateDiskTest {
namespace {

using test::AppWorld;
using test::Names;
using Disk = test::WatchedFileCalls::Disk;

// A life with all that writes a file; gives the names of what was written or was to be.
Names live(AppWorld& world, Disk disk)
{
    world.add("ada");
    world.add("ben", TokenStatus::signedOut);
    world.disk.setDisk(disk);
    world.rescan();
    AppState& state = world.state;
    state.rename(state.accounts().at(0), "Work");
    state.reorder({1}, 0);
    state.setUserInterval(600);
    state.setMenuBarMode(MenuBarMode::numbers);
    world.waitFor(state.refresh(false));
    world.waitFor(state.refreshNext());
    state.remove(state.accounts().at(0));
    world.waitFor(state.refreshNext());
    world.settle();
    return world.disk.written();
}

TEST(AppStateDisk, theProgramRunsOnFromMemory)
{
    for (const auto disk : {Disk::full, Disk::readOnly}) {
        SCOPED_TRACE(static_cast<int>(disk));
        AppWorld world;
        (void)live(world, disk);
        ASSERT_EQ(world.state.accounts().size(), 1U);
        EXPECT_EQ(world.state.accounts()[0].displayName, "Work");
        EXPECT_EQ(world.of("Work").source, UsageSource::endpoint);
        EXPECT_EQ(world.state.effectiveInterval(), 600);
        EXPECT_EQ(world.state.menuBarMode(), MenuBarMode::numbers);
        EXPECT_EQ(world.state.lastUpdated(), world.clock.now());
        EXPECT_EQ(world.calls(), 3);
        for (const std::string& file : test::filesBelow(world.home.path()))
            ADD_FAILURE() << file; // not even a piece of one

        world.disk.setDisk(Disk::healthy);
        world.rescan();
        EXPECT_EQ(world.sharedAccounts.load().at(world.found.facts[0].configDir).name, "Work");
    }
}

TEST(AppStateDisk, noWriteIsTriedMoreOftenThanOnAHealthyOne)
{
    AppWorld healthy;
    const Names written = live(healthy, Disk::healthy);
    ASSERT_GT(written.size(), 5U);
    for (const auto disk : {Disk::full, Disk::readOnly}) {
        AppWorld world;
        EXPECT_EQ(live(world, disk), written) << static_cast<int>(disk);
    }
}

} // namespace
} // namespace vellumor::appStateDiskTest
