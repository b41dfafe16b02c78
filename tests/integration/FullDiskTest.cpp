// The real program while the disk is full.

#include "integration/BusWorld.h"

#include "base/Json.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

namespace vellumor::fullDiskTest {
namespace {

using test::ProgramWorld;
using Files = std::map<std::string, std::string>;

struct FullDiskTest : testing::Test, test::BusWorld {
    std::string data = world.folder.makeFolder("home/.local/share");
    std::string mark = world.folder.file("disk-is-full");

    FullDiskTest()
    {
        world.environment["LD_PRELOAD"] = VELLUMOR_FULL_DISK;
        world.environment["FULL_DISK_FOLDER"] = data;
        world.environment["FULL_DISK_MARK"] = mark;
        hasten(60); // a refresh every 20 seconds, and a tick a minute
        world.signIn(".claude", "a-token");
    }
    // Every file with its bytes, hidden ones too.
    [[nodiscard]] Files files() const
    {
        Files all;
        for (const std::string& path : test::filesBelow(data))
            all[path] = test::contentsOf(path);
        return all;
    }
    // The same, once no write that has begun before is under way any more.
    [[nodiscard]] Files filesAtRest() const
    {
        Files last;
        EXPECT_TRUE(ProgramWorld::waitUntil([&] {
            Files now = files();
            std::swap(now, last);
            return now == last && std::none_of(now.begin(), now.end(), [](const auto& file) {
                       return file.first.ends_with(".tmp");
                   });
        }));
        return last;
    }
    // Whether what is under the name of a file of JSON is one.
    void expectWhole() const
    {
        for (const auto& [path, bytes] : files())
            EXPECT_TRUE(!path.ends_with(".json") || parseJson(bytes)) << path << '\n' << bytes;
    }
    [[nodiscard]] bool showsNext(int next)
    {
        percent = next;
        return refresh() && waitUntilShown(std::to_string(next) + "%");
    }
    // The last reading, in each of the files that have it.
    [[nodiscard]] bool isOnDisk(int reading) const
    {
        const std::string text = "\"percent\": " + std::to_string(reading);
        expectWhole();
        return world.sharedReading().find(text) != std::string::npos &&
               test::contentsOf(data + "/Vellumor/usage-snapshots.json").find(text) !=
                   std::string::npos;
    }
    [[nodiscard]] bool waitUntilOnDisk(int reading) const
    {
        return ProgramWorld::waitUntil([&] { return isOnDisk(reading); });
    }
};

TEST_F(FullDiskTest, readingsGoOnTheFilesStayAndTheNextReadingFindsRoom)
{
    const auto program = world.start();
    ASSERT_TRUE(waitUntilOnDisk(62));
    ASSERT_TRUE(ProgramWorld::waitUntil(
        [this] { return world.hasFile(".local/share/Quorle/presence/vellumor.json"); }));
    int next = 70;
    for (const char* const how : {"", "late"}) {
        SCOPED_TRACE(how);
        world.folder.put("disk-is-full", how);
        const auto asked = requests();
        const Files before = filesAtRest();
        ASSERT_TRUE(showsNext(next++));
        EXPECT_GT(requests(), asked);
        ASSERT_TRUE(showsNext(next++));
        EXPECT_TRUE(ProgramWorld::waitUntil([&] { return files() == before; }));
        EXPECT_FALSE(isOnDisk(next - 1));

        std::filesystem::remove(mark);
        ASSERT_TRUE(showsNext(next));
        EXPECT_TRUE(waitUntilOnDisk(next++));
    }
    EXPECT_EQ(program->wait(std::chrono::milliseconds(0)), std::nullopt);
}

TEST_F(FullDiskTest, aStartOnAFullDiskRunsFromMemory)
{
    world.folder.put("disk-is-full", "");
    const auto program = world.start();
    ASSERT_TRUE(waitUntilShown("62%"));
    ASSERT_TRUE(showsNext(70));
    EXPECT_TRUE(ProgramWorld::waitUntil([this] { return files().size() == 1; }));
    EXPECT_TRUE(files().begin()->first.ends_with("/Vellumor/.lock"));
    std::filesystem::remove(mark);
    ASSERT_TRUE(showsNext(71));
    EXPECT_TRUE(waitUntilOnDisk(71));
}

} // namespace
} // namespace vellumor::fullDiskTest
