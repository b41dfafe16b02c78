#include "usage/PersistedClaudePath.h"

#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::persistedClaudePathTest {
namespace {

using test::FailingFileCalls;
using test::TempFolder;

struct PersistedClaudePathTest : testing::Test {
    TempFolder folder;
    FailingFileCalls calls;
    FileStore files{calls};
    std::string file = folder.file("claude-path.json");
    PersistedClaudePath persisted{files, file};

    void put(std::string_view bytes) const { folder.put("claude-path.json", bytes); }
};

TEST_F(PersistedClaudePathTest, holdsNothingAtFirst)
{
    EXPECT_EQ(persisted.read(), std::nullopt);
}

TEST_F(PersistedClaudePathTest, keepsWhatWasNotedLast)
{
    for (const char* path : {"/opt/a/claude", "/home/me/b \"c\"/claude", "/home/\u00E9va/claude"}) {
        persisted.note(path);
        EXPECT_EQ(persisted.read(), path);
    }
}

TEST_F(PersistedClaudePathTest, writesOneObjectThatOnlyItsOwnerReads)
{
    persisted.note("/opt/a/claude");
    EXPECT_EQ(test::contentsOf(file),
              "{\n  \"path\": \"\\/opt\\/a\\/claude\",\n  \"schemaVersion\": 1\n}");
    EXPECT_EQ(test::modeOf(file), 0600U);
}

TEST_F(PersistedClaudePathTest, thePathThatIsNotedAlreadyIsNotWrittenAgain)
{
    persisted.note("/opt/a/claude");
    const auto written = calls.log().size();
    ASSERT_GT(written, 0U);
    persisted.note("/opt/a/claude");
    EXPECT_EQ(calls.log().size(), written);
    persisted.note("/opt/b/claude");
    EXPECT_GT(calls.log().size(), written);
}

TEST_F(PersistedClaudePathTest, readsThePathAloneAndTakesNothingButATextThatIsNotEmpty)
{
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {R"({"schemaVersion":1,"path":"/a/claude"})", "/a/claude"},
        {R"({"path":"/a/claude"})", "/a/claude"},
        {R"({"schemaVersion":7,"path":"/a/claude","more":[]})", "/a/claude"},
        {R"({"path":""})", std::nullopt},
        {R"({"path":null})", std::nullopt},
        {R"({"path":7})", std::nullopt},
        {R"({"path":["/a/claude"]})", std::nullopt},
        {R"({"Path":"/a/claude"})", std::nullopt},
        {R"(["path","/a/claude"])", std::nullopt},
        {R"({"path":"/a/claude")", std::nullopt},
        {"\"/a/claude\"", std::nullopt},
        {"", std::nullopt},
        {"\xFF\xFE", std::nullopt},
    };
    for (const auto& [bytes, path] : rows) {
        SCOPED_TRACE(bytes);
        put(bytes);
        EXPECT_EQ(persisted.read(), path);
    }
}

TEST_F(PersistedClaudePathTest, aBrokenFileIsReplacedByTheNextNote)
{
    put("{");
    persisted.note("/opt/a/claude");
    EXPECT_EQ(persisted.read(), "/opt/a/claude");
}

TEST_F(PersistedClaudePathTest, aFailedWriteIsSilentAndLeavesTheOldPath)
{
    persisted.note("/opt/a/claude");
    calls.failNext(FailingFileCalls::Call::rename, 1, ENOSPC);
    testing::internal::CaptureStderr();
    persisted.note("/opt/b/claude");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(persisted.read(), "/opt/a/claude");
}

} // namespace
} // namespace vellumor::persistedClaudePathTest
