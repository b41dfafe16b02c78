#include "store/DiskPath.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace vellumor::diskPathTest {

namespace {

// One name in its two forms: e with an acute accent, in one code point and in two.
const std::string composedName = "caf\xC3\xA9";
const std::string decomposedName = "cafe\xCC\x81";

// As a user without rights sees it: whoever runs the tests may read everything.
FolderState stateForAnybody(const std::string& path)
{
    constexpr uid_t nobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isAnybody = ::geteuid() != 0 || ::setuid(nobody) == 0;
        ::_exit(isAnybody ? static_cast<int>(DiskPath::folderState(path)) : -1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return static_cast<FolderState>(WEXITSTATUS(status));
}

} // namespace

TEST(DiskPath, aPathThatExistsAsGivenIsLeftAsItIs)
{
    const test::TempFolder folder;
    folder.put(composedName, "");
    folder.put(decomposedName, "");
    EXPECT_EQ(DiskPath::spelled(folder.file(composedName)), folder.file(composedName));
    EXPECT_EQ(DiskPath::spelled(folder.file(decomposedName)), folder.file(decomposedName));
}

TEST(DiskPath, aNameInTheOtherCompositionIsFound)
{
    for (const bool isComposedOnDisk : {true, false}) {
        SCOPED_TRACE(isComposedOnDisk);
        const test::TempFolder folder;
        const std::string onDisk = folder.put(isComposedOnDisk ? composedName : decomposedName, "");
        EXPECT_EQ(DiskPath::spelled(folder.file(isComposedOnDisk ? decomposedName : composedName)),
                  onDisk);
    }
}

TEST(DiskPath, everyFolderOfThePathIsLookedUp)
{
    const test::TempFolder folder;
    const std::string onDisk =
        folder.put(decomposedName + "/plain/" + decomposedName + "/file.json", "");
    const std::string asked = folder.file(composedName + "/plain/" + composedName + "/file.json");
    EXPECT_EQ(DiskPath::spelled(asked), onDisk);
    EXPECT_TRUE(DiskPath::exists(asked));
    EXPECT_FALSE(DiskPath::isFolder(asked));
    EXPECT_TRUE(DiskPath::isFolder(folder.file(composedName + "/plain")));
}

TEST(DiskPath, ofSeveralSpellingsTheFirstByByteOrderIsTaken)
{
    const test::TempFolder folder;
    // A letter with two marks: asked for in one code point, on disk in two of its longer forms.
    folder.put("\xE1\xBA\xB9\xCC\x82", "");
    const std::string first = folder.put("\xC3\xAA\xCC\xA3", "");
    EXPECT_EQ(DiskPath::spelled(folder.file("\xE1\xBB\x87")), first);
}

TEST(DiskPath, whereNothingFitsTheRestIsLeftAsGiven)
{
    const test::TempFolder folder;
    folder.makeFolder(decomposedName);
    EXPECT_EQ(DiskPath::spelled(folder.file(composedName + "/n\xC3\xA9w/file")),
              folder.file(decomposedName + "/n\xC3\xA9w/file"));
    EXPECT_EQ(DiskPath::spelled("/nonexistent/n\xC3\xA9w"), "/nonexistent/n\xC3\xA9w");
    EXPECT_EQ(DiskPath::spelled("relativ\xC3\xA9"), "relativ\xC3\xA9");
    EXPECT_EQ(DiskPath::spelled(""), "");
}

TEST(DiskPath, existenceFollowsLinks)
{
    const test::TempFolder folder;
    const std::string target = folder.makeFolder("target");
    std::filesystem::create_symlink(target, folder.file("link"));
    std::filesystem::create_symlink(folder.file("gone"), folder.file("dangling"));
    EXPECT_TRUE(DiskPath::exists(folder.file("link")));
    EXPECT_TRUE(DiskPath::isFolder(folder.file("link")));
    EXPECT_FALSE(DiskPath::exists(folder.file("dangling")));
    EXPECT_FALSE(DiskPath::isFolder(folder.file("dangling")));
    EXPECT_FALSE(DiskPath::exists(folder.file("missing")));
    EXPECT_FALSE(DiskPath::isFolder(folder.put("file", "")));
}

TEST(DiskPath, aTypedFolderIsJudgedByWhatIsThere)
{
    const test::TempFolder folder;
    const std::string target = folder.makeFolder(".claude-work");
    const std::string file = folder.put("file", "");
    std::filesystem::create_directory_symlink(target, folder.file("link"));
    std::filesystem::create_symlink(file, folder.file("to-file"));
    std::filesystem::create_symlink(folder.file("gone"), folder.file("dangling"));
    std::filesystem::create_symlink(folder.file("loop"), folder.file("loop"));
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    const std::pair<std::string, FolderState> table[] = {
        {target, FolderState::usable},
        {target + "/", FolderState::usable},
        {folder.file("link"), FolderState::usable},
        {"/", FolderState::usable},
        {file, FolderState::notAFolder},
        {folder.file("to-file"), FolderState::notAFolder},
        {folder.file("pipe"), FolderState::notAFolder}, // and nobody waits for its other end
        {"/dev/null", FolderState::notAFolder},
        {folder.file("missing"), FolderState::missing},
        {folder.file("missing/below"), FolderState::missing},
        {folder.file("dangling"), FolderState::missing},
        {folder.file("file/below"), FolderState::missing},
        {folder.file("loop"), FolderState::missing},
        {folder.file(std::string(300, 'n')), FolderState::missing},
        {"/" + std::string(5000, 'n'), FolderState::missing},
        {"", FolderState::notAbsolute},
        {"relative", FolderState::notAbsolute},
        {".claude-work", FolderState::notAbsolute},
        {"../work", FolderState::notAbsolute},
        {"~/.claude-work", FolderState::notAbsolute}, // its tilde is expanded elsewhere
        {" /tmp", FolderState::notAbsolute},
    };
    for (const auto& [path, state] : table)
        EXPECT_EQ(DiskPath::folderState(path), state) << path;
}

TEST(DiskPath, aTypedFolderIsFoundInItsOtherComposition)
{
    const test::TempFolder folder;
    folder.makeFolder(decomposedName);
    EXPECT_EQ(DiskPath::folderState(folder.file(composedName)), FolderState::usable);
    EXPECT_EQ(DiskPath::folderState(folder.file("caf\xC3\xA8")), FolderState::missing);
}

TEST(DiskPath, aTypedFolderThatMayNotBeReadIsNotMissing)
{
    const test::TempFolder folder;
    const std::string open = folder.makeFolder("open");
    const std::string closed = folder.makeFolder("closed");
    folder.makeFolder("closed/below");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(open.c_str(), 0755), 0);
    EXPECT_EQ(stateForAnybody(open), FolderState::usable);
    for (const mode_t mode : {0000U, 0444U, 0111U}) { // both are needed: to list, and to go in
        ASSERT_EQ(::chmod(closed.c_str(), mode), 0);
        EXPECT_EQ(stateForAnybody(closed), FolderState::unreadable) << mode;
    }
    ASSERT_EQ(::chmod(closed.c_str(), 0), 0);
    EXPECT_EQ(stateForAnybody(closed + "/below"), FolderState::unreadable);
    EXPECT_EQ(stateForAnybody(folder.file("missing")), FolderState::missing);
    ASSERT_EQ(::chmod(closed.c_str(), 0700), 0); // so that it can go
}

} // namespace vellumor::diskPathTest
