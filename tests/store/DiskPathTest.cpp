#include "store/DiskPath.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor {

namespace {

// One name in its two forms: e with an acute accent, in one code point and in two.
const std::string composedName = "caf\xC3\xA9";
const std::string decomposedName = "cafe\xCC\x81";

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

} // namespace vellumor
