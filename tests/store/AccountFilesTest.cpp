#include "store/AccountFiles.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::accountFilesTest {

namespace {

using Names = std::vector<std::string>;

const std::string composed = "/home/me/.claude-Caf\u00E9";
const std::string decomposed = "/home/me/.claude-Cafe\u0301";

} // namespace

TEST(AccountFiles, theNameIsTheFirstEightDigitsOfTheHash)
{
    EXPECT_EQ(AccountFiles::path("/data/history", "/home/me/.claude"),
              "/data/history/cb67f5c9.json");
    EXPECT_EQ(AccountFiles::path("/data/history", "/home/me/.claude-work"),
              "/data/history/95e632f0.json");
}

TEST(AccountFiles, aDirectoryInEitherCompositionHasOneFile)
{
    ASSERT_NE(composed, decomposed);
    EXPECT_EQ(AccountFiles::path("/d", composed), "/d/123e4f4c.json");
    EXPECT_EQ(AccountFiles::path("/d", decomposed), "/d/123e4f4c.json");
}

TEST(AccountFiles, pruneRemovesEveryJsonFileOfNobody)
{
    const test::TempFolder folder;
    for (const char* name :
         {"6a50dc85.json", "9812b0b9.json", "123e4f4c.json", "deadbeef.json", ".json",
          ".hidden.json", "9812b0b9.json.json", "9812B0B9.json", "x.txt", "json", "6a50dc85.JSON",
          ".deadbeef.json.17.abc.tmp", "deadbeef.json~"})
        folder.put(name, name);
    AccountFiles::prune(folder.path(), {"/b", decomposed, "/never/seen"});
    EXPECT_EQ(test::namesIn(folder.path()),
              (Names{".deadbeef.json.17.abc.tmp", "123e4f4c.json", "6a50dc85.JSON", "9812b0b9.json",
                     "deadbeef.json~", "json", "x.txt"}));
    EXPECT_EQ(test::contentsOf(folder.file("9812b0b9.json")), "9812b0b9.json");
}

TEST(AccountFiles, keepingNobodyRemovesEveryJsonFileAndNothingElse)
{
    const test::TempFolder folder;
    for (int i = 0; i < 500; ++i)
        folder.put(std::to_string(i) + ".json", "[]");
    folder.put("notes.txt", "mine");
    AccountFiles::prune(folder.path(), {});
    EXPECT_EQ(test::namesIn(folder.path()), Names{"notes.txt"});
}

TEST(AccountFiles, whatCannotBeRemovedStaysAndTheRestGoes)
{
    const test::TempFolder folder;
    for (const char* name : {"1", "2", "3", "4", "5", "6", "7", "8"}) {
        folder.put(std::string(name) + ".json", "[]");
        folder.put(std::string(name) + "x.json/inside.json", "[]");
    }
    AccountFiles::prune(folder.path(), {});
    EXPECT_EQ(test::namesIn(folder.path()), (Names{"1x.json", "2x.json", "3x.json", "4x.json",
                                                   "5x.json", "6x.json", "7x.json", "8x.json"}));
    EXPECT_EQ(test::namesIn(folder.file("1x.json")), Names{"inside.json"});
}

TEST(AccountFiles, aLinkGoesAndWhatItLeadsToStays)
{
    const test::TempFolder folder;
    const test::TempFolder elsewhere;
    elsewhere.put("target.json", "mine");
    std::filesystem::create_symlink(elsewhere.file("target.json"), folder.file("file.json"));
    std::filesystem::create_symlink(elsewhere.path(), folder.file("folder.json"));
    std::filesystem::create_symlink("nothing", folder.file("dangling.json"));
    AccountFiles::prune(folder.path(), {});
    EXPECT_EQ(test::namesIn(folder.path()), Names());
    EXPECT_EQ(test::contentsOf(elsewhere.file("target.json")), "mine");
}

TEST(AccountFiles, aNameThatIsNoUtf8IsJudgedByItsBytes)
{
    const test::TempFolder folder;
    folder.put("\xFF.json", "[]");
    folder.put("\xFF.txt", "mine");
    AccountFiles::prune(folder.path(), {"/b"});
    EXPECT_EQ(test::namesIn(folder.path()), Names{"\xFF.txt"});
}

TEST(AccountFiles, pruneOfWhatIsNoFolderChangesNothing)
{
    const test::TempFolder folder;
    const std::string file = folder.put("file.json", "mine");
    AccountFiles::prune(folder.file("missing"), {});
    AccountFiles::prune(file, {});
    EXPECT_EQ(test::namesIn(folder.path()), Names{"file.json"});
    EXPECT_EQ(test::contentsOf(file), "mine");
}

} // namespace vellumor::accountFilesTest
