#include "platform/linux/AutostartFile.h"

#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::autostartFileFailureTest {
namespace {

using Call = test::FailingFileCalls::Call;
using Names = std::vector<std::string>;

constexpr const char* name = "dev.quorle.vellumor.desktop";
const std::string byHand = "[Desktop Entry]\nX-Mine=1\n";

struct Failure {
    Call call;
    int nth;
    int error;
    const char* words;
};
const Failure failures[] = {
    {Call::create, 1, EACCES, "Permission denied"},
    {Call::create, 1, EROFS, "Read-only file system"},
    {Call::write, 1, ENOSPC, "No space left on device"},
    {Call::write, 2, ENOSPC, "No space left on device"},
    {Call::fsync, 1, EIO, "Input/output error"},
    {Call::rename, 1, EPERM, "Operation not permitted"},
};

TEST(AutostartFileFailure, aCallThatFailsIsToldInWordsAndLeavesTheFileAsItWas)
{
    for (const bool on : {true, false}) {
        for (const auto& [call, nth, error, words] : failures) {
            SCOPED_TRACE(testing::Message() << on << " " << static_cast<int>(call) << " " << words);
            const test::TempFolder config;
            const std::string path = config.put(std::string("autostart/") + name, byHand);
            test::FailingFileCalls calls;
            calls.limitWrites(20);
            calls.failNext(call, nth, error);
            AutostartFile login(config.path(), "/usr/bin/vellumor", calls);
            EXPECT_EQ(login.setEnabled(on), words);
            EXPECT_EQ(test::contentsOf(path), byHand);
            EXPECT_EQ(test::namesIn(config.file("autostart")), Names{name});
        }
    }
}

TEST(AutostartFileFailure, aFileThatCannotBeRemovedIsToldInWords)
{
    const test::TempFolder config;
    test::FailingFileCalls calls;
    AutostartFile login(config.path(), "/usr/bin/vellumor", calls);
    ASSERT_EQ(login.setEnabled(true), std::nullopt);
    calls.failNext(Call::unlink, 1, EROFS);
    EXPECT_EQ(login.setEnabled(false), "Read-only file system");
    EXPECT_TRUE(login.isEnabled());
}

TEST(AutostartFileFailure, whatStandsInTheWayIsToldInWords)
{
    const test::TempFolder config;
    config.put("autostart", "a file");
    AutostartFile login(config.path(), "/usr/bin/vellumor");
    EXPECT_EQ(login.setEnabled(true), "Not a directory");
    EXPECT_FALSE(login.isEnabled());
    EXPECT_EQ(login.setEnabled(false), std::nullopt); // it is off
    const test::TempFolder other;
    other.makeFolder(std::string("autostart/") + name);
    AutostartFile onFolder(other.path(), "/usr/bin/vellumor");
    EXPECT_NE(onFolder.setEnabled(true), std::nullopt);
    EXPECT_NE(onFolder.setEnabled(false), std::nullopt);
    EXPECT_EQ(test::namesIn(other.file("autostart")), Names{name});
}

TEST(AutostartFileFailure, aProgramThatTheFileCannotNameIsToldInWordsAndNothingIsWritten)
{
    const test::TempFolder config;
    for (const char* program : {"", "vellumor", "/opt/\xff/vellumor"}) {
        AutostartFile login(config.path(), program);
        EXPECT_NE(login.setEnabled(true), std::nullopt) << program;
        EXPECT_FALSE(login.isEnabled());
    }
    EXPECT_EQ(test::namesIn(config.path()), Names{});
}

} // namespace
} // namespace vellumor::autostartFileFailureTest
