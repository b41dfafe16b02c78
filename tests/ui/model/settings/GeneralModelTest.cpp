#include "ui/model/settings/GeneralModel.h"

#include "ui/model/settings/FakeGeneralParts.h"

#include <QCoroTask>

#include <gtest/gtest.h>

namespace vellumor::generalModelTest {
namespace {

using std::chrono::milliseconds;
using Update = GeneralModel::Update;
using Calls = std::vector<std::string>;

struct GeneralModelTest : testing::Test, test::FakeGeneralParts {
    test::FakeClock clock;
    bool hasUpdates = true;
    int changes = 0;
    std::optional<GeneralModel> made;

    GeneralModel& model()
    {
        if (!made) {
            made.emplace(generalParts(clock, hasUpdates));
            made->observe([this] { ++changes; });
        }
        return *made;
    }
    [[nodiscard]] GeneralContent content() { return model().content(); }
    void turn() { clock.advance(milliseconds(0)); }
};

TEST_F(GeneralModelTest, whetherItIsLaunchedAtLoginIsKnownOnceItWasRead)
{
    isLaunched = true;
    EXPECT_EQ(content().launchAtLogin, std::nullopt);
    QCoro::waitFor(model().load());
    EXPECT_EQ(content().launchAtLogin, true);
    isLaunched = false; // by somebody else
    EXPECT_EQ(content().launchAtLogin, true);
    QCoro::waitFor(model().load());
    EXPECT_EQ(content().launchAtLogin, false);
    turn();
    EXPECT_EQ(changes, 1);
}

TEST_F(GeneralModelTest, launchingAtLoginIsSetAndReadBack)
{
    QCoro::waitFor(model().setLaunchAtLogin(true));
    EXPECT_EQ(generalCalls, (Calls{"launch", "launched?"}));
    EXPECT_EQ(content().launchAtLogin, true);
    EXPECT_EQ(content().loginError, "");
    QCoro::waitFor(model().setLaunchAtLogin(false));
    EXPECT_EQ(content().launchAtLogin, false);
}

TEST_F(GeneralModelTest, whereItCannotBeSetTheErrorIsShownAndWhatStands)
{
    loginError = "Read-only file system";
    QCoro::waitFor(model().setLaunchAtLogin(true));
    EXPECT_EQ(content().launchAtLogin, false);
    EXPECT_EQ(content().loginError, "Couldn't update login item: Read-only file system");
    loginError.reset();
    QCoro::waitFor(model().setLaunchAtLogin(true));
    EXPECT_EQ(content().launchAtLogin, true);
    EXPECT_EQ(content().loginError, "");
}

TEST_F(GeneralModelTest, whetherItLooksForUpdatesByItselfIsKept)
{
    EXPECT_TRUE(content().autoUpdates);
    model().setAutoUpdates(false);
    EXPECT_FALSE(isAutomatic);
    EXPECT_FALSE(content().autoUpdates);
    turn();
    EXPECT_EQ(changes, 1);
    model().setAutoUpdates(true);
    EXPECT_TRUE(isAutomatic);
}

TEST_F(GeneralModelTest, aBuildWithoutAFeedSaysSoAndAsksNobody)
{
    hasUpdates = false;
    EXPECT_FALSE(content().hasUpdates);
    EXPECT_FALSE(content().autoUpdates);
    EXPECT_NE(content().updateNote, "");
    QCoro::waitFor(model().checkForUpdates());
    EXPECT_EQ(generalCalls, Calls());
}

TEST_F(GeneralModelTest, aCheckTellsWhatItFound)
{
    EXPECT_EQ(content().updateNote, "");
    QCoro::waitFor(model().checkForUpdates());
    const std::string none = content().updateNote;
    EXPECT_NE(none, "");
    EXPECT_EQ(content().updatePage, "");
    update = {Update::Kind::available, "1.2.3", "https://example.org/1.2.3", {}};
    QCoro::waitFor(model().checkForUpdates());
    EXPECT_NE(content().updateNote.find("1.2.3"), std::string::npos);
    EXPECT_EQ(content().updatePage, "https://example.org/1.2.3");
    update = {Update::Kind::failed, {}, {}, "no answer"};
    QCoro::waitFor(model().checkForUpdates());
    EXPECT_NE(content().updateNote.find("no answer"), std::string::npos);
    EXPECT_EQ(content().updatePage, "");
    EXPECT_NE(content().updateNote, none);
}

TEST_F(GeneralModelTest, oneCheckRunsAtATime)
{
    test::Gate waiting;
    generalGate = &waiting;
    const Task<> first = model().checkForUpdates();
    EXPECT_TRUE(content().isChecking);
    EXPECT_NE(content().updateNote, "");
    QCoro::waitFor(model().checkForUpdates());
    EXPECT_EQ(generalCalls, Calls{"check"});
    EXPECT_TRUE(content().isChecking);
    turn();
    EXPECT_EQ(changes, 1);
    waiting.open();
    EXPECT_TRUE(first.isReady());
    EXPECT_FALSE(content().isChecking);
    turn();
    EXPECT_EQ(changes, 2);
}

TEST_F(GeneralModelTest, anUpdateThatWasFoundWithoutAskingIsShown)
{
    model().announce({Update::Kind::available, "2.0.0", "https://example.org/2", {}});
    EXPECT_NE(content().updateNote.find("2.0.0"), std::string::npos);
    EXPECT_EQ(content().updatePage, "https://example.org/2");
    turn();
    EXPECT_EQ(changes, 1);
    model().announce({});
    EXPECT_EQ(content().updatePage, "");
}

TEST_F(GeneralModelTest, whatCouldNotBeRemovedIsNamed)
{
    left = {"Vellumor"};
    QCoro::waitFor(model().removeAllData());
    EXPECT_EQ(content().removalError,
              "Couldn't remove: Vellumor — delete manually in Finder, then quit Vellumor.");
    left = {"Vellumor", "Quorle"};
    QCoro::waitFor(model().removeAllData());
    EXPECT_EQ(content().removalError,
              "Couldn't remove: Vellumor, Quorle — delete manually in Finder, then quit Vellumor.");
    EXPECT_FALSE(content().isRemoving);
}

TEST_F(GeneralModelTest, aRemovalThatLeavesSomethingHasSwitchedTheLoginItemOffAllTheSame)
{
    isLaunched = true;
    QCoro::waitFor(model().load());
    left = {"Vellumor"};
    isLaunched = false; // by the removal
    QCoro::waitFor(model().removeAllData());
    EXPECT_EQ(content().launchAtLogin, false);
}

TEST_F(GeneralModelTest, oneRemovalRunsAtATime)
{
    test::Gate waiting;
    generalGate = &waiting;
    const Task<> first = model().removeAllData();
    EXPECT_TRUE(content().isRemoving);
    QCoro::waitFor(model().removeAllData());
    EXPECT_EQ(generalCalls, Calls{"remove"});
    waiting.open();
    EXPECT_TRUE(first.isReady());
    EXPECT_FALSE(content().isRemoving);
    EXPECT_EQ(content().removalError, "");
}

TEST(GeneralContent, theQuestionNamesWhatGoes)
{
    EXPECT_STREQ(GeneralContent::removalTitle, "Delete all Quorle data?");
    const std::string text = GeneralContent::removalText;
    for (const char* part :
         {"“Vellumor”", "“Quorle”", "settings, accounts, usage history and telemetry identity",
          "Claude Code's own data is untouched", "aunch at login is switched off", "will quit"})
        EXPECT_NE(text.find(part), std::string::npos) << part;
}

} // namespace
} // namespace vellumor::generalModelTest
