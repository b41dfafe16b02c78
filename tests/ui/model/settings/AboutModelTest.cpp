#include "ui/model/settings/AboutModel.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::aboutModelTest {
namespace {

CrashDigest crash(const std::string& signature)
{
    CrashDigest digest;
    digest.signature = signature;
    digest.crashedAt = test::instant("2026-03-01T09:30:00Z");
    digest.fileName = "Vellumor-" + signature + ".ips";
    return digest;
}

struct AboutModelTest : testing::Test {
    test::FakeClock clock;
    AboutModel::Facts facts{{}, false, {"1.0.0", "12.0.0"}};
    int looks = 0;
    int folders = 0;
    int changes = 0;
    Preferences preferences;
    AboutModel model{
        {.clock = clock, .look = [this] { return look(); }, .showReports = [this] { ++folders; }}};

    AboutModelTest()
    {
        model.observe([this] { ++changes; });
    }
    Task<AboutModel::Facts> look()
    {
        ++looks;
        auto found = facts;
        co_return found;
    }
    [[nodiscard]] AboutContent content() const { return model.content(preferences); }
};

TEST_F(AboutModelTest, theVersionIsKnownAtOnce)
{
    EXPECT_EQ(content().version, "Version 1.0.0 · part of the Quorle toolkit");
    EXPECT_EQ(looks, 0);
}

TEST_F(AboutModelTest, nothingIsSaidOfCrashesAndTheSiblingBeforeItWasLookedFor)
{
    EXPECT_EQ(content().status, "");
    EXPECT_EQ(content().instructions, "");
    EXPECT_FALSE(content().showsCrossPromo);
    QCoro::waitFor(model.load());
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(content().status, "Vellumor reported no recent issues.");
    EXPECT_TRUE(content().showsCrossPromo);
    clock.advance(std::chrono::milliseconds(0));
    EXPECT_EQ(changes, 1);
}

TEST_F(AboutModelTest, crashesAreCountedAndTheLastOneIsToBeSent)
{
    facts.recentCrashes = {crash("0123abcd")};
    QCoro::waitFor(model.load());
    EXPECT_EQ(content().status, "Vellumor stopped working unexpectedly once recently.");
    EXPECT_EQ(content().instructions,
              "\"Copy Details\" puts a report template on your clipboard — paste it into your "
              "email, fill in the details, and attach the crash report: Vellumor-0123abcd.ips "
              "(\"Show Reports\" will take you to it).");
    facts.recentCrashes = {crash("4567cdef"), crash("0123abcd"), crash("0123abcd")};
    QCoro::waitFor(model.load());
    EXPECT_EQ(content().status, "Vellumor stopped working unexpectedly 3 times recently.");
    EXPECT_NE(content().instructions.find("Vellumor-4567cdef.ips"), std::string::npos);
}

TEST_F(AboutModelTest, theDetailsAreTheReportsBody)
{
    EXPECT_EQ(model.details(), SupportReport::body({}, std::nullopt, 0));
    QCoro::waitFor(model.load());
    EXPECT_EQ(model.details(), SupportReport::body(facts.environment, std::nullopt, 0));
    facts.recentCrashes = {crash("4567cdef"), crash("0123abcd")};
    QCoro::waitFor(model.load());
    EXPECT_EQ(model.details(), SupportReport::body(facts.environment, crash("4567cdef"), 2));
}

TEST_F(AboutModelTest, theSiblingIsShownUntilItIsThereOrDismissed)
{
    QCoro::waitFor(model.load());
    EXPECT_TRUE(content().showsCrossPromo);
    preferences.crossPromoDismissed = true;
    EXPECT_FALSE(content().showsCrossPromo);
    preferences.crossPromoDismissed = false;
    facts.isSiblingInstalled = true;
    QCoro::waitFor(model.load());
    EXPECT_FALSE(content().showsCrossPromo);
}

TEST_F(AboutModelTest, theReportsAreShownWhenTheyAreAskedFor)
{
    EXPECT_EQ(folders, 0);
    model.showReports();
    EXPECT_EQ(folders, 1);
}

TEST(AboutContent, theFixedTexts)
{
    EXPECT_STREQ(AboutContent::tagline, "Claude usage in your menu bar.");
    EXPECT_STREQ(AboutContent::crossPromoTitle, "Also from the Quorle toolkit");
    EXPECT_STREQ(AboutContent::crossPromoKind, " — VS Code extension");
    EXPECT_STREQ(AboutContent::crossPromoText,
                 "Switch Claude Code accounts from the status bar and pin them to projects.");
    const std::string disclaimer = AboutContent::disclaimer;
    for (const char* part : {"independent tools", "not affiliated with the maker of Claude",
                             "could change without notice"})
        EXPECT_NE(disclaimer.find(part), std::string::npos) << part;
}

} // namespace
} // namespace vellumor::aboutModelTest
