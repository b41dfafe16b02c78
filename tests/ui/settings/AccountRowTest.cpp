#include "ui/settings/AccountRow.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::accountRowTest {
namespace {

struct AccountRowTest : test::SettingsTesting {
    void openWith(const test::Names& names)
    {
        addAll(names);
        rescan();
        open(SettingsTab::accounts);
    }
    // The row of the account.
    [[nodiscard]] QWidget& row(const std::string& name) const
    {
        for (AccountRow* each : test::shown<AccountRow>(*window)) {
            if (each->accessibleName().toStdString() == name)
                return *each;
        }
        throw std::runtime_error("no row of " + name);
    }
    [[nodiscard]] QLineEdit& nameField(const std::string& name) const
    {
        return test::named<QLineEdit>(row(name), "Name");
    }
    void pressIn(const std::string& name, const std::string& button)
    {
        test::press(row(name), button);
        pass();
    }
    static constexpr const char* service = "Keychain service (advanced)";
};

TEST_F(AccountRowTest, everyControlHasANameAndAKindAndTheRowThatOfItsAccount)
{
    openWith({"ada"});
    QWidget& ada = row("ada");
    EXPECT_EQ(test::roleOf(&ada), QAccessible::Grouping);
    EXPECT_EQ(test::nameOf(&ada), "ada");
    EXPECT_EQ(test::roleOf(&nameField("ada")), QAccessible::EditableText);
    EXPECT_EQ(test::roleOf(&test::named<QWidget>(ada, "Tracked — polled and shown")),
              QAccessible::CheckBox);
    for (const char* name : {"Move", "Shown in the menu bar — click to hide", "More actions"}) {
        auto& button = test::named<QAbstractButton>(ada, name);
        EXPECT_EQ(test::roleOf(&button), QAccessible::Button) << name;
        EXPECT_TRUE(button.toolTip().contains(name)) << name;
    }
    EXPECT_EQ(nameField("ada").text(), "ada");
}

TEST_F(AccountRowTest, trackingIsSwitchedAtOnce)
{
    openWith({"ada", "ben"});
    pressIn("ben", "Tracked — polled and shown");
    EXPECT_FALSE(account("ben").tracked);
    EXPECT_TRUE(account("ada").tracked);
    EXPECT_FALSE(recordOnDisk("ben").tracked);
    EXPECT_TRUE(windowSays("1 of 2 accounts tracked"));
    const auto& toggle = test::named<QCheckBox>(row("ben"), "Not tracked — never polled");
    EXPECT_EQ(toggle.toolTip(), "Not tracked — never polled");
    EXPECT_FALSE(toggle.isChecked());
    pressIn("ben", "Not tracked — never polled");
    EXPECT_TRUE(recordOnDisk("ben").tracked);
    EXPECT_TRUE(test::named<QCheckBox>(row("ben"), "Tracked — polled and shown").isChecked());
}

TEST_F(AccountRowTest, thePinIsSwitchedAtOnce)
{
    openWith({"ada", "ben"});
    pressIn("ben", "Shown in the menu bar — click to hide");
    EXPECT_FALSE(account("ben").pinned);
    EXPECT_TRUE(account("ada").pinned);
    EXPECT_FALSE(recordOnDisk("ben").pinned);
    pressIn("ben", "Hidden from the menu bar — click to show");
    EXPECT_TRUE(recordOnDisk("ben").pinned);
}

TEST_F(AccountRowTest, theFifthPinWaitsForAnotherToGo)
{
    openWith({"ada", "ben", "cyd", "dan", "eve"});
    const std::string full = "The menu bar fits 4 accounts — unpin one first";
    EXPECT_FALSE(test::named<QAbstractButton>(row("eve"), full).isEnabled());
    pressIn("ada", "Shown in the menu bar — click to hide");
    EXPECT_FALSE(test::isShown(row("eve"), full));
    pressIn("eve", "Hidden from the menu bar — click to show");
    EXPECT_TRUE(account("eve").pinned);
    EXPECT_FALSE(test::named<QAbstractButton>(row("ada"), full).isEnabled());
}

TEST_F(AccountRowTest, whatIsNotTrackedCannotBePinned)
{
    openWith({"ada"});
    pressIn("ada", "Tracked — polled and shown");
    const auto& pin =
        test::named<QAbstractButton>(row("ada"), "Track this account to show it in the menu bar");
    EXPECT_FALSE(pin.isEnabled());
    EXPECT_TRUE(recordOnDisk("ada").pinned); // and comes back with the tracking
}

TEST_F(AccountRowTest, theTokensStateIsSaidAsItChanges)
{
    openWith({"ada"});
    const std::pair<TokenStatus, const char*> table[] = {
        {TokenStatus::expired, "expired"},
        {TokenStatus::signedOut, "signed out"},
        {TokenStatus::notFound, "no token"},
        {TokenStatus::needsApproval, "needs approval"},
    };
    for (const auto& [status, caption] : table) {
        found.facts[0].tokenStatus = status;
        rescan();
        pass();
        EXPECT_TRUE(test::says(row("ada"), caption)) << caption;
    }
    found.facts[0].tokenStatus = TokenStatus::readable;
    rescan();
    pass();
    EXPECT_EQ(test::texts(row("ada")), test::Texts());
}

TEST_F(AccountRowTest, aNameIsTakenOverWithEnterAndTrimmed)
{
    openWith({"ada", "ben"});
    QLineEdit& field = nameField("ada");
    test::type(field, "  My work ");
    EXPECT_EQ(account("ada").displayName, "ada"); // not before
    test::key(field, Qt::Key_Return);
    EXPECT_EQ(field.text(), "My work"); // and does not flash what it was before
    pass();
    EXPECT_EQ(state.accounts()[0].displayName, "My work");
    EXPECT_EQ(recordOnDisk("ada").name, "My work");
    EXPECT_EQ(recordOnDisk("ben").name, "ben");
    EXPECT_EQ(field.text(), "My work");
    EXPECT_TRUE(window->isVisible());
}

TEST_F(AccountRowTest, aNameIsTakenOverWhenTheFieldIsLeft)
{
    openWith({"ada", "ben"});
    test::type(nameField("ada"), "Work");
    nameField("ben").setFocus(Qt::TabFocusReason);
    pass();
    EXPECT_EQ(recordOnDisk("ada").name, "Work");
}

TEST_F(AccountRowTest, aBlankNameIsNone)
{
    openWith({"ada"});
    for (const char* blank : {"", "   "}) {
        QLineEdit& field = nameField("ada");
        test::type(field, blank);
        test::key(field, Qt::Key_Return);
        pass();
        EXPECT_EQ(account("ada").displayName, "ada");
        EXPECT_EQ(recordOnDisk("ada").name, "ada");
        EXPECT_EQ(field.text(), "ada");
    }
}

TEST_F(AccountRowTest, aNameThatIsBeingTypedStaysWhateverChanges)
{
    openWith({"ada", "ben"});
    QLineEdit& field = nameField("ada");
    test::type(field, "Wor");
    field.setCursorPosition(1);
    state.setPinned(id("ada"), false);
    state.rename(account("ada"), "elsewhere");
    found.facts[0].tokenStatus = TokenStatus::expired;
    rescan();
    pass();
    EXPECT_EQ(field.text(), "Wor");
    EXPECT_EQ(field.cursorPosition(), 1);
    EXPECT_TRUE(field.hasFocus());
    EXPECT_TRUE(test::says(row("elsewhere"), "expired")); // all else follows
    test::key(field, Qt::Key_Return);
    pass();
    EXPECT_EQ(recordOnDisk("ada").name, "Wor");
}

TEST_F(AccountRowTest, aFieldThatMerelyHasTheFocusFollows)
{
    openWith({"ada"});
    QLineEdit& field = nameField("ada");
    field.setFocus(Qt::TabFocusReason);
    state.rename(account("ada"), "elsewhere");
    pass();
    EXPECT_EQ(field.text(), "elsewhere");
}

TEST_F(AccountRowTest, aNameIsNeverTakenForMarkup)
{
    openWith({"ada"});
    state.rename(account("ada"), "<b>a & b</b>");
    pass();
    EXPECT_EQ(nameField("<b>a & b</b>").text(), "<b>a & b</b>");
    EXPECT_EQ(test::nameOf(&row("<b>a & b</b>")), "<b>a & b</b>");
}

TEST_F(AccountRowTest, theServiceIsOfferedWhereNoTokenWasFound)
{
    openWith({"ada"});
    EXPECT_FALSE(test::isShown(*window, service));
    found.facts[0].tokenStatus = TokenStatus::notFound;
    rescan();
    pass();
    const auto& field = test::named<QLineEdit>(row("ada"), service);
    EXPECT_EQ(field.text(), "");
    EXPECT_EQ(field.placeholderText(), "(auto)");
    EXPECT_EQ(field.toolTip(), "Only needed if Vellumor can't find this account's sign-in token");
    EXPECT_TRUE(windowSays(service));
    EXPECT_TRUE(
        windowSays("Shown because no sign-in token was found for this folder. Usually fixed "
                   "by signing in with Claude Code; set a custom Keychain service name only "
                   "if yours is non-standard."));
}

TEST_F(AccountRowTest, theServicesNoteIsWholeAndNoHigher)
{
    const auto expectNotes = [this](int count) {
        test::expectNothingClipped(*window);
        for (const PlainText* note : test::shown<PlainText>(*window)) {
            if (!note->text().startsWith("Shown because"))
                continue;
            --count;
            EXPECT_EQ(note->height(), note->heightForWidth(note->width()));
        }
        EXPECT_EQ(count, 0);
    };
    add("ada", TokenStatus::notFound);
    add("ben");
    rescan();
    open(SettingsTab::accounts);
    expectNotes(1);
    found.facts[1].tokenStatus = TokenStatus::notFound; // while it is seen
    rescan();
    pass();
    expectNotes(2);
}

TEST_F(AccountRowTest, aServiceIsForcedAndGivenUp)
{
    add("ada", TokenStatus::notFound);
    rescan();
    open(SettingsTab::accounts);
    auto& field = test::named<QLineEdit>(row("ada"), service);
    test::type(field, " My service ");
    test::key(field, Qt::Key_Return);
    pass();
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, "My service");
    EXPECT_EQ(scans, 2); // looked up at once
    EXPECT_EQ(field.text(), "My service");
    EXPECT_TRUE(
        windowSays("This account uses a custom Keychain service name. Clear the field to go "
                   "back to auto-detection."));
    test::type(field, "");
    test::key(field, Qt::Key_Return);
    pass();
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, std::nullopt);
    EXPECT_EQ(scans, 3);
}

TEST_F(AccountRowTest, aBlankServiceIsNone)
{
    add("ada", TokenStatus::notFound);
    rescan();
    open(SettingsTab::accounts);
    auto& field = test::named<QLineEdit>(row("ada"), service);
    test::type(field, "   ");
    test::key(field, Qt::Key_Return);
    pass();
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, std::nullopt);
    EXPECT_EQ(field.text(), "");
}

TEST_F(AccountRowTest, leavingTheServiceAsItIsLooksForNothing)
{
    add("ada", TokenStatus::notFound);
    rescan();
    open(SettingsTab::accounts);
    auto& field = test::named<QLineEdit>(row("ada"), service);
    field.setFocus(Qt::TabFocusReason);
    nameField("ada").setFocus(Qt::TabFocusReason);
    pass();
    EXPECT_EQ(scans, 1);
}

TEST_F(AccountRowTest, aServiceThatIsBeingTypedStaysThoughATokenWasFound)
{
    add("ada", TokenStatus::notFound);
    rescan();
    open(SettingsTab::accounts);
    auto& field = test::named<QLineEdit>(row("ada"), service);
    test::type(field, "My");
    found.facts[0].tokenStatus = TokenStatus::readable;
    rescan();
    pass();
    EXPECT_TRUE(field.isVisible());
    EXPECT_EQ(field.text(), "My");
    EXPECT_TRUE(field.hasFocus());
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, std::nullopt); // it is not done yet
}

TEST_F(AccountRowTest, anAccountMayVanishWhileItsNameIsBeingTyped)
{
    openWith({"ada", "ben"});
    test::type(nameField("ada"), "Work");
    leaveOnly({"ben"});
    rescan();
    pass();
    EXPECT_EQ(test::allNamed<QLineEdit>(*window, "Name").size(), 1U);
    EXPECT_EQ(recordOnDisk("ben").name, "ben");
}

} // namespace
} // namespace vellumor::accountRowTest
