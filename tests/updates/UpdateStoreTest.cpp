#include "updates/UpdateStore.h"

#include "support/FailingFileCalls.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace vellumor::updateStoreTest {
namespace {

using test::instant;

const UpdateState example{false, 2026030101, instant("2026-03-01T09:30:00.250Z")};
const std::string exampleText = "{\n"
                                "  \"automatic\" : false,\n"
                                "  \"checkedAt\" : \"2026-03-01T09:30:00.250Z\",\n"
                                "  \"schemaVersion\" : 1,\n"
                                "  \"serial\" : 2026030101\n"
                                "}";

struct UpdateStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string path = folder.file("Vellumor/updates.json");
};

TEST_F(UpdateStoreTest, withoutAFileUpdatesAreLookedForAndNothingWasSeen)
{
    const UpdateStore store(files, path, runAtOnce);
    EXPECT_EQ(store.current(), (UpdateState{true, 0, std::nullopt}));
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST_F(UpdateStoreTest, whatWasSavedIsThereAgain)
{
    UpdateStore(files, path, runAtOnce).save(example);
    EXPECT_EQ(UpdateStore(files, path, runAtOnce).current(), example);
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(UpdateState::decode(test::contentsOf(path)), example);
}

TEST_F(UpdateStoreTest, whatHasNotChangedIsNotWritten)
{
    const test::FailingFileCalls calls;
    const FileStore recorded(calls);
    UpdateStore store(recorded, path, runAtOnce);
    store.save(UpdateState());
    EXPECT_TRUE(calls.log().empty());
    store.save(example);
    const auto once = calls.log();
    EXPECT_FALSE(once.empty());
    store.save(example);
    EXPECT_EQ(calls.log(), once);
}

TEST_F(UpdateStoreTest, writingIsLeftToWhoeverRunsJobs)
{
    std::vector<std::function<void()>> jobs;
    UpdateStore store(files, path,
                      [&](std::function<void()> job) { jobs.push_back(std::move(job)); });
    store.save(example);
    EXPECT_EQ(store.current(), example);
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
    ASSERT_EQ(jobs.size(), 1U);
    jobs.front()();
    EXPECT_EQ(UpdateState::decode(test::contentsOf(path)), example);
}

TEST_F(UpdateStoreTest, aBrokenFileCountsAsNoneAndIsReplacedByTheNextChange)
{
    for (const char* text :
         {"", "[]", "{}", R"({"schemaVersion":1,"automatic":"no","serial":1})",
          R"({"schemaVersion":1,"automatic":false})", R"({"schemaVersion":1,"serial":1})",
          R"({"automatic":false,"serial":1})",
          R"({"schemaVersion":0,"automatic":false,"serial":1})",
          R"({"schemaVersion":1,"automatic":false,"serial":-1})",
          R"({"schemaVersion":1,"automatic":false,"serial":1,"checkedAt":"yesterday"})"}) {
        SCOPED_TRACE(text);
        folder.put("Vellumor/updates.json", text);
        UpdateStore store(files, path, runAtOnce);
        EXPECT_EQ(store.current(), UpdateState());
        store.save(example);
        EXPECT_EQ(UpdateStore(files, path, runAtOnce).current(), example);
    }
}

TEST_F(UpdateStoreTest, aFileOfANewerVersionIsNotUsedAndNotWrittenOver)
{
    const std::string newer = R"({"schemaVersion":2,"automatic":false,"serial":9})";
    folder.put("Vellumor/updates.json", newer);
    UpdateStore store(files, path, runAtOnce);
    EXPECT_EQ(store.current(), UpdateState());
    store.save(example);
    EXPECT_EQ(store.current(), example);
    EXPECT_EQ(test::contentsOf(path), newer);
}

TEST_F(UpdateStoreTest, aFullDiskCostsTheFileAndNotWhatIsKnown)
{
    test::FailingFileCalls calls;
    calls.failNext(test::FailingFileCalls::Call::write, 1, ENOSPC);
    const FileStore full(calls);
    UpdateStore store(full, path, runAtOnce);
    store.save(example);
    EXPECT_EQ(store.current(), example);
    EXPECT_EQ(test::contentsOf(path), "");
}

} // namespace
} // namespace vellumor::updateStoreTest
