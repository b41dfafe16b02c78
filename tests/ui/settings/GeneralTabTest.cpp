#include "ui/settings/GeneralTab.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::generalTabTest {
namespace {

using test::Names;

struct GeneralTabTest : test::SettingsTesting {
    void openGeneral() { open(SettingsTab::general); }
    [[nodiscard]] QCheckBox& box(const char* name) const
    {
        return test::named<QCheckBox>(*window, name);
    }
    void askToDelete()
    {
        pressIt("Delete All Data…");
        ASSERT_NE(test::dialog(), nullptr);
    }
    [[nodiscard]] bool saysSomewhere(const std::string& part) const
    {
        const auto all = test::texts(*window);
        return std::any_of(all.begin(), all.end(), [&](const std::string& text) {
            return text.find(part) != std::string::npos;
        });
    }
    static constexpr const char* login = "Launch Vellumor at login";
    static constexpr const char* automatic = "Check for updates automatically";
    static constexpr const char* check = "Check for Updates…";
};

TEST_F(GeneralTabTest, itShowsWhatStands)
{
    isLaunched = true;
    isAutomatic = false;
    openGeneral();
    EXPECT_TRUE(box(login).isChecked());
    EXPECT_FALSE(box(automatic).isChecked());
    EXPECT_TRUE(windowSays(
        "Removes everything Vellumor stores on this Mac. Claude Code's own data will remain "
        "untouched."));
    isLaunched = false; // by hand, in the file
    window->close();
    openGeneral();
    EXPECT_FALSE(box(login).isChecked());
}

TEST_F(GeneralTabTest, launchingAtLoginWaitsUntilItIsKnown)
{
    test::Gate reading;
    generalGate = &reading;
    openGeneral();
    EXPECT_FALSE(box(login).isEnabled());
    isLaunched = true;
    reading.open();
    pass();
    EXPECT_TRUE(box(login).isEnabled());
    EXPECT_TRUE(box(login).isChecked());
}

TEST_F(GeneralTabTest, launchingAtLoginIsSwitched)
{
    openGeneral();
    pressIt(login);
    EXPECT_TRUE(isLaunched);
    EXPECT_TRUE(box(login).isChecked());
    pressIt(login);
    EXPECT_FALSE(isLaunched);
    EXPECT_FALSE(box(login).isChecked());
}

TEST_F(GeneralTabTest, whereItCannotBeSwitchedItSaysWhy)
{
    loginError = "Read-only file system";
    openGeneral();
    pressIt(login);
    EXPECT_FALSE(box(login).isChecked());
    EXPECT_TRUE(windowSays("Couldn't update login item: Read-only file system"));
    test::expectNothingClipped(*window);
    loginError.reset();
    pressIt(login);
    EXPECT_TRUE(box(login).isChecked());
    EXPECT_FALSE(saysSomewhere("Couldn't update login item"));
}

TEST_F(GeneralTabTest, lookingForUpdatesByItselfIsSwitched)
{
    openGeneral();
    EXPECT_TRUE(box(automatic).isChecked());
    pressIt(automatic);
    EXPECT_FALSE(isAutomatic);
    EXPECT_FALSE(box(automatic).isChecked());
}

TEST_F(GeneralTabTest, aCheckSaysWhatItFoundAndLeadsThere)
{
    update = {GeneralModel::Update::Kind::available, "1.2.3", "https://example.org/1.2.3", {}};
    test::Gate asking;
    openGeneral();
    generalGate = &asking;
    pressIt(check);
    EXPECT_FALSE(test::named<QPushButton>(*window, check).isEnabled());
    EXPECT_FALSE(saysSomewhere("1.2.3"));
    asking.open();
    pass();
    EXPECT_TRUE(test::named<QPushButton>(*window, check).isEnabled());
    EXPECT_TRUE(saysSomewhere("1.2.3"));
    for (auto* const button : test::shown<QAbstractButton>(*window)) {
        if (test::roleOf(button) == QAccessible::Link)
            button->click();
    }
    EXPECT_EQ(done, Names{"open https://example.org/1.2.3"});
    test::expectNothingClipped(*window);
}

TEST_F(GeneralTabTest, aCheckThatFailsSaysWhyAndOffersNothing)
{
    update = {GeneralModel::Update::Kind::failed, {}, {}, "no answer"};
    openGeneral();
    pressIt(check);
    EXPECT_TRUE(saysSomewhere("no answer"));
    for (auto* const button : test::shown<QAbstractButton>(*window))
        EXPECT_NE(test::roleOf(button), QAccessible::Link);
}

TEST_F(GeneralTabTest, aBuildWithoutAFeedSaysSo)
{
    general.emplace(generalParts(clock, false));
    openGeneral();
    EXPECT_FALSE(box(automatic).isEnabled());
    EXPECT_FALSE(box(automatic).isChecked());
    EXPECT_FALSE(test::named<QPushButton>(*window, check).isEnabled());
    EXPECT_TRUE(saysSomewhere("pdates"));
}

TEST_F(GeneralTabTest, allDataAreDeletedOnlyAfterAQuestion)
{
    openGeneral();
    askToDelete();
    EXPECT_EQ(generalCalls, Names{"launched?"});
    EXPECT_TRUE(test::says(*test::dialog(), "Delete all Quorle data?"));
    std::string all;
    for (const std::string& text : test::texts(*test::dialog()))
        all += text;
    for (const char* part : {"settings", "accounts", "usage history", "telemetry identity",
                             "Claude Code's own data is untouched", "aunch at login", "quit"})
        EXPECT_NE(all.find(part), std::string::npos) << part;
    EXPECT_TRUE(test::named<QPushButton>(*test::dialog(), "Cancel").isDefault());
    test::press(*test::dialog(), "Delete and Quit");
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    EXPECT_EQ(generalCalls.back(), "remove");
}

TEST_F(GeneralTabTest, cancelAndEscapeDeleteNothing)
{
    openGeneral();
    askToDelete();
    test::press(*test::dialog(), "Cancel");
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    askToDelete();
    test::key(*test::dialog(), Qt::Key_Escape);
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    EXPECT_EQ(generalCalls, Names{"launched?"});
    EXPECT_TRUE(test::named<QPushButton>(*window, "Delete All Data…").isEnabled());
}

TEST_F(GeneralTabTest, whatCouldNotBeDeletedIsNamed)
{
    left = {"Vellumor", "Quorle"};
    openGeneral();
    test::Gate removing;
    askToDelete();
    generalGate = &removing;
    test::press(*test::dialog(), "Delete and Quit");
    pass();
    EXPECT_FALSE(test::named<QPushButton>(*window, "Delete All Data…").isEnabled());
    removing.open();
    pass();
    EXPECT_TRUE(windowSays(
        "Couldn't remove: Vellumor, Quorle — delete manually in Finder, then quit Vellumor."));
    EXPECT_TRUE(test::named<QPushButton>(*window, "Delete All Data…").isEnabled());
    test::expectNothingClipped(*window);
}

} // namespace
} // namespace vellumor::generalTabTest
