#include "store/DataRemover.h"

#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

namespace vellumor::dataRemoverTest {

namespace {

namespace fs = std::filesystem;
using Call = test::FailingFileCalls::Call;
using Names = std::vector<std::string>;
using DataRemover::Outcome;
using Outcomes = std::vector<Outcome>;

Outcomes outcomesOf(const std::vector<DataRemover::Result>& results)
{
    Outcomes outcomes;
    for (const auto& result : results)
        outcomes.push_back(result.outcome);
    return outcomes;
}

Outcomes removeAll(const test::TempFolder& data)
{
    return outcomesOf(DataRemover::execute(DataRemover::targets(data.path())));
}

Outcomes removeAll(const test::TempFolder& data, const FileCalls& calls)
{
    return outcomesOf(DataRemover::execute(DataRemover::targets(data.path()), calls));
}

// Something of every kind that the program and its sibling leave behind.
void putWorld(const test::TempFolder& data)
{
    for (const char* name :
         {"Vellumor/preferences.json", "Vellumor/.lock", "Vellumor/history/0123abcd.json",
          "Vellumor/.accounts.json.1.A.tmp", "Vellumor/receipts/0123abcd.json",
          "Quorle/accounts.json", "Quorle/presence/vellumor.json"})
        data.put(name, "{}");
    data.makeFolder("Vellumor/revive");
}

} // namespace

TEST(DataRemover, theTargetsAreTheTwoFoldersInThisOrder)
{
    const std::vector<DataRemover::Target> expected = {{"Vellumor", "/data/Vellumor"},
                                                       {"Quorle", "/data/Quorle"}};
    EXPECT_EQ(DataRemover::targets("/data"), expected);
}

TEST(DataRemover, bothFoldersGoWithAllThatIsInThemAndNothingElseDoes)
{
    const test::TempFolder data;
    putWorld(data);
    data.put("Vellumor-other/file", "stays");
    data.put("applications/other.desktop", "stays");
    const auto targets = DataRemover::targets(data.path());
    const std::vector<DataRemover::Result> expected = {{targets[0], Outcome::removed},
                                                       {targets[1], Outcome::removed}};
    EXPECT_EQ(DataRemover::execute(targets), expected);
    EXPECT_EQ(test::namesIn(data.path()), (Names{"Vellumor-other", "applications"}));
    EXPECT_EQ(test::contentsOf(data.file("Vellumor-other/file")), "stays");
}

TEST(DataRemover, withNothingOnDiskBothAreAbsent)
{
    const test::TempFolder data;
    EXPECT_EQ(removeAll(data), (Outcomes{Outcome::absent, Outcome::absent}));
    EXPECT_EQ(outcomesOf(DataRemover::execute(DataRemover::targets(data.file("not/there")))),
              (Outcomes{Outcome::absent, Outcome::absent}));
    const std::string file = data.put("file", "no folder");
    EXPECT_EQ(outcomesOf(DataRemover::execute(DataRemover::targets(file))),
              (Outcomes{Outcome::absent, Outcome::absent}));
}

TEST(DataRemover, oneMayBeAbsentAndTheOtherNot)
{
    const test::TempFolder data;
    data.put("Quorle/accounts.json", "{}");
    EXPECT_EQ(removeAll(data), (Outcomes{Outcome::absent, Outcome::removed}));
}

TEST(DataRemover, aLinkGoesAndWhatItLeadsToStays)
{
    const test::TempFolder data;
    const test::TempFolder elsewhere;
    const std::string precious = elsewhere.put("folder/precious", "stays");
    elsewhere.put("single", "stays");
    data.makeFolder("Vellumor");
    fs::create_directory_symlink(elsewhere.file("folder"), data.file("Vellumor/history"));
    fs::create_symlink(elsewhere.file("single"), data.file("Vellumor/preferences.json"));
    fs::create_symlink(data.file("nowhere"), data.file("Vellumor/dangling"));
    fs::create_directory_symlink(elsewhere.path(), data.file("Quorle"));
    EXPECT_EQ(removeAll(data), (Outcomes{Outcome::removed, Outcome::removed}));
    EXPECT_EQ(test::namesIn(data.path()), Names{});
    EXPECT_EQ(test::contentsOf(precious), "stays");
    EXPECT_EQ(test::namesIn(elsewhere.path()), (Names{"folder", "single"}));
}

TEST(DataRemover, aLinkThatLeadsNowhereIsRemovedToo)
{
    const test::TempFolder data;
    fs::create_symlink(data.file("nowhere"), data.file("Vellumor"));
    EXPECT_EQ(removeAll(data), (Outcomes{Outcome::removed, Outcome::absent}));
    EXPECT_EQ(test::namesIn(data.path()), Names{});
}

TEST(DataRemover, aTargetNeedNotBeAFolderAndItsEntriesNeedNotBeFiles)
{
    const test::TempFolder data;
    data.put("Vellumor", "a file");
    data.makeFolder("Quorle");
    ASSERT_EQ(::mkfifo(data.file("Quorle/pipe").c_str(), 0600), 0);
    data.put("Quorle/\xff\n not text", "");
    data.put("Quorle/a/b/c/d/e/f/g/h", "");
    EXPECT_EQ(removeAll(data), (Outcomes{Outcome::removed, Outcome::removed}));
    EXPECT_EQ(test::namesIn(data.path()), Names{});
}

TEST(DataRemover, aTargetThatFailsDoesNotStopTheOther)
{
    const test::TempFolder data;
    data.put("Vellumor/preferences.json", "{}");
    data.put("Quorle/accounts.json", "{}");
    test::FailingFileCalls calls;
    calls.failNext(Call::unlink, 1, EACCES);
    EXPECT_EQ(removeAll(data, calls), (Outcomes{Outcome::failed, Outcome::removed}));
    EXPECT_EQ(test::namesIn(data.path()), Names{"Vellumor"});
}

TEST(DataRemover, eachCallThatFailsMakesTheTargetFail)
{
    for (const int error : {EACCES, EPERM, EROFS, EBUSY, EIO}) {
        for (int nth = 1; nth <= 4; ++nth) { // a file, a file in a folder, that folder, the target
            SCOPED_TRACE(testing::Message() << error << " " << nth);
            const test::TempFolder data;
            data.put("Vellumor/file", "{}");
            data.put("Vellumor/history/file", "{}");
            test::FailingFileCalls calls;
            calls.failNext(Call::unlink, nth, error);
            EXPECT_EQ(removeAll(data, calls), (Outcomes{Outcome::failed, Outcome::absent}));
            EXPECT_EQ(test::namesIn(data.path()), Names{"Vellumor"});
        }
    }
}

TEST(DataRemover, whatCannotBeRemovedDoesNotKeepTheRest)
{
    const test::TempFolder data;
    for (const char* name : {"a", "b", "c", "folder/d", "folder/e"})
        data.put(std::string("Vellumor/") + name, "{}");
    test::FailingFileCalls calls;
    calls.failNext(Call::unlink, 1, EACCES);
    EXPECT_EQ(removeAll(data, calls), (Outcomes{Outcome::failed, Outcome::absent}));
    EXPECT_EQ(test::filesBelow(data.path()).size(), 1U);
}

TEST(DataRemover, whatIsGoneByItselfMeanwhileIsNoFailure)
{
    const test::TempFolder data;
    data.put("Vellumor/history/file", "{}");
    test::FailingFileCalls calls;
    calls.beforeUnlink([&](const std::string& name) {
        if (name == "history")
            fs::remove(data.file("Vellumor/history"));
        if (name == "file")
            fs::remove(data.file("Vellumor/history/file"));
    });
    EXPECT_EQ(removeAll(data, calls), (Outcomes{Outcome::removed, Outcome::absent}));
}

TEST(DataRemover, aFileThatSomebodyWritesMeanwhileIsRemovedInAnotherTry)
{
    const test::TempFolder data;
    data.put("Quorle/presence/vellumor.json", "{}");
    int written = 0;
    test::FailingFileCalls calls;
    calls.beforeUnlink([&](const std::string& name) {
        if (name == "presence" && written < 2)
            data.put("Quorle/presence/" + std::to_string(written++), "{}");
    });
    EXPECT_EQ(removeAll(data, calls), (Outcomes{Outcome::absent, Outcome::removed}));
    EXPECT_EQ(written, 2);
    EXPECT_EQ(test::namesIn(data.path()), Names{});
}

TEST(DataRemover, whoNeverStopsWritingMakesItFailAfterAFewTries)
{
    const test::TempFolder data;
    data.put("Quorle/accounts.json", "{}");
    int written = 0;
    test::FailingFileCalls calls;
    calls.beforeUnlink([&](const std::string& name) {
        if (name.ends_with("/Quorle"))
            data.put("Quorle/" + std::to_string(written++), "{}");
    });
    EXPECT_EQ(removeAll(data, calls), (Outcomes{Outcome::absent, Outcome::failed}));
    EXPECT_EQ(written, 5);
}

// The sibling goes on writing until the folder is gone; what it makes anew behind that is its own.
TEST(DataRemover, besideARealWriterEitherEverythingGoesOrItIsCalledAFailure)
{
    const test::TempFolder data;
    data.put("Quorle/accounts.json", "{}");
    std::atomic<bool> isOver = false;
    std::atomic<int> written = 0;
    std::thread writer([&] {
        while (!isOver) {
            std::ofstream(data.file("Quorle/" + std::to_string(written % 50))) << "{}";
            ++written;
        }
    });
    while (written < 100)
        std::this_thread::yield();
    const Outcomes outcomes = removeAll(data);
    isOver = true;
    writer.join();
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_EQ(outcomes[1] == Outcome::removed, !fs::exists(data.file("Quorle")));
    EXPECT_EQ(removeAll(data)[1],
              outcomes[1] == Outcome::removed ? Outcome::absent : Outcome::removed);
}

// In the moment between the look at a folder and its opening.
TEST(DataRemover, aFolderThatBecomesALinkMeanwhileIsNotFollowed)
{
    const test::TempFolder data;
    const test::TempFolder elsewhere;
    elsewhere.put("precious", "stays");
    data.put("Vellumor/history/file", "{}");
    bool isSwapped = false;
    test::FailingFileCalls calls;
    calls.beforeUnlink([&](const std::string& name) {
        if (name != "history" || isSwapped)
            return;
        isSwapped = true;
        data.put("Vellumor/history/late", "{}"); // so that the folder is tried again
        fs::rename(data.file("Vellumor/history"), data.file("moved"));
        fs::create_directory_symlink(elsewhere.path(), data.file("Vellumor/history"));
    });
    EXPECT_EQ(removeAll(data, calls)[0], Outcome::failed);
    EXPECT_TRUE(isSwapped);
    EXPECT_EQ(test::namesIn(elsewhere.path()), Names{"precious"});
    EXPECT_EQ(removeAll(data)[0], Outcome::removed); // the link, this time
    EXPECT_EQ(test::namesIn(elsewhere.path()), Names{"precious"});
}

TEST(DataRemover, aTreeOfAbsurdDepthIsAFailureAndNoCrash)
{
    const test::TempFolder data;
    std::string path = "Vellumor";
    for (int level = 0; level < 150; ++level)
        path += "/d";
    data.makeFolder(path);
    EXPECT_EQ(removeAll(data)[0], Outcome::failed);
}

} // namespace vellumor::dataRemoverTest
