#include "ui/settings/AccountsTab.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::accountsTabTest {
namespace {

using test::Names;

struct AccountsTabTest : test::SettingsTesting {
    void openAccounts() { open(SettingsTab::accounts); }
    // The names in the fields of the rows, from top to bottom.
    [[nodiscard]] Names rows() const
    {
        Names names;
        for (const auto* field : test::allNamed<QLineEdit>(*window, "Name"))
            names.push_back(field->text().toStdString());
        return names;
    }
    // Of the row at this place.
    void askToRemove(std::size_t place = 0)
    {
        test::allNamed<QAbstractButton>(*window, "More actions").at(place)->click();
        pass();
        test::pick(QStringLiteral("Remove from Vellumor…"));
        pass();
    }
    void addManually(const QString& way)
    {
        auto& button = test::named<QPushButton>(*window, "Add Account Manually");
        ASSERT_NE(button.menu(), nullptr);
        button.menu()->popup(button.mapToGlobal(QPoint(0, button.height())));
        test::pick(way);
        pass();
    }
};

TEST_F(AccountsTabTest, itSaysWhatCanBeDone)
{
    add("ada");
    rescan();
    openAccounts();
    EXPECT_TRUE(
        windowSays("Drag & drop to reorder the accounts. Pin them to see their usage in the "
                   "menu bar."));
    EXPECT_TRUE(windowSays("Untrack accounts to hide them and to stop refreshing their usage."));
    EXPECT_TRUE(windowSays("1 of 1 accounts tracked"));
    EXPECT_FALSE(windowSays("No Claude accounts found"));
    EXPECT_FALSE(test::isShown(*window, "How to sign in to Claude Code"));
    EXPECT_FALSE(test::isShown(*window, "Add back"));
}

TEST_F(AccountsTabTest, eachAccountHasARowTrackedOrNot)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    state.setTracked(id("ben"), false);
    openAccounts();
    EXPECT_EQ(rows(), (Names{"ada", "ben", "cyd"}));
    EXPECT_TRUE(windowSays("2 of 3 accounts tracked"));
}

TEST_F(AccountsTabTest, whatChangesWhileItIsSeenIsSeen)
{
    add("ada");
    rescan();
    openAccounts();
    add("ben");
    rescan();
    pass();
    EXPECT_EQ(rows(), (Names{"ada", "ben"}));
    state.rename(account("ben"), "Work");
    state.reorder({1}, 0);
    pass();
    EXPECT_EQ(rows(), (Names{"Work", "ada"}));
    state.remove(account("ada"));
    pass();
    EXPECT_EQ(rows(), Names{"Work"});
    EXPECT_TRUE(windowSays("1 account hidden"));
}

TEST_F(AccountsTabTest, whatIsNotSeenIsNotMadeAnewUntilItIs)
{
    add("ada");
    rescan();
    openAccounts();
    auto& name = test::named<QLineEdit>(*window, "Name");
    window->close();
    state.rename(account("ada"), "Work");
    pass();
    EXPECT_EQ(name.text(), "ada");
    openAccounts();
    EXPECT_EQ(name.text(), "Work");
    window->select(SettingsTab::usage);
    state.rename(account("Work"), "ada");
    pass();
    EXPECT_EQ(name.text(), "Work");
    window->select(SettingsTab::accounts);
    EXPECT_EQ(name.text(), "ada");
}

TEST_F(AccountsTabTest, aScanFindsWhatIsNew)
{
    openAccounts();
    EXPECT_EQ(scans, 0);
    add("ada");
    pressIt("Scan for Accounts");
    EXPECT_EQ(scans, 1);
    EXPECT_EQ(rows(), Names{"ada"});
    EXPECT_EQ(recordOnDisk("ada").name, "ada");
}

TEST_F(AccountsTabTest, withoutAccountsItLeadsToTheSignIn)
{
    openAccounts();
    EXPECT_EQ(rows(), Names());
    EXPECT_TRUE(windowSays("No Claude accounts found"));
    EXPECT_TRUE(windowSays(
        "Sign in to Claude Code first, then scan for accounts — or add one manually below."));
    EXPECT_EQ(test::roleOf(&test::named<QAbstractButton>(*window, "How to sign in to Claude Code")),
              QAccessible::Link);
    pressIt("How to sign in to Claude Code");
    ASSERT_EQ(done.size(), 1U);
    EXPECT_TRUE(done[0].ends_with("/guides/sign-in-to-claude-code?utm_source=vellumor")) << done[0];
}

TEST_F(AccountsTabTest, withAllAccountsHiddenItLeadsBack)
{
    add("ada");
    rescan();
    state.remove(account("ada"));
    openAccounts();
    EXPECT_TRUE(windowSays("No Claude accounts found"));
    EXPECT_TRUE(windowSays("Every account you have is hidden. Add one back below, or sign in to "
                           "Claude Code in a new folder."));
    EXPECT_FALSE(test::isShown(*window, "How to sign in to Claude Code"));
    EXPECT_TRUE(windowSays("1 account hidden"));
}

TEST_F(AccountsTabTest, anAccountIsRemovedOnlyAfterAQuestion)
{
    addAll({"ada", "ben"});
    rescan();
    openAccounts();
    askToRemove();
    ASSERT_NE(test::dialog(), nullptr);
    EXPECT_EQ(rows(), (Names{"ada", "ben"}));
    const std::string question =
        "Vellumor will stop listing this account and won't pick it up again when scanning. Nothing "
        "is deleted — Claude Code and any other Quorle app are untouched, and adding the folder "
        "back restores this account exactly as it is now.";
    EXPECT_TRUE(test::says(*test::dialog(), question));
    EXPECT_TRUE(test::named<QPushButton>(*test::dialog(), "Cancel").isDefault());
    test::press(*test::dialog(), "Remove");
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    EXPECT_EQ(rows(), Names{"ben"});
    EXPECT_TRUE(recordOnDisk("ada").isRemoved());
    EXPECT_FALSE(recordOnDisk("ben").isRemoved());
    EXPECT_EQ(scans, 1);
}

TEST_F(AccountsTabTest, cancelAndEscapeRemoveNothing)
{
    add("ada");
    rescan();
    openAccounts();
    askToRemove();
    ASSERT_NE(test::dialog(), nullptr);
    test::press(*test::dialog(), "Cancel");
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    askToRemove();
    ASSERT_NE(test::dialog(), nullptr);
    test::key(*test::dialog(), Qt::Key_Escape);
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    EXPECT_EQ(rows(), Names{"ada"});
    EXPECT_FALSE(recordOnDisk("ada").isRemoved());
}

TEST_F(AccountsTabTest, theQuestionIsAboutTheAccountThatItWasAskedFor)
{
    addAll({"ada", "ben"});
    rescan();
    openAccounts();
    askToRemove(1);
    ASSERT_NE(test::dialog(), nullptr);
    state.reorder({1}, 0); // meanwhile, by somebody else
    pass();
    test::press(*test::dialog(), "Remove");
    pass();
    EXPECT_EQ(rows(), Names{"ada"});
    EXPECT_TRUE(recordOnDisk("ben").isRemoved());
}

TEST_F(AccountsTabTest, aNameThatLooksLikeMarkupIsAskedForAsItIs)
{
    add("ada");
    rescan();
    state.rename(account("ada"), "<b>bold</b> & co");
    openAccounts();
    askToRemove();
    ASSERT_NE(test::dialog(), nullptr);
    bool isAsked = false;
    for (const QLabel* label : test::shown<QLabel>(*test::dialog())) {
        if (label->text().contains("<b>bold</b> & co")) {
            isAsked = true;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
        }
    }
    EXPECT_TRUE(isAsked);
    test::press(*test::dialog(), "Cancel");
    pass();
}

TEST_F(AccountsTabTest, aRemovedAccountComesBackAsItWas)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    state.rename(account("ada"), "Work");
    state.setPinned(id("Work"), false);
    const Account before = account("Work");
    openAccounts();
    state.remove(before);
    state.remove(account("cyd"));
    pass();
    EXPECT_TRUE(windowSays("2 accounts hidden"));
    EXPECT_TRUE(windowSays("cyd"));
    EXPECT_EQ(test::allNamed<QPushButton>(*window, "Add back").size(), 2U);
    const auto backs = test::allNamed<QPushButton>(*window, "Add back"); // by name: cyd, Work
    EXPECT_EQ(backs[1]->accessibleDescription(), "Work");
    backs[1]->click();
    pass();
    EXPECT_EQ(rows(), (Names{"Work", "ben"}));
    EXPECT_EQ(account("Work").id, before.id);
    EXPECT_FALSE(account("Work").pinned);
    EXPECT_FALSE(recordOnDisk("ada").isRemoved());
    EXPECT_TRUE(recordOnDisk("cyd").isRemoved());
    EXPECT_TRUE(windowSays("1 account hidden"));
    pressIt("Add back");
    EXPECT_EQ(rows(), (Names{"Work", "ben", "cyd"}));
    EXPECT_FALSE(test::isShown(*window, "Add back"));
}

TEST_F(AccountsTabTest, bothWaysToAddAnAccountAreOffered)
{
    openAccounts();
    addManually(QStringLiteral("From an Existing Folder…"));
    ASSERT_NE(test::dialog(), nullptr);
    EXPECT_TRUE(test::says(*test::dialog(), "Add an existing account"));
    test::press(*test::dialog(), "Cancel");
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
    addManually(QStringLiteral("Set Up a New Claude Sign-in…"));
    ASSERT_NE(test::dialog(), nullptr);
    EXPECT_TRUE(test::says(*test::dialog(), "Set up a new Claude sign-in"));
    test::press(*test::dialog(), "Cancel");
    pass();
    EXPECT_EQ(test::dialog(), nullptr);
}

TEST_F(AccountsTabTest, manyAccountsScrollAndTheButtonsStay)
{
    for (int i = 0; i < 40; ++i)
        add("account-" + std::to_string(i));
    rescan();
    openAccounts();
    EXPECT_LE(window->height(), window->screen()->availableGeometry().height());
    const auto& scan = test::named<QPushButton>(*window, "Scan for Accounts");
    const QRect place(scan.mapTo(&*window, QPoint()), scan.size());
    EXPECT_TRUE(window->rect().contains(place));
    EXPECT_TRUE(windowSays("40 of 40 accounts tracked"));
}

TEST_F(AccountsTabTest, theRowsHaveTheirRoomAtOnce)
{
    addAll({"ada", "ben"});
    rescan();
    open(SettingsTab::usage);
    window->select(SettingsTab::accounts); // and nothing has passed since
    const auto* const area = window->findChild<AccountsTab*>()->findChild<QScrollArea*>();
    ASSERT_NE(area, nullptr);
    EXPECT_GE(area->maximumHeight(), area->widget()->sizeHint().height());
    EXPECT_GE(area->maximumHeight(),
              2 * test::named<QLineEdit>(*window, "Name").sizeHint().height());
}

TEST_F(AccountsTabTest, fewAccountsNeedNoScrolling)
{
    for (const auto status : {TokenStatus::readable, TokenStatus::notFound, TokenStatus::expired})
        add("account-" + std::to_string(static_cast<int>(status)), status);
    rescan();
    openAccounts();
    const auto areas = test::shown<QScrollArea>(*window);
    ASSERT_EQ(areas.size(), 1U);
    EXPECT_GE(areas[0]->viewport()->height(), areas[0]->widget()->sizeHint().height());
    EXPECT_EQ(areas[0]->height(), areas[0]->widget()->sizeHint().height()); // and no more
}

} // namespace
} // namespace vellumor::accountsTabTest
