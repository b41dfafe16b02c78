#include "ui/model/settings/AccountsContent.h"

#include "app/state/AccountList.h"
#include "base/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace vellumor {

namespace {

std::string statusCaption(TokenStatus status)
{
    switch (status) {
    case TokenStatus::readable:
        return {};
    case TokenStatus::expired:
        return "expired";
    case TokenStatus::signedOut:
        return "signed out";
    case TokenStatus::needsApproval:
        return "needs approval";
    case TokenStatus::notFound:
        return "no token";
    }
    return {};
}

std::string pinHelp(const Account& account, bool canPin)
{
    if (!account.tracked)
        return "Track this account to show it in the menu bar";
    if (account.pinned)
        return "Shown in the menu bar — click to hide";
    if (!canPin) {
        return fmt::format("The menu bar fits {} accounts — unpin one first",
                           AccountList::mostPinned);
    }
    return "Hidden from the menu bar — click to show";
}

std::string serviceNote(const Account& account)
{
    if (account.keychainServiceOverride) {
        return "This account uses a custom Keychain service name. Clear the field to go back to "
               "auto-detection.";
    }
    if (account.tokenStatus == TokenStatus::notFound) {
        return "Shown because no sign-in token was found for this folder. Usually fixed by signing "
               "in with Claude Code; set a custom Keychain service name only if yours is "
               "non-standard.";
    }
    return {};
}

AccountRowContent row(const Account& account, const std::vector<Account>& accounts)
{
    const bool canPin = AccountList::canPin(account, accounts);
    return {.id = account.id,
            .configDir = account.configDir,
            .name = account.displayName,
            .isTracked = account.tracked,
            .isPinned = account.pinned,
            .canPin = canPin && account.tracked,
            .trackHelp =
                account.tracked ? "Tracked — polled and shown" : "Not tracked — never polled",
            .pinHelp = pinHelp(account, canPin),
            .status = statusCaption(account.tokenStatus),
            .service = account.keychainServiceOverride.value_or(""),
            .serviceNote = serviceNote(account)};
}

bool fitsShellWord(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x80 || std::isalnum(byte) != 0 || character == '-' || character == '_' ||
           character == '.';
}

} // namespace

AccountsContent AccountsContent::of(const AppState& state, const AccountStore::NameOrder& byName)
{
    AccountsContent content;
    const std::vector<Account>& accounts = state.accounts();
    for (const Account& account : AccountList::ordered(accounts))
        content.rows.push_back(row(account, accounts));
    const auto tracked =
        std::count_if(accounts.begin(), accounts.end(), [](const Account& a) { return a.tracked; });
    content.count = fmt::format("{} of {} accounts tracked", tracked, accounts.size());
    for (const RemovedAccount& removed : state.removedAccounts(byName))
        content.hidden.push_back({removed.configDir, removed.name});
    if (!content.hidden.empty()) {
        content.hiddenTitle = content.hidden.size() == 1
                                  ? "1 account hidden"
                                  : fmt::format("{} accounts hidden", content.hidden.size());
    }
    if (!content.rows.empty())
        return content;
    content.count.clear();
    content.emptyTitle = "No Claude accounts found";
    content.hasSignInGuide = content.hidden.empty();
    content.emptyText = content.hasSignInGuide
                            ? "Sign in to Claude Code first, then scan for accounts — or add one "
                              "manually below."
                            : "Every account you have is hidden. Add one back below, or sign in to "
                              "Claude Code in a new folder.";
    return content;
}

ManualAddContent ManualAddContent::of(bool wasRemoved)
{
    if (wasRemoved) {
        return {"Add account back",
                "Adding this folder back restores the account with its name, position and "
                "settings.",
                "Add Back"};
    }
    return {"Add an existing account",
            "Point Vellumor at a config directory Claude Code uses. If auto-detection can't find "
            "the Keychain item, set the service override too.",
            "Add"};
}

std::string ManualAddContent::objection(FolderState folder)
{
    switch (folder) {
    case FolderState::usable:
        return {};
    case FolderState::notAbsolute:
        return "Give the whole path, beginning with “/” or “~/”.";
    case FolderState::missing:
        return "There is no such folder.";
    case FolderState::notAFolder:
        return "This is a file, not a folder.";
    case FolderState::unreadable:
        return "This folder can’t be read.";
    }
    return {};
}

NewClaudeAccountContent NewClaudeAccountContent::of(const std::string& label)
{
    std::string word(Text::trimmed(label));
    std::replace_if(
        word.begin(), word.end(), [](char character) { return !fitsShellWord(character); }, '-');
    const std::string directory = "~/.claude-" + (word.empty() ? "work" : word);
    return {directory, "CLAUDE_CONFIG_DIR=" + directory + " claude"};
}

} // namespace vellumor
