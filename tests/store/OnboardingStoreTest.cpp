#include "store/OnboardingStore.h"

#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <vector>

namespace vellumor::onboardingStoreTest {

TEST(OnboardingStore, aFileThatIsMissingOrUnusableCountsAsNever)
{
    struct Row {
        const char* bytes;
        int completedVersion;
    };
    const Row rows[] = {
        {R"({"schemaVersion":1,"completedVersion":1})", 1},
        {R"({"schemaVersion":0,"completedVersion":7})", 7},
        {R"({"schemaVersion":1.0,"completedVersion":2.0})", 2},
        {R"({"schemaVersion":1,"completedVersion":1,"unknown":[]})", 1},
        {R"({"schemaVersion":2,"completedVersion":1})", 0},
        {R"({"schemaVersion":99,"completedVersion":1})", 0},
        {R"({"schemaVersion":1})", 0},
        {R"({"completedVersion":1})", 0},
        {R"({"schemaVersion":1,"completedVersion":null})", 0},
        {R"({"schemaVersion":1,"completedVersion":"1"})", 0},
        {R"({"schemaVersion":1,"completedVersion":true})", 0},
        {R"({"schemaVersion":1,"completedVersion":1.5})", 0},
        {"{}", 0},
        {"[]", 0},
        {"", 0},
    };
    for (const auto& [bytes, completedVersion] : rows) {
        SCOPED_TRACE(bytes);
        const test::TempFolder folder;
        const FileStore files;
        const OnboardingStore store(files, folder.put("onboarding.json", bytes), runAtOnce);
        EXPECT_EQ(store.current().completedVersion, completedVersion);
        EXPECT_EQ(store.shouldShow({}), completedVersion == 0);
        EXPECT_EQ(test::contentsOf(folder.file("onboarding.json")),
                  bytes); // loading changes nothing
    }
}

TEST(OnboardingStore, loadingAMissingFileMakesNothing)
{
    const test::TempFolder folder;
    const FileStore files;
    const OnboardingStore store(files, folder.file("sub/onboarding.json"), runAtOnce);
    EXPECT_EQ(store.current(), (OnboardingState{1, 0}));
    EXPECT_TRUE(store.shouldShow({}));
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST(OnboardingStore, aChangeIsWrittenAtOnceAndReplacesAFileOfANewerVersion)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string path =
        folder.put("onboarding.json", R"({"schemaVersion":2,"completedVersion":5,"x":1})");
    OnboardingStore store(files, path, runAtOnce);
    store.setCurrent({1, OnboardingState::currentVersion});
    EXPECT_EQ(store.current(), (OnboardingState{1, 1}));
    EXPECT_EQ(test::contentsOf(path), "{\n  \"completedVersion\": 1,\n  \"schemaVersion\": 1\n}");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(OnboardingStore(files, path, runAtOnce).current(), (OnboardingState{1, 1}));
}

TEST(OnboardingStore, aFailedWriteKeepsTheStateInMemoryAndTheOldFile)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    const FileStore files(calls);
    const std::string bytes = R"({"schemaVersion":1,"completedVersion":0})";
    const std::string path = folder.put("onboarding.json", bytes);
    OnboardingStore store(files, path, runAtOnce);
    calls.failNext(test::FailingFileCalls::Call::write, 1, ENOSPC);
    store.setCurrent({1, 1});
    EXPECT_FALSE(store.shouldShow({}));
    EXPECT_EQ(test::contentsOf(path), bytes);
}

TEST(OnboardingStore, theVariableDecidesBeforeTheFile)
{
    struct Row {
        const char* variable;
        bool isShownAtFirst;
        bool isShownAfterwards;
    };
    const Row rows[] = {{"show", true, true},  {"skip", false, false}, {"", true, false},
                        {"SHOW", true, false}, {"1", true, false},     {"skip ", true, false}};
    const test::TempFolder folder;
    const FileStore files;
    const OnboardingStore never(files, folder.file("missing.json"), runAtOnce);
    const OnboardingStore done(
        files, folder.put("done.json", R"({"schemaVersion":1,"completedVersion":1})"), runAtOnce);
    for (const auto& [variable, isShownAtFirst, isShownAfterwards] : rows) {
        SCOPED_TRACE(variable);
        const Environment environment = {{"VELLUMOR_ONBOARDING", variable}};
        EXPECT_EQ(never.shouldShow(environment), isShownAtFirst);
        EXPECT_EQ(done.shouldShow(environment), isShownAfterwards);
    }
}

TEST(OnboardingStore, writingIsLeftToOthersAndEachOfThemWritesTheValueOfItsChange)
{
    const test::TempFolder folder;
    const FileStore files;
    const std::string path = folder.file("onboarding.json");
    std::vector<std::function<void()>> jobs;
    OnboardingStore store(files, path,
                          [&](std::function<void()> job) { jobs.push_back(std::move(job)); });
    store.setCurrent({1, 1});
    store.setCurrent({1, 0});
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
    EXPECT_EQ(store.current(), (OnboardingState{1, 0}));
    ASSERT_EQ(jobs.size(), 2U);
    jobs[0]();
    EXPECT_EQ(OnboardingStore(files, path, runAtOnce).current(), (OnboardingState{1, 1}));
    jobs[1]();
    EXPECT_EQ(OnboardingStore(files, path, runAtOnce).current(), (OnboardingState{1, 0}));
}

} // namespace vellumor::onboardingStoreTest
