#include "store/PreferencesStore.h"

#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <vector>

namespace vellumor::preferencesStoreTest {

TEST(PreferencesStore, aMissingFileIsTheDefaultsAndIsNotMade)
{
    const test::TempFolder folder;
    const FileStore files;
    const PreferencesStore store(files, folder.file("sub/preferences.json"), runAtOnce);
    EXPECT_EQ(store.current(), Preferences());
    EXPECT_EQ(store.fileURL(), folder.file("sub/preferences.json"));
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST(PreferencesStore, whatIsLoadedIsHeldToItsBounds)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string bytes =
        R"({"userInterval":59,"sessionClosingLeadMinutes":121,"customThresholds":{"a":0,"b":100}})";
    const PreferencesStore store(files, folder.put("preferences.json", bytes), runAtOnce);
    EXPECT_EQ(store.current().userInterval, 60);
    EXPECT_EQ(store.current().sessionClosingLeadMinutes, 120);
    EXPECT_EQ(store.current().customThresholds,
              (std::map<std::string, double>{{"a", 1}, {"b", 99}}));
    EXPECT_EQ(test::contentsOf(store.fileURL()), bytes);
}

TEST(PreferencesStore, aFileThatIsBrokenOrNewerIsTheDefaultsUntilTheFirstChangeReplacesIt)
{
    for (const char* bytes : {R"({"userInterval":"120","notifySession50":true})",
                              R"({"schemaVersion":2,"userInterval":300,"x":1})", "{", "[]", ""}) {
        SCOPED_TRACE(bytes);
        const test::TempFolder folder;
        const FileStore files;
        const std::string path = folder.put("preferences.json", bytes);
        PreferencesStore store(files, path, runAtOnce);
        EXPECT_EQ(store.current(), Preferences());
        EXPECT_EQ(test::contentsOf(path), bytes);
        Preferences changed = store.current();
        changed.menuBarDualBars = true;
        EXPECT_EQ(store.save(changed), changed);
        EXPECT_EQ(test::contentsOf(path), changed.encode());
    }
}

TEST(PreferencesStore, savingClampsKeepsWritesAndGivesBack)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string path = folder.file("sub/preferences.json");
    PreferencesStore store(files, path, runAtOnce);
    Preferences wished;
    wished.schemaVersion = 9;
    wished.userInterval = 1801;
    wished.sessionClosingLeadMinutes = 4;
    wished.customThresholds = {{"a", 0}, {"b", 100}};
    wished.claudeBinaryPath = "/opt/claude";
    Preferences expected = wished;
    expected.schemaVersion = 1;
    expected.userInterval = 1800;
    expected.sessionClosingLeadMinutes = 5;
    expected.customThresholds = {{"a", 1}, {"b", 99}};
    EXPECT_EQ(store.save(wished), expected);
    EXPECT_EQ(store.current(), expected);
    EXPECT_EQ(test::contentsOf(path), expected.encode());
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(PreferencesStore(files, path, runAtOnce).current(), expected);
}

TEST(PreferencesStore, aFailedWriteLeavesTheFileAndKeepsTheChangeInMemory)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    const FileStore files(calls);
    const std::string path = folder.put("preferences.json", "{}");
    PreferencesStore store(files, path, runAtOnce);
    Preferences changed;
    changed.localCacheOnly = true;
    calls.failNext(test::FailingFileCalls::Call::rename, 1, EROFS);
    EXPECT_EQ(store.save(changed), changed);
    EXPECT_EQ(store.current(), changed);
    EXPECT_EQ(test::contentsOf(path), "{}");
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"preferences.json"});
}

TEST(PreferencesStore, textThatCannotBeEncodedLeavesTheFileAsItWas)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string path = folder.put("preferences.json", "{}");
    PreferencesStore store(files, path, runAtOnce);
    Preferences changed;
    changed.claudeBinaryPath = "/opt/\xFF";
    EXPECT_EQ(store.save(changed), changed);
    EXPECT_EQ(test::contentsOf(path), "{}");
}

TEST(PreferencesStore, writingIsLeftToOthersAndEachOfThemWritesTheValueOfItsChange)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string path = folder.file("preferences.json");
    std::vector<std::function<void()>> jobs;
    PreferencesStore store(files, path,
                           [&](std::function<void()> job) { jobs.push_back(std::move(job)); });
    Preferences first;
    first.userInterval = 300;
    Preferences second;
    second.userInterval = 600;
    store.save(first);
    store.save(second);
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
    EXPECT_EQ(store.current(), second);
    ASSERT_EQ(jobs.size(), 2U);
    jobs[0]();
    EXPECT_EQ(test::contentsOf(path), first.encode());
    jobs[1]();
    EXPECT_EQ(test::contentsOf(path), second.encode());
}

} // namespace vellumor::preferencesStoreTest
