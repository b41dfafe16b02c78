#include "store/FileStore.h"

#include "base/Json.h"
#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace vellumor::fileStoreFailureTest {

namespace {

using Call = test::FailingFileCalls::Call;
using Names = std::vector<std::string>;
using Outcome = FileStore::UpdateOutcome;

const std::string oldText = R"({"old":true})";

// The calls of one write of eight bytes, four at a time, up to the point where the new file stands.
struct Failure {
    Call call;
    int nth;
    int error;
};
const Failure failures[] = {
    {Call::create, 1, EACCES}, {Call::create, 1, ENOSPC}, {Call::create, 1, EROFS},
    {Call::create, 1, EMFILE}, {Call::write, 1, ENOSPC},  {Call::write, 2, ENOSPC},
    {Call::write, 1, EDQUOT},  {Call::write, 2, EIO},     {Call::fsync, 1, EIO},
    {Call::fsync, 1, ENOSPC},  {Call::rename, 1, EACCES}, {Call::rename, 1, EROFS},
};

} // namespace

TEST(FileStoreFailure, aCallThatFailsLeavesTheOldFileWholeAndNothingBesideIt)
{
    for (const auto& [call, nth, error] : failures) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(call) << " " << nth << " " << error);
        const test::TempFolder folder;
        const std::string path = folder.put("file.json", oldText);
        test::FailingFileCalls calls;
        calls.limitWrites(4);
        calls.failNext(call, nth, error);
        EXPECT_FALSE(FileStore(calls).write("12345678", path));
        EXPECT_EQ(test::contentsOf(path), oldText);
        EXPECT_EQ(test::namesIn(folder.path()), Names{"file.json"});
    }
}

TEST(FileStoreFailure, aCallThatFailsLeavesNothingWhereNothingWas)
{
    for (const auto& [call, nth, error] : failures) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(call) << " " << nth << " " << error);
        const test::TempFolder folder;
        test::FailingFileCalls calls;
        calls.limitWrites(4);
        calls.failNext(call, nth, error);
        EXPECT_FALSE(FileStore(calls).write("12345678", folder.file("file.json")));
        EXPECT_EQ(test::namesIn(folder.path()), Names{});
    }
}

TEST(FileStoreFailure, anUpdateThatFailsLeavesTheSharedFileWholeAndIsNotTriedAgain)
{
    for (const auto& [call, nth, error] : failures) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(call) << " " << nth << " " << error);
        const test::TempFolder folder;
        const std::string path = folder.put("file.json", oldText);
        test::FailingFileCalls calls;
        calls.limitWrites(4);
        calls.failNext(call, nth, error);
        int deltas = 0;
        const auto outcome = FileStore(calls).updateJSONObject(path, {}, [&](const Json& object) {
            ++deltas;
            Json changed = object;
            changed["new"] = 1;
            return changed;
        });
        EXPECT_EQ(outcome, Outcome::failed);
        EXPECT_EQ(deltas, 1);
        EXPECT_EQ(test::contentsOf(path), oldText);
        EXPECT_EQ(test::namesIn(folder.path()), Names{"file.json"});
    }
}

TEST(FileStoreFailure, aFolderThatCannotBeSyncedDoesNotUndoTheWrite)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    calls.failNext(Call::fsync, 2, EINVAL);
    EXPECT_TRUE(FileStore(calls).write("new", folder.file("file.json")));
    EXPECT_EQ(calls.log().back(), "fsync folder");
    EXPECT_EQ(test::contentsOf(folder.file("file.json")), "new");
}

TEST(FileStoreFailure, anInterruptedWriteGoesOn)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    calls.limitWrites(4);
    calls.failNext(Call::write, 2, EINTR);
    EXPECT_TRUE(FileStore(calls).write("12345678", folder.file("file.json")));
    EXPECT_EQ(test::contentsOf(folder.file("file.json")), "12345678");
}

TEST(FileStoreFailure, aWriteThatTakesNothingIsAFailureAndNotAnEndlessLoop)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    calls.limitWrites(0);
    EXPECT_FALSE(FileStore(calls).write("bytes", folder.file("file.json")));
    EXPECT_EQ(test::namesIn(folder.path()), Names{});
}

TEST(FileStoreFailure, aFailureIsNotLogged)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    calls.failNext(Call::write, 1, ENOSPC);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(FileStore(calls).write("bytes", folder.file("file.json")));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(FileStoreFailure, aFolderInPlaceOfTheFileMakesTheWriteFail)
{
    const test::TempFolder folder;
    folder.put("file.json/inside", "kept");
    EXPECT_FALSE(FileStore().write("bytes", folder.file("file.json")));
    EXPECT_EQ(FileStore().updateJSONObject(folder.file("file.json"), {},
                                           [](const Json& object) { return object; }),
              Outcome::failed);
    EXPECT_EQ(test::namesIn(folder.path()), Names{"file.json"});
    EXPECT_EQ(test::contentsOf(folder.file("file.json/inside")), "kept");
}

TEST(FileStoreFailure, theNextWriteAfterAFullDiskGoesThrough)
{
    const test::TempFolder folder;
    test::FailingFileCalls calls;
    const FileStore files(calls);
    calls.failNext(Call::write, 1, ENOSPC);
    EXPECT_FALSE(files.write("first", folder.file("file.json")));
    EXPECT_TRUE(files.write("second", folder.file("file.json")));
    EXPECT_EQ(test::contentsOf(folder.file("file.json")), "second");
}

// The kernel's own refusal in the middle of a file, in a child whose files may not grow beyond 4096
// bytes.
TEST(FileStoreFailure, aFileThatOutgrowsItsLimitLeavesTheOldOneWhole)
{
    const test::TempFolder folder;
    const std::string path = folder.put("file.json", oldText);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4096, 4096};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            ::_exit(2);
        const bool small = FileStore().write(std::string(4096, 'a'), folder.file("small"));
        ::_exit(small && !FileStore().write(std::string(4097, 'a'), path) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(test::contentsOf(path), oldText);
    EXPECT_EQ(test::namesIn(folder.path()), (Names{"file.json", "small"}));
}

} // namespace vellumor::fileStoreFailureTest
