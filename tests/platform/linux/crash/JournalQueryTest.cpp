#include "platform/linux/crash/JournalQuery.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vellumor::journalQueryTest {
namespace {

using Texts = std::vector<std::string>;

bool has(const Texts& arguments, const std::string& argument)
{
    return std::find(arguments.begin(), arguments.end(), argument) != arguments.end();
}

TEST(JournalQuery, crashesAreAskedForByProgramUserAndTime)
{
    EXPECT_EQ(JournalQuery::crashes("vellumor", 1000, test::instant("2026-03-01T09:30:00.999Z")),
              (Texts{"--output=json", "--all", "--quiet", "--no-pager",
                     "--output-fields=MESSAGE,COREDUMP_PID,COREDUMP_EXE,COREDUMP_SIGNAL,"
                     "COREDUMP_SIGNAL_NAME,COREDUMP_TIMESTAMP",
                     "--reverse", "--lines=20", "--since=@1772357400",
                     "MESSAGE_ID=fc2e22bc6ee647b6b90729ab34a250b1", "_UID=1000",
                     "COREDUMP_UID=1000", "COREDUMP_COMM=vellumor"}));
}

TEST(JournalQuery, theSystemKeepsFifteenBytesOfAName)
{
    const Texts arguments = JournalQuery::crashes("a-program-with-a-long-name", 0, Instant());
    EXPECT_TRUE(has(arguments, "COREDUMP_COMM=a-program-with-"));
}

TEST(JournalQuery, aMomentBefore1970CountsAs1970)
{
    EXPECT_TRUE(
        has(JournalQuery::crashes("x", 0, Instant(std::chrono::seconds(-5))), "--since=@0"));
}

TEST(JournalQuery, theWordsOfAProcessAreThoseOfItsBoot)
{
    CoreDump dump;
    dump.bootId = "0123456789abcdef0123456789abcdef";
    dump.pid = 4242;
    EXPECT_EQ(JournalQuery::wordsOf(dump, 1000),
              (Texts{"--output=json", "--all", "--quiet", "--no-pager", "--output-fields=_PID",
                     "_BOOT_ID=0123456789abcdef0123456789abcdef", "_PID=4242", "_UID=1000"}));
}

} // namespace
} // namespace vellumor::journalQueryTest
