#include "store/FileStore.h"

#include "base/Json.h"
#include "store/SharedFileTest.h"
#include "support/FailingFileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

namespace vellumor::fileStoreConflictTest {

using test::Names;
using test::ofVersion;
using test::Outcome;
using test::setting;
using test::Update;

using FileStoreConflict = test::SharedFileTest;

TEST_F(FileStoreConflict, aWriterThatComesBetweenIsNotLost)
{
    folder.put("shared/file.json", R"({"a":1})");
    Update update;
    std::vector<int> attempts;
    update.onAfterRead = [&](int attempt) {
        attempts.push_back(attempt);
        if (attempt > 1)
            return;
        EXPECT_EQ(FileStore().updateJSONObject(path, {}, setting("foreign", 1)), Outcome::written);
    };
    EXPECT_EQ(files.updateJSONObject(path, update, setting("ours", 1)), Outcome::written);
    EXPECT_EQ(attempts, (std::vector<int>{1, 2}));
    EXPECT_EQ(Json::parse(test::contentsOf(path)), (Json{{"a", 1}, {"foreign", 1}, {"ours", 1}}));
    EXPECT_EQ(test::namesIn(folder.file("shared")), Names{"file.json"});
}

TEST_F(FileStoreConflict, aFileThatAppearsOrVanishesInBetweenIsAConflict)
{
    Update update;
    int attempts = 0;
    update.onAfterRead = [&](int attempt) {
        attempts = attempt;
        if (attempt == 1)
            folder.put("shared/file.json", R"({"foreign":1})");
        if (attempt == 2)
            std::filesystem::remove(path);
    };
    EXPECT_EQ(files.updateJSONObject(path, update, setting("ours", 1)), Outcome::written);
    EXPECT_EQ(attempts, 3);
    EXPECT_EQ(Json::parse(test::contentsOf(path)), (Json{{"ours", 1}}));
}

TEST_F(FileStoreConflict, afterThreeConflictsTheFourthDeltaWinsOverTheFreshestRead)
{
    Update update;
    int foreign = 0;
    update.onAfterRead = [&](int) {
        EXPECT_TRUE(FileStore().write(Json{{"foreign", ++foreign}}.dump(), path));
    };
    std::vector<Json> seen;
    const auto delta = [&](const Json& object) {
        seen.push_back(object);
        return setting("ours", seen.size())(object);
    };
    EXPECT_EQ(logged(update, delta, Outcome::lastWriterWins),
              "[FileStore] file.json: 3 conflicting writes, falling back to last-writer-wins\n");
    EXPECT_EQ(seen, (std::vector<Json>{
                        Json::object(), {{"foreign", 1}}, {{"foreign", 2}}, {{"foreign", 3}}}));
    EXPECT_EQ(Json::parse(test::contentsOf(path)), (Json{{"foreign", 3}, {"ours", 4}}));
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(test::namesIn(folder.file("shared")), Names{"file.json"});
}

TEST_F(FileStoreConflict, oneAttemptIsMadeWhateverIsAskedForAndTheLogTellsWhatWasAskedFor)
{
    for (const int asked : {0, -1, -1000}) {
        SCOPED_TRACE(asked);
        Update update;
        update.maxAttempts = asked;
        EXPECT_EQ(files.updateJSONObject(path, update, setting("a", asked)), Outcome::written);
        int attempts = 0;
        update.onAfterRead = [&](int attempt) {
            attempts += attempt;
            EXPECT_TRUE(FileStore().write(Json{{"foreign", asked}}.dump(), path));
        };
        EXPECT_EQ(logged(update, setting("ours", 1), Outcome::lastWriterWins),
                  "[FileStore] file.json: " + std::to_string(asked) +
                      " conflicting writes, falling back to last-writer-wins\n");
        EXPECT_EQ(attempts, 1);
    }
}

TEST_F(FileStoreConflict, theFallbackDoesNotAskForTheVersionAgain)
{
    Update update = ofVersion(1);
    update.maxAttempts = 1;
    update.onAfterRead = [&](int) { folder.put("shared/file.json", R"({"schemaVersion":9})"); };
    EXPECT_EQ(files.updateJSONObject(path, update, setting("ours", 1)), Outcome::lastWriterWins);
    EXPECT_EQ(Json::parse(test::contentsOf(path)), (Json{{"ours", 1}, {"schemaVersion", 9}}));
}

TEST_F(FileStoreConflict, inTheFallbackNothingToWriteAndNothingWritableAreNoChange)
{
    const FileStore::Delta lastOnes[] = {
        [](const Json&) { return std::nullopt; },
        setting("text", "\xFF"),
    };
    for (const auto& last : lastOnes) {
        Update update;
        update.maxAttempts = 1;
        update.onAfterRead = [&](int) { EXPECT_TRUE(FileStore().write(R"({"foreign":1})", path)); };
        int deltas = 0;
        EXPECT_EQ(files.updateJSONObject(path, update,
                                         [&](const Json& object) {
                                             return ++deltas == 1 ? Json{{"a", 1}} : last(object);
                                         }),
                  Outcome::noChange);
        EXPECT_EQ(test::contentsOf(path), R"({"foreign":1})");
    }
}

TEST_F(FileStoreConflict, aWriteThatFailsInTheFallbackIsAFailure)
{
    test::FailingFileCalls calls;
    Update update;
    update.maxAttempts = 1;
    update.onAfterRead = [&](int) {
        EXPECT_TRUE(FileStore().write(R"({"foreign":1})", path));
        calls.failNext(test::FailingFileCalls::Call::create, 2, ENOSPC);
    };
    EXPECT_EQ(FileStore(calls).updateJSONObject(path, update, setting("a", 1)), Outcome::failed);
    EXPECT_EQ(test::contentsOf(path), R"({"foreign":1})");
    EXPECT_EQ(test::namesIn(folder.file("shared")), Names{"file.json"});
}

// A foreign tool that writes into the file itself and puts the time back is the one that cannot be
// seen.
TEST_F(FileStoreConflict, aChangeInPlaceOfTheSameSizeAndTimeGoesUnseenAndAnyOtherIsSeen)
{
    struct Row {
        const char* bytes;
        bool isTimeKept;
        int attempts;
    };
    const Row rows[] = {
        {R"({"a":2})", true, 1}, {R"({"a":2})", false, 2}, {R"({"a":22})", true, 2}};
    for (const auto& [bytes, isTimeKept, attempts] : rows) {
        SCOPED_TRACE(attempts);
        folder.put("shared/file.json", R"({"a":1})");
        const timespec old[] = {{1700000000, 0}, {1700000000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), old, 0), 0);
        Update update;
        int made = 0;
        update.onAfterRead = [&](int attempt) {
            made = attempt;
            if (attempt > 1)
                return;
            std::ofstream(path) << bytes;
            if (isTimeKept)
                ::utimensat(AT_FDCWD, path.c_str(), old, 0);
        };
        EXPECT_EQ(files.updateJSONObject(path, update, setting("b", 1)), Outcome::written);
        EXPECT_EQ(made, attempts);
    }
}

} // namespace vellumor::fileStoreConflictTest
