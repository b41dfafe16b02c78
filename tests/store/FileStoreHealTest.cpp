#include "store/FileStore.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

namespace vellumor::fileStoreHealTest {

namespace fs = std::filesystem;

namespace {

void setMode(const std::string& path, mode_t mode)
{
    ASSERT_EQ(::chmod(path.c_str(), mode), 0) << path;
}

} // namespace

TEST(FileStoreHeal, foldersAreClosedToOthersAndFilesTooHiddenOnesIncluded)
{
    const test::TempFolder folder;
    const char* files[] = {"root/a.json", "root/.b.json.1.X.tmp", "root/sub/c", "root/.hidden/d"};
    const char* folders[] = {"root", "root/sub", "root/.hidden", "root/empty"};
    folder.makeFolder("root/empty");
    for (const char* name : files)
        setMode(folder.put(name, "kept"), 0777);
    for (const char* name : folders)
        setMode(folder.file(name), 0777);
    FileStore().healTree(folder.file("root"));
    for (const char* name : files) {
        EXPECT_EQ(test::modeOf(folder.file(name)), 0600U) << name;
        EXPECT_EQ(test::contentsOf(folder.file(name)), "kept") << name;
    }
    for (const char* name : folders)
        EXPECT_EQ(test::modeOf(folder.file(name)), 0700U) << name;
}

TEST(FileStoreHeal, modesThatAreTooNarrowAreWidenedForTheOwner)
{
    const test::TempFolder folder;
    setMode(folder.put("root/sub/file", ""), 0000);
    setMode(folder.file("root/sub"), 0000);
    FileStore().healTree(folder.file("root"));
    EXPECT_EQ(test::modeOf(folder.file("root/sub")), 0700U);
    EXPECT_EQ(test::modeOf(folder.file("root/sub/file")), 0600U);
}

TEST(FileStoreHeal, specialBitsAreTakenAway)
{
    const test::TempFolder folder;
    setMode(folder.put("root/file", ""), 06755);
    setMode(folder.makeFolder("root/sub"), 03777);
    FileStore().healTree(folder.file("root"));
    EXPECT_EQ(test::modeOf(folder.file("root/file")), 0600U);
    EXPECT_EQ(test::modeOf(folder.file("root/sub")), 0700U);
}

TEST(FileStoreHeal, whatIsNeitherFileNorFolderGetsTheModeOfAFile)
{
    const test::TempFolder folder;
    folder.makeFolder("root");
    ASSERT_EQ(::mkfifo(folder.file("root/pipe").c_str(), 0666), 0);
    setMode(folder.file("root/pipe"), 0666);
    FileStore().healTree(folder.file("root")); // and is not waited for
    EXPECT_EQ(test::modeOf(folder.file("root/pipe")), 0600U);
}

TEST(FileStoreHeal, linksAreNeitherChangedNorFollowed)
{
    const test::TempFolder folder;
    setMode(folder.put("foreign/file", ""), 0644);
    setMode(folder.file("foreign"), 0755);
    folder.makeFolder("root");
    fs::create_symlink(folder.file("foreign"), folder.file("root/folderLink"));
    fs::create_symlink(folder.file("foreign/file"), folder.file("root/fileLink"));
    fs::create_symlink("../foreign", folder.file("root/relativeLink"));
    fs::create_symlink(folder.file("gone"), folder.file("root/dangling"));
    fs::create_symlink(folder.file("root"), folder.file("root/circle"));
    setMode(folder.put("root/zz-last", ""), 0644);
    FileStore().healTree(folder.file("root"));
    EXPECT_EQ(test::modeOf(folder.file("foreign")), 0755U);
    EXPECT_EQ(test::modeOf(folder.file("foreign/file")), 0644U);
    EXPECT_EQ(test::modeOf(folder.file("root/zz-last")), 0600U);
    EXPECT_EQ(test::namesIn(folder.file("root")).size(), 6U);
}

TEST(FileStoreHeal, aLinkAsRootIsLeftAloneWithAllThatLiesBehindIt)
{
    const test::TempFolder folder;
    setMode(folder.put("foreign/file", ""), 0644);
    setMode(folder.file("foreign"), 0755);
    fs::create_symlink(folder.file("foreign"), folder.file("root"));
    FileStore().healTree(folder.file("root"));
    EXPECT_EQ(test::modeOf(folder.file("foreign")), 0755U);
    EXPECT_EQ(test::modeOf(folder.file("foreign/file")), 0644U);
}

TEST(FileStoreHeal, aRootThatIsNotThereIsNotMade)
{
    const test::TempFolder folder;
    FileStore().healTree(folder.file("missing"));
    FileStore().healTree("");
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST(FileStoreHeal, whatLiesBesideTheRootIsLeftAlone)
{
    const test::TempFolder folder;
    folder.makeFolder("root");
    setMode(folder.put("beside", ""), 0644);
    setMode(folder.path(), 0755);
    FileStore().healTree(folder.file("root"));
    EXPECT_EQ(test::modeOf(folder.file("beside")), 0644U);
    EXPECT_EQ(test::modeOf(folder.path()), 0755U);
}

} // namespace vellumor::fileStoreHealTest
