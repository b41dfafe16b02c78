#include "app/Upkeep.h"

#include "integration/FileEvents.h"
#include "store/PreferencesStore.h"
#include "support/FakeClock.h"
#include "support/PassWorker.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::upkeepTest {
namespace {

using Names = std::vector<std::string>;

// A program that starts at login and has files in both folders.
struct UpkeepTest : testing::Test {
    test::TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    std::string entry = home.file("config/autostart/dev.quorle.vellumor.desktop");
    std::string settings = home.put("data/Vellumor/preferences.json", "{}");
    test::FakeClock clock;
    SealableFileCalls calls;
    FileStore files{calls};
    Worker worker;
    RunJob write = [this](std::function<void()> job) { worker.post(std::move(job)); };
    Names steps; // and what is still there at each
    Upkeep upkeep{{},
                  folders,
                  {clock, files, calls, worker, write, [this] { note("polling stopped"); },
                   [this] { note("terminated"); }}};

    UpkeepTest()
    {
        home.put("data/Quorle/accounts.json", "{}");
        EXPECT_EQ(QCoro::waitFor(upkeep.setLaunchedAtLogin(true)), std::nullopt);
    }
    void note(const std::string& step)
    {
        steps.push_back(step + (isThere(entry) ? ", login item" : "") +
                        (isThere(settings) ? ", settings" : ""));
    }
    static bool isThere(const std::string& path) { return std::filesystem::exists(path); }
};

TEST_F(UpkeepTest, theRemovalStopsThePollingThenTheLoginItemThenDeletesAndEnds)
{
    const test::FileEvents events({home.file("config/autostart"), folders.vellumor()});
    EXPECT_EQ(QCoro::waitFor(upkeep.removeAllData()), Names());
    EXPECT_EQ(steps, (Names{"polling stopped, login item, settings", "terminated"}));
    EXPECT_EQ(events.take().changes, (Names{entry, settings}));
    EXPECT_EQ(test::namesIn(folders.data), Names());
}

TEST_F(UpkeepTest, whatIsLeftIsNamedAndTheProgramGoesOnWithoutWriting)
{
    std::string deep = "data/Quorle"; // deeper than anybody removes it
    for (int level = 0; level < 120; ++level)
        deep += "/d";
    home.makeFolder(deep);
    PreferencesStore preferences(files, settings, write);

    EXPECT_EQ(QCoro::waitFor(upkeep.removeAllData()), Names{"Quorle"});
    EXPECT_EQ(steps, Names{"polling stopped, login item, settings"});
    EXPECT_FALSE(isThere(entry));

    Preferences changed;
    changed.userInterval = 600;
    preferences.save(changed);
    test::passWorker(worker);
    EXPECT_FALSE(files.write("{}", folders.quorle() + "/poller.json"));
    EXPECT_EQ(test::namesIn(folders.data), Names{"Quorle"});
    EXPECT_EQ(test::namesIn(folders.quorle()), Names{"d"});
}

} // namespace
} // namespace vellumor::upkeepTest
