#include "ui/settings/ManualAddSheet.h"

#include "ui/settings/SettingsTesting.h"

#include <QPointer>

namespace vellumor::manualAddSheetTest {
namespace {

using test::says;

struct ManualAddSheetTest : test::SettingsTesting {
    QPointer<ManualAddSheet> sheet;
    static constexpr const char* directory = "Config directory (e.g. ~/.claude-work)";
    static constexpr const char* service = "Keychain service override (optional)";

    ~ManualAddSheetTest() override { delete sheet; }
    void openSheet()
    {
        sheet = new ManualAddSheet(state, actions, nullptr);
        sheet->open();
        EXPECT_TRUE(QTest::qWaitForWindowActive(sheet));
        pass();
    }
    [[nodiscard]] QLineEdit& field(const char* name) const
    {
        return test::named<QLineEdit>(*sheet, name);
    }
    [[nodiscard]] QPushButton& button(const char* name) const
    {
        return test::named<QPushButton>(*sheet, name);
    }
    void typeIn(const char* name, const std::string& text)
    {
        test::type(field(name), QString::fromStdString(text));
    }
    void pressAdd()
    {
        test::press(*sheet, "Add");
        pass();
    }
    // Tries to add the folder; gives what the sheet says beside its own words.
    std::string objection(const std::string& typed)
    {
        openSheet();
        const test::Texts before = test::texts(*sheet);
        typeIn(directory, typed);
        pressAdd();
        std::string said;
        if (sheet) {
            for (const std::string& text : test::texts(*sheet)) {
                if (std::find(before.begin(), before.end(), text) == before.end())
                    said += text;
            }
            EXPECT_TRUE(button("Add").isEnabled()); // to be tried again
            EXPECT_EQ(field(directory).text().toStdString(), typed);
            test::expectNothingClipped(*sheet);
        }
        delete sheet;
        return said;
    }
};

TEST_F(ManualAddSheetTest, itSaysWhatItIsFor)
{
    openSheet();
    EXPECT_TRUE(says(*sheet, "Add an existing account"));
    EXPECT_TRUE(says(*sheet,
                     "Point Vellumor at a config directory Claude Code uses. If "
                     "auto-detection can't find the Keychain item, set the service override "
                     "too."));
    EXPECT_EQ(field(directory).placeholderText(), directory);
    EXPECT_EQ(field(service).placeholderText(), service);
    EXPECT_TRUE(button("Choose").isEnabled());
    EXPECT_TRUE(button("Cancel").isEnabled());
    EXPECT_FALSE(button("Add").isEnabled()); // there is nothing to add yet
    test::expectNothingClipped(*sheet);
}

TEST_F(ManualAddSheetTest, aFolderIsAddedAndLookedAtAtOnce)
{
    home.makeFolder(".claude-ada");
    openSheet();
    typeIn(directory, "  " + dirOf("ada") + " ");
    add("ada");
    pressAdd();
    EXPECT_FALSE(sheet);
    EXPECT_EQ(scans, 1);
    EXPECT_EQ(namesOf(state.accounts()).size(), 1U);
    EXPECT_EQ(recordOnDisk("ada").order, 0);
    EXPECT_FALSE(recordOnDisk("ada").id.empty());
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, std::nullopt);
}

TEST_F(ManualAddSheetTest, aFolderOutsideTheHomeFolderIsAddedToo)
{
    const test::TempFolder elsewhere;
    openSheet();
    typeIn(directory, elsewhere.path());
    pressAdd();
    EXPECT_FALSE(sheet);
    EXPECT_TRUE(decodeStoredAccounts(test::contentsOf(accountsFile)).contains(elsewhere.path()));
}

TEST_F(ManualAddSheetTest, aTildeIsTheHomeFolderAndTheServiceIsKept)
{
    home.makeFolder(".claude-ada");
    openSheet();
    typeIn(directory, "~/.claude-ada/");
    typeIn(service, " My service ");
    test::key(field(directory), Qt::Key_Return); // as good as a click
    pass();
    EXPECT_FALSE(sheet);
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, "My service");
    EXPECT_EQ(examined, test::Names{"~/.claude-ada/"});
}

TEST_F(ManualAddSheetTest, whatIsNoFolderIsRefusedInWordsAndChangesNothing)
{
    home.put("file", "");
    const std::string relative = objection("some/folder");
    const std::string missing = objection(home.file("missing"));
    const std::string file = objection(home.file("file"));
    EXPECT_NE(relative, "");
    EXPECT_NE(missing, "");
    EXPECT_NE(file, "");
    EXPECT_NE(relative, missing);
    EXPECT_NE(missing, file);
    EXPECT_EQ(objection("~"), ""); // the home folder itself is one
    EXPECT_EQ(objection("~nobody/.claude"), relative);
    EXPECT_EQ(objection(home.file("file/below")), missing);
}

TEST_F(ManualAddSheetTest, anObjectionGoesAsSoonAsSomethingElseIsTyped)
{
    openSheet();
    const auto words = test::texts(*sheet).size();
    typeIn(directory, home.file("missing"));
    pressAdd();
    EXPECT_EQ(test::texts(*sheet).size(), words + 1);
    EXPECT_EQ(scans, 0);
    test::key(field(directory), Qt::Key_X, "x");
    EXPECT_EQ(test::texts(*sheet).size(), words);
}

TEST_F(ManualAddSheetTest, blanksAreNoFolder)
{
    openSheet();
    typeIn(directory, "   ");
    EXPECT_FALSE(button("Add").isEnabled());
    test::key(field(directory), Qt::Key_Return);
    pass();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(examined, test::Names());
}

TEST_F(ManualAddSheetTest, aFolderIsChosenInThePanel)
{
    openSheet();
    test::press(*sheet, "Choose");
    ASSERT_TRUE(folderChosen);
    EXPECT_FALSE(fileChosen);
    EXPECT_EQ(field(directory).text(), "");
    folderChosen(dirOf("ada"));
    EXPECT_EQ(field(directory).text().toStdString(), dirOf("ada"));
    EXPECT_TRUE(button("Add").isEnabled());
    delete sheet;
    folderChosen(dirOf("ben")); // the panel may outlive the sheet
}

TEST_F(ManualAddSheetTest, aFolderThatWasRemovedIsAddedBackAsItWas)
{
    home.makeFolder(".claude-ada");
    addAll({"ada", "ben"});
    rescan();
    state.rename(account("ada"), "Work");
    waitFor(state.setServiceOverride(id("Work"), "My service"));
    const Account before = account("Work");
    state.remove(before);
    openSheet();
    typeIn(directory, "~/.claude-ada");
    EXPECT_TRUE(says(*sheet, "Add account back"));
    EXPECT_TRUE(
        says(*sheet,
             "Adding this folder back restores the account with its name, position and settings."));
    EXPECT_FALSE(says(*sheet, "Add an existing account"));
    test::expectNothingClipped(*sheet);
    test::press(*sheet, "Add Back");
    pass();
    EXPECT_FALSE(sheet);
    EXPECT_EQ(account("Work").id, before.id);
    EXPECT_EQ(account("Work").order, 0);
    EXPECT_EQ(account("Work").pinned, before.pinned);
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, "My service");
}

TEST_F(ManualAddSheetTest, aServiceThatIsGivenReplacesTheOneThatItHad)
{
    home.makeFolder(".claude-ada");
    add("ada");
    rescan();
    state.remove(account("ada"));
    openSheet();
    typeIn(service, "Other");
    typeIn(directory, dirOf("ada"));
    test::press(*sheet, "Add Back");
    pass();
    EXPECT_EQ(recordOnDisk("ada").serviceOverride, "Other");
    EXPECT_FALSE(recordOnDisk("ada").isRemoved());
}

TEST_F(ManualAddSheetTest, theWordsFollowWhatIsTyped)
{
    add("ada");
    rescan();
    state.remove(account("ada"));
    openSheet();
    typeIn(directory, dirOf("ada"));
    EXPECT_TRUE(says(*sheet, "Add account back"));
    test::key(field(directory), Qt::Key_X, "x");
    EXPECT_TRUE(says(*sheet, "Add an existing account"));
    EXPECT_FALSE(test::isShown(*sheet, "Add Back"));
}

TEST_F(ManualAddSheetTest, cancelAndEscapeAddNothing)
{
    home.makeFolder(".claude-ada");
    openSheet();
    typeIn(directory, dirOf("ada"));
    test::press(*sheet, "Cancel");
    pass();
    EXPECT_FALSE(sheet);
    openSheet();
    typeIn(directory, dirOf("ada"));
    test::key(field(directory), Qt::Key_Escape);
    pass();
    EXPECT_FALSE(sheet);
    EXPECT_EQ(scans, 0);
    EXPECT_TRUE(store.records().empty());
}

TEST_F(ManualAddSheetTest, aSheetThatIsClosedWhileTheFolderIsLookedAtAddsNothing)
{
    home.makeFolder(".claude-ada");
    openSheet();
    typeIn(directory, dirOf("ada"));
    test::Gate looking;
    folderGate = &looking;
    pressAdd();
    ASSERT_TRUE(sheet);
    EXPECT_FALSE(button("Add").isEnabled()); // once is enough
    test::press(*sheet, "Cancel");
    pass();
    ASSERT_FALSE(sheet);
    looking.open();
    pass();
    EXPECT_EQ(scans, 0);
    EXPECT_TRUE(store.records().empty());
}

} // namespace
} // namespace vellumor::manualAddSheetTest
