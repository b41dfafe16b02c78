#include "ui/settings/NewClaudeAccountSheet.h"

#include "ui/settings/SettingsTesting.h"

#include <QPointer>

namespace vellumor::newClaudeAccountSheetTest {
namespace {

using test::says;

struct NewClaudeAccountSheetTest : test::SettingsTesting {
    QPointer<NewClaudeAccountSheet> sheet;

    ~NewClaudeAccountSheetTest() override { delete sheet; }
    void openSheet()
    {
        sheet = new NewClaudeAccountSheet(state, actions, nullptr);
        sheet->open();
        EXPECT_TRUE(QTest::qWaitForWindowActive(sheet));
        pass();
    }
    [[nodiscard]] QLineEdit& label() const { return test::named<QLineEdit>(*sheet, "Label"); }
    // The command stands in a field, to be selected, or in a text.
    [[nodiscard]] bool showsCommand(const QString& command) const
    {
        for (const auto* each : test::shown<QLineEdit>(*sheet)) {
            if (each->text() == command && each->isReadOnly())
                return true;
        }
        return says(*sheet, command.toStdString());
    }
    void pressInSheet(const char* name)
    {
        test::press(*sheet, name);
        pass();
    }
    static constexpr const char* removedNote =
        "You removed this folder from Vellumor earlier. Using it again will bring it back.";
};

TEST_F(NewClaudeAccountSheetTest, itSaysWhatToDo)
{
    openSheet();
    EXPECT_TRUE(says(*sheet, "Set up a new Claude sign-in"));
    EXPECT_TRUE(says(*sheet, "Vellumor never signs in for you — Claude Code does. Copy this into a "
                             "terminal, complete Claude Code's sign-in, then scan for accounts."));
    EXPECT_EQ(label().text(), "work");
    EXPECT_TRUE(says(*sheet, "Suggested directory: ~/.claude-work"));
    EXPECT_TRUE(showsCommand("CLAUDE_CONFIG_DIR=~/.claude-work claude"));
    EXPECT_FALSE(says(*sheet, removedNote));
    test::expectNothingClipped(*sheet);
}

TEST_F(NewClaudeAccountSheetTest, theCommandFollowsTheLabel)
{
    openSheet();
    test::type(label(), "team");
    EXPECT_TRUE(says(*sheet, "Suggested directory: ~/.claude-team"));
    EXPECT_TRUE(showsCommand("CLAUDE_CONFIG_DIR=~/.claude-team claude"));
    test::type(label(), "");
    EXPECT_TRUE(showsCommand("CLAUDE_CONFIG_DIR=~/.claude-work claude"));
}

TEST_F(NewClaudeAccountSheetTest, theCommandIsCopiedAndTheSheetStays)
{
    openSheet();
    test::type(label(), "team");
    pressInSheet("Copy");
    EXPECT_EQ(done, test::Names{"copy CLAUDE_CONFIG_DIR=~/.claude-team claude"});
    EXPECT_TRUE(sheet);
}

TEST_F(NewClaudeAccountSheetTest, aTerminalIsOpenedAndTheSheetStays)
{
    openSheet();
    pressInSheet("Open Terminal");
    EXPECT_EQ(done, test::Names{"terminal"});
    EXPECT_TRUE(sheet);
}

TEST_F(NewClaudeAccountSheetTest, theScanFindsTheNewAccount)
{
    openSheet();
    add("work");
    EXPECT_EQ(scans, 0);
    pressInSheet("Scan When Done");
    EXPECT_FALSE(sheet);
    EXPECT_EQ(scans, 1);
    EXPECT_EQ(namesOf(state.accounts()), test::Names{"work"});
}

TEST_F(NewClaudeAccountSheetTest, cancelScansNothing)
{
    openSheet();
    pressInSheet("Cancel");
    EXPECT_FALSE(sheet);
    EXPECT_EQ(scans, 0);
}

TEST_F(NewClaudeAccountSheetTest, aFolderThatWasRemovedIsMentioned)
{
    add("ada");
    rescan();
    state.remove(account("ada"));
    openSheet();
    EXPECT_FALSE(says(*sheet, removedNote));
    test::type(label(), "ada");
    EXPECT_TRUE(says(*sheet, removedNote));
    test::expectNothingClipped(*sheet);
    test::type(label(), "adam");
    EXPECT_FALSE(says(*sheet, removedNote));
}

TEST_F(NewClaudeAccountSheetTest, aFolderThatWasRemovedComesBackByBeingUsed)
{
    add("ada");
    rescan();
    state.remove(account("ada"));
    openSheet();
    test::type(label(), "ada");
    pressInSheet("Scan When Done");
    EXPECT_EQ(namesOf(state.accounts()), test::Names{"ada"});
}

TEST_F(NewClaudeAccountSheetTest, aLabelAsLongAsOneLikesIsCopiedWhole)
{
    openSheet();
    const std::string label(200, 'm');
    this->label().setText(QString::fromStdString(label));
    pass();
    const int width = sheet->width();
    EXPECT_LT(width, 1200);
    pressInSheet("Copy");
    EXPECT_EQ(done, test::Names{"copy CLAUDE_CONFIG_DIR=~/.claude-" + label + " claude"});
}

} // namespace
} // namespace vellumor::newClaudeAccountSheetTest
