#include "platform/linux/crash/ImporterTesting.h"

namespace vellumor::journalCrashImporterTest {
namespace {

using namespace std::chrono_literals;
using test::coreDumpEntry;
using test::crashTime;
using test::installedAt;
using Texts = std::vector<std::string>;

using JournalCrashImporterTest = test::ImporterTest;

constexpr const char* stack = "Process 4242 (vellumor) of user 1000 dumped core.\n\n"
                              "Stack trace of thread 4242:\n"
                              "#0  0x1 _ZN8vellumor6Poller4tickEv (vellumor + 0x20)\n";

TEST_F(JournalCrashImporterTest, aCrashInTheJournalBecomesAReport)
{
    journal.add(test::ownLine(crashTime - 1h, 4242));
    journal.add(test::ownLine(crashTime - 30min, 4242));
    journal.add(coreDumpEntry(crashTime, 4242, stack));
    EXPECT_EQ(importWith(journal.write()), 1);
    EXPECT_EQ(test::namesIn(reports), Texts{"Vellumor-2026-03-01-093005.ips"});
    ASSERT_EQ(digests().size(), 1U);
    const CrashDigest digest = digests()[0];
    EXPECT_EQ(digest.incidentID, "0123456789abcdef0123456789abcdef-4242-1772357405000000");
    EXPECT_EQ(digest.area, "poller");
    EXPECT_EQ(digest.uptime, "long"); // from the first line that it said
    EXPECT_EQ(digest.crashedAt, test::instant("2026-03-01T09:30:05Z"));
}

TEST_F(JournalCrashImporterTest, aProcessThatTheJournalHeardNothingFromHasNoUptime)
{
    journal.add(test::ownLine(crashTime - 1h, 4241));
    journal.add(coreDumpEntry(crashTime, 4242, stack));
    EXPECT_EQ(importWith(journal.write()), 1);
    EXPECT_EQ(digests()[0].uptime, "unknown");
}

TEST_F(JournalCrashImporterTest, neitherCommandLineNorEnvironmentNorAPathIsTakenOver)
{
    journal.add(coreDumpEntry(crashTime, 4242, stack));
    EXPECT_EQ(importWith(journal.write()), 1);
    const std::string report = test::contentsOf(reports + "/Vellumor-2026-03-01-093005.ips");
    for (const char* word : {"--secret", "example-token", "/home/ann", "/opt/vellumor"})
        EXPECT_EQ(report.find(word), std::string::npos) << word;
}

TEST_F(JournalCrashImporterTest, aSecondImportBringsNothingNew)
{
    journal.add(coreDumpEntry(crashTime, 4242, stack));
    const std::string journalctl = journal.write();
    EXPECT_EQ(importWith(journalctl), 1);
    const auto before = test::contentsOf(reports + "/Vellumor-2026-03-01-093005.ips");
    const auto calls = journal.calls();
    EXPECT_EQ(importWith(journalctl), 0);
    EXPECT_EQ(test::namesIn(reports).size(), 1U);
    EXPECT_EQ(test::contentsOf(reports + "/Vellumor-2026-03-01-093005.ips"), before);
    // The journal is asked for crashes once more, and for nothing else.
    EXPECT_EQ(std::count(calls.begin(), calls.end(), '\n'), 2);
    const auto later = journal.calls();
    EXPECT_EQ(std::count(later.begin(), later.end(), '\n'), 3);
}

TEST_F(JournalCrashImporterTest, crashesFromBeforeTheInstallationAreNotItsOwn)
{
    journal.add(coreDumpEntry(crashTime, 4242, stack));
    const std::string journalctl = journal.write();
    EXPECT_EQ(importWith(journalctl, crashTime + 300ms), 0); // the next second
    EXPECT_FALSE(std::filesystem::exists(reports));
    EXPECT_EQ(importWith(journalctl, crashTime + 200ms), 1); // the journal knows whole seconds
}

TEST_F(JournalCrashImporterTest, onlyThisProgramsCrashesOfThisUserCount)
{
    const auto with = [&](const char* key, const std::string& value) {
        auto entry = coreDumpEntry(crashTime, 4242, stack);
        entry[key] = value;
        journal.add(entry);
    };
    with("COREDUMP_COMM", "vellum");
    with("COREDUMP_UID", "4294967294");
    with("_UID", "4294967294"); // told by somebody else
    with("MESSAGE_ID", "00112233445566778899aabbccddeeff");
    EXPECT_EQ(importWith(journal.write()), 0);
    EXPECT_FALSE(std::filesystem::exists(reports));
}

TEST_F(JournalCrashImporterTest, theLastTwentyCrashesCount)
{
    for (int i = 0; i < 25; ++i)
        journal.add(coreDumpEntry(crashTime + i * 1min, 100 + i, stack));
    EXPECT_EQ(importWith(journal.write()), 20);
    const auto names = test::namesIn(reports);
    EXPECT_EQ(names.front(), "Vellumor-2026-03-01-093505.ips");
    EXPECT_EQ(names.back(), "Vellumor-2026-03-01-095405.ips");
}

TEST_F(JournalCrashImporterTest, crashesOfOneSecondHaveAReportEach)
{
    journal.add(coreDumpEntry(crashTime, 1, stack));
    journal.add(coreDumpEntry(crashTime, 2, stack));
    EXPECT_EQ(importWith(journal.write()), 2);
    EXPECT_EQ(test::namesIn(reports),
              (Texts{"Vellumor-2026-03-01-093005-2.ips", "Vellumor-2026-03-01-093005.ips"}));
}

TEST_F(JournalCrashImporterTest, theVersionIsThatOfThisProgramUnlessItsFileIsNewerThanTheCrash)
{
    journal.add(coreDumpEntry(crashTime, 1, stack));
    const Instant future = test::instant("2100-01-01T00:00:00Z");
    journal.add(coreDumpEntry(future, 2, stack));
    executable = folder.put("vellumor", ""); // made after the first of them
    EXPECT_EQ(importWith(journal.write()), 2);
    EXPECT_EQ(digests()[0].crashedVersion, "1.0.0");
    EXPECT_EQ(digests()[1].crashedVersion, "unknown");
}

TEST_F(JournalCrashImporterTest, aProgramOfUnknownPathIsTakenForThisOne)
{
    auto entry = coreDumpEntry(crashTime, 4242, stack);
    entry.erase("COREDUMP_EXE");
    journal.add(entry);
    EXPECT_EQ(importWith(journal.write()), 1);
    EXPECT_EQ(digests()[0].area, "poller");
}

TEST_F(JournalCrashImporterTest, anEmptyJournalMakesNothing)
{
    journal.add(test::ownLine(crashTime, 4242));
    EXPECT_EQ(importWith(journal.write()), 0);
    EXPECT_FALSE(std::filesystem::exists(folder.file("data")));
}

TEST_F(JournalCrashImporterTest, withoutAJournalNothingHappens)
{
    EXPECT_EQ(importWith(folder.file("no-such-program")), 0);
    const std::string nowhere = folder.file("nowhere");
    const std::string empty = folder.put("empty", "");
    for (const std::string& script :
         {std::string("exit 1"), "exec /usr/bin/journalctl --directory='" + nowhere + "' \"$@\"",
          "exec /usr/bin/journalctl --file='" + empty + "' \"$@\""}) {
        EXPECT_EQ(importWith(journal.makeScript(script)), 0) << script;
        EXPECT_FALSE(std::filesystem::exists(folder.file("data")));
    }
}

} // namespace
} // namespace vellumor::journalCrashImporterTest
