#include "ui/model/settings/AccountsContent.h"

#include "app/state/AppStateTesting.h"

#include <set>

namespace vellumor::accountsContentTest {
namespace {

using test::Names;

struct AccountsContentTest : test::AppStateTesting {
    [[nodiscard]] AccountsContent content() const
    {
        return AccountsContent::of(state, [](const auto& a, const auto& b) { return a < b; });
    }
    [[nodiscard]] AccountRowContent row(const std::string& name) const
    {
        for (const AccountRowContent& each : content().rows) {
            if (each.name == name)
                return each;
        }
        throw std::runtime_error("no row " + name);
    }
    [[nodiscard]] Names rows() const
    {
        Names names;
        for (const AccountRowContent& each : content().rows)
            names.push_back(each.name);
        return names;
    }
    [[nodiscard]] Names hidden() const
    {
        Names names;
        for (const HiddenAccountContent& each : content().hidden)
            names.push_back(each.name);
        return names;
    }
};

TEST_F(AccountsContentTest, allAccountsHaveARowInTheirOrderTrackedOrNot)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    EXPECT_EQ(rows(), (Names{"ada", "ben", "cyd"}));
    state.setTracked(id("ben"), false);
    EXPECT_EQ(rows(), (Names{"ada", "ben", "cyd"}));
    state.reorder({2}, 0);
    EXPECT_EQ(rows(), (Names{"cyd", "ada", "ben"}));
    state.remove(account("ada"));
    EXPECT_EQ(rows(), (Names{"cyd", "ben"}));
}

TEST_F(AccountsContentTest, aRowIsAboutItsOwnAccount)
{
    addAll({"ada", "ben"});
    rescan();
    EXPECT_EQ(row("ben").id, id("ben"));
    EXPECT_EQ(row("ben").configDir, dirOf("ben"));
    EXPECT_TRUE(row("ben").isTracked);
    EXPECT_TRUE(row("ben").isPinned);
    state.setTracked(id("ben"), false);
    state.setPinned(id("ada"), false);
    EXPECT_FALSE(row("ben").isTracked);
    EXPECT_TRUE(row("ada").isTracked);
    EXPECT_FALSE(row("ada").isPinned);
}

TEST_F(AccountsContentTest, theTokensStateIsACaption)
{
    const std::pair<TokenStatus, const char*> table[] = {
        {TokenStatus::readable, ""},
        {TokenStatus::expired, "expired"},
        {TokenStatus::signedOut, "signed out"},
        {TokenStatus::needsApproval, "needs approval"},
        {TokenStatus::notFound, "no token"},
    };
    add("ada");
    for (const auto& [status, caption] : table) {
        found.facts[0].tokenStatus = status;
        rescan();
        EXPECT_EQ(row("ada").status, caption);
    }
}

TEST_F(AccountsContentTest, trackingIsExplained)
{
    add("ada");
    rescan();
    EXPECT_EQ(row("ada").trackHelp, "Tracked — polled and shown");
    state.setTracked(id("ada"), false);
    EXPECT_EQ(row("ada").trackHelp, "Not tracked — never polled");
}

TEST_F(AccountsContentTest, thePinIsExplainedAndAnswersWhereItCan)
{
    addAll({"ada", "ben", "cyd", "dan", "eve"});
    rescan(); // the first four are pinned
    EXPECT_EQ(row("ada").pinHelp, "Shown in the menu bar — click to hide");
    EXPECT_TRUE(row("ada").canPin);
    EXPECT_EQ(row("eve").pinHelp, "The menu bar fits 4 accounts — unpin one first");
    EXPECT_FALSE(row("eve").canPin);
    state.setPinned(id("ada"), false);
    for (const char* name : {"ada", "eve"}) {
        EXPECT_EQ(row(name).pinHelp, "Hidden from the menu bar — click to show");
        EXPECT_TRUE(row(name).canPin);
    }
}

TEST_F(AccountsContentTest, anAccountThatIsNotTrackedCannotBeShownInTheMenuBar)
{
    addAll({"ada", "ben", "cyd", "dan", "eve"});
    rescan();
    const char* const help = "Track this account to show it in the menu bar";
    state.setTracked(id("ada"), false); // pinned
    EXPECT_EQ(row("ada").pinHelp, help);
    EXPECT_FALSE(row("ada").canPin);
    // Its pin takes no place of the four.
    EXPECT_EQ(row("eve").pinHelp, "Hidden from the menu bar — click to show");
    state.setTracked(id("eve"), false); // not pinned
    EXPECT_EQ(row("eve").pinHelp, help);
}

TEST_F(AccountsContentTest, theServiceIsOfferedOnlyWhereItCanHelp)
{
    add("ada");
    for (const auto status : {TokenStatus::readable, TokenStatus::expired, TokenStatus::signedOut,
                              TokenStatus::needsApproval}) {
        found.facts[0].tokenStatus = status;
        rescan();
        EXPECT_EQ(row("ada").serviceNote, "");
        EXPECT_EQ(row("ada").service, "");
    }
    found.facts[0].tokenStatus = TokenStatus::notFound;
    rescan();
    EXPECT_EQ(row("ada").serviceNote,
              "Shown because no sign-in token was found for this folder. Usually fixed by signing "
              "in with Claude Code; set a custom Keychain service name only if yours is "
              "non-standard.");
    EXPECT_EQ(row("ada").service, "");
}

TEST_F(AccountsContentTest, aServiceThatIsForcedCanBeGivenUp)
{
    add("ada");
    rescan();
    waitFor(state.setServiceOverride(id("ada"), "My service"));
    EXPECT_EQ(row("ada").service, "My service");
    EXPECT_EQ(row("ada").serviceNote,
              "This account uses a custom Keychain service name. Clear the field to go back to "
              "auto-detection.");
}

TEST_F(AccountsContentTest, theTrackedOnesAreCounted)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    EXPECT_EQ(content().count, "3 of 3 accounts tracked");
    state.setTracked(id("ben"), false);
    EXPECT_EQ(content().count, "2 of 3 accounts tracked");
    state.remove(account("ada"));
    EXPECT_EQ(content().count, "1 of 2 accounts tracked");
}

TEST_F(AccountsContentTest, hiddenAccountsAreListedByName)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    EXPECT_EQ(content().hiddenTitle, "");
    state.remove(account("cyd"));
    EXPECT_EQ(content().hiddenTitle, "1 account hidden");
    EXPECT_EQ(content().hidden, (std::vector<HiddenAccountContent>{{dirOf("cyd"), "cyd"}}));
    state.remove(account("ada"));
    EXPECT_EQ(content().hiddenTitle, "2 accounts hidden");
    EXPECT_EQ(hidden(), (Names{"ada", "cyd"}));
}

TEST_F(AccountsContentTest, withoutAccountsItSaysHowToGetOne)
{
    rescan();
    EXPECT_EQ(content().emptyTitle, "No Claude accounts found");
    EXPECT_EQ(content().emptyText,
              "Sign in to Claude Code first, then scan for accounts — or add one manually below.");
    EXPECT_TRUE(content().hasSignInGuide);
    EXPECT_EQ(content().count, "");
    add("ada");
    rescan();
    EXPECT_EQ(content().emptyTitle, "");
    EXPECT_EQ(content().emptyText, "");
    EXPECT_FALSE(content().hasSignInGuide);
}

TEST_F(AccountsContentTest, withAllAccountsHiddenItSaysHowToGetOneBack)
{
    add("ada");
    rescan();
    state.remove(account("ada"));
    EXPECT_EQ(content().emptyTitle, "No Claude accounts found");
    EXPECT_EQ(content().emptyText,
              "Every account you have is hidden. Add one back below, or sign in to Claude Code in "
              "a new folder.");
    EXPECT_FALSE(content().hasSignInGuide);
}

TEST(AccountsContent, theFixedTexts)
{
    EXPECT_STREQ(
        AccountsContent::header,
        "Drag & drop to reorder the accounts. Pin them to see their usage in the menu bar.\n"
        "Untrack accounts to hide them and to stop refreshing their usage.");
    const std::string removal = AccountsContent::removalText;
    EXPECT_TRUE(removal.starts_with("Vellumor will stop listing this account and won't pick it up "
                                    "again when scanning."));
    EXPECT_TRUE(removal.ends_with(
        "Nothing is deleted — Claude Code and any other Quorle app are untouched, and adding the "
        "folder back restores this account exactly as it is now."));
}

TEST(ManualAddContent, aFolderThatWasRemovedIsAddedBack)
{
    const auto added = ManualAddContent::of(false);
    EXPECT_EQ(added.title, "Add an existing account");
    EXPECT_EQ(added.text,
              "Point Vellumor at a config directory Claude Code uses. If auto-detection can't find "
              "the Keychain item, set the service override too.");
    const auto back = ManualAddContent::of(true);
    EXPECT_EQ(back.title, "Add account back");
    EXPECT_EQ(back.text,
              "Adding this folder back restores the account with its name, position and settings.");
    EXPECT_EQ(back.confirm, "Add Back");
}

TEST(ManualAddContent, eachFolderThatCannotServeHasItsOwnObjection)
{
    EXPECT_EQ(ManualAddContent::objection(FolderState::usable), "");
    std::set<std::string> objections;
    for (const auto folder : {FolderState::notAbsolute, FolderState::missing,
                              FolderState::notAFolder, FolderState::unreadable})
        objections.insert(ManualAddContent::objection(folder));
    EXPECT_EQ(objections.size(), 4U);
    EXPECT_FALSE(objections.contains(""));
}

TEST(NewClaudeAccountContent, theLabelNamesTheFolder)
{
    const auto words = NewClaudeAccountContent::of("team-2.x_y");
    EXPECT_EQ(words.directory, "~/.claude-team-2.x_y");
    EXPECT_EQ(words.command, "CLAUDE_CONFIG_DIR=~/.claude-team-2.x_y claude");
    EXPECT_STREQ(
        NewClaudeAccountContent::removedNote,
        "You removed this folder from Vellumor earlier. Using it again will bring it back.");
}

TEST(NewClaudeAccountContent, whateverIsTypedTheCommandIsOneThatAShellTakesAsItIsMeant)
{
    const std::pair<const char*, const char*> table[] = {
        {"work", "~/.claude-work"},
        {"  work ", "~/.claude-work"},
        {"", "~/.claude-work"},
        {" \t ", "~/.claude-work"},
        {"my work", "~/.claude-my-work"},
        {"a/b", "~/.claude-a-b"},
        {"a;b|c&d", "~/.claude-a-b-c-d"},
        {"$(x)`y`", "~/.claude---x--y-"},
        {"'\"\\*?~#", "~/.claude--------"},
        {"caf\xC3\xA9", "~/.claude-caf\xC3\xA9"},
    };
    for (const auto& [label, directory] : table) {
        SCOPED_TRACE(label);
        const auto words = NewClaudeAccountContent::of(label);
        EXPECT_EQ(words.directory, directory);
        EXPECT_EQ(words.command, "CLAUDE_CONFIG_DIR=" + std::string(directory) + " claude");
    }
}

} // namespace
} // namespace vellumor::accountsContentTest
