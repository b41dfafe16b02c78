#include "ui/settings/AboutTab.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::aboutTabTest {
namespace {

using test::Names;

struct AboutTabTest : test::SettingsTesting {
    void openAbout() { open(SettingsTab::about); }
    static CrashDigest crash(const std::string& signature)
    {
        CrashDigest digest;
        digest.signature = signature;
        digest.crashedAt = test::instant("2026-03-01T09:30:00Z");
        digest.fileName = "Vellumor-2026-03-01-093000.ips";
        return digest;
    }
    static constexpr const char* promo = "Also from the Quorle toolkit";
};

TEST_F(AboutTabTest, itSaysWhatThisIs)
{
    openAbout();
    for (const char* text :
         {"Claude usage in your menu bar.", "Version 1.0.0 · part of the Quorle toolkit",
          "Report a problem", "Vellumor reported no recent issues."})
        EXPECT_TRUE(windowSays(text)) << text;
}

TEST_F(AboutTabTest, crashesAreCountedAndTheNextStepIsTold)
{
    facts.recentCrashes = {crash("0123abcd")};
    openAbout();
    EXPECT_TRUE(windowSays("Vellumor stopped working unexpectedly once recently."));
    EXPECT_TRUE(windowSays(
        "\"Copy Details\" puts a report template on your clipboard — paste it into your email, "
        "fill "
        "in the details, and attach the crash report: Vellumor-2026-03-01-093000.ips (\"Show "
        "Reports\" will take you to it)."));
    test::expectNothingClipped(*window);
    window->close();
    facts.recentCrashes = {crash("0123abcd"), crash("4567cdef")};
    openAbout();
    EXPECT_TRUE(windowSays("Vellumor stopped working unexpectedly 2 times recently."));
    test::expectNothingClipped(*window);
}

TEST_F(AboutTabTest, theDetailsAreCopiedAndTheButtonSaysSo)
{
    facts.recentCrashes = {crash("0123abcd")};
    openAbout();
    pressIt("Copy Details");
    EXPECT_EQ(done, Names{"copy " + SupportReport::body(facts.environment, crash("0123abcd"), 1)});
    EXPECT_FALSE(test::isShown(*window, "Copy Details"));
    pressIt("Copied");
    EXPECT_EQ(done.size(), 2U);
    test::expectNothingClipped(*window);
    window->close();
    openAbout();
    EXPECT_TRUE(test::isShown(*window, "Copy Details"));
}

TEST_F(AboutTabTest, theReportsAreShown)
{
    openAbout();
    pressIt("Show Reports");
    EXPECT_EQ(done, Names{"reports"});
}

TEST_F(AboutTabTest, theSiblingIsMentionedUntilItIsDismissed)
{
    openAbout();
    for (const char* text :
         {promo, "— VS Code extension",
          "Switch Claude Code accounts from the status bar and pin them to projects."})
        EXPECT_TRUE(windowSays(text)) << text;
    pressIt("Don't show this again");
    EXPECT_TRUE(onDisk().crossPromoDismissed);
    EXPECT_FALSE(windowSays(promo));
    EXPECT_FALSE(test::isShown(*window, "Don't show this again"));
    EXPECT_TRUE(recorder.captured.empty());
}

TEST_F(AboutTabTest, theSiblingsNameAndItsKindAreTwoWords)
{
    openAbout();
    const auto& name = test::named<QAbstractButton>(*window, "Ostrelline");
    const auto& kind = test::named<QLabel>(*window, "— VS Code extension");
    const int end = name.mapTo(&*window, QPoint(name.width(), 0)).x();
    const int begin = kind.mapTo(&*window, QPoint()).x();
    EXPECT_GE(begin - end, 2);
    EXPECT_LE(begin - end, 8);
}

TEST_F(AboutTabTest, theSiblingIsNotMentionedWhereItIsInstalled)
{
    facts.isSiblingInstalled = true;
    openAbout();
    EXPECT_FALSE(windowSays(promo));
}

TEST_F(AboutTabTest, aClickOnTheSiblingIsOneEvent)
{
    openAbout();
    pressIt("Ostrelline");
    ASSERT_EQ(recorder.captured.size(), 1U);
    EXPECT_EQ(recorder.captured[0], TelemetryEvent::crossPromoClicked("ostrelline"));
    EXPECT_EQ(done.size(), 1U);
    EXPECT_FALSE(onDisk().crossPromoDismissed);
}

TEST_F(AboutTabTest, theTermsAndThePolicyAreLinked)
{
    openAbout();
    pressIt("Terms");
    // The tab has the same name.
    for (auto* const link : test::allNamed<QAbstractButton>(*window, "Privacy")) {
        if (test::roleOf(link) == QAccessible::Link)
            link->click();
    }
    ASSERT_EQ(done.size(), 2U);
    EXPECT_TRUE(done[0].ends_with("/terms")) << done[0];
    EXPECT_TRUE(done[1].ends_with("/privacy")) << done[1];
}

TEST_F(AboutTabTest, itIsIndependentOfTheMakerOfClaudeAndSaysSo)
{
    openAbout();
    std::string all;
    for (const std::string& text : test::texts(*window))
        all += text;
    for (const char* part : {"not affiliated with the maker of Claude", "change without notice"})
        EXPECT_NE(all.find(part), std::string::npos) << part;
}

} // namespace
} // namespace vellumor::aboutTabTest
