#pragma once

#include "app/state/AppState.h"

#include <string>
#include <vector>

namespace vellumor {

// One account as its row in the settings shows it. An empty text is one that is not shown.
struct AccountRowContent {
    std::string id;
    std::string configDir;
    std::string name;
    bool isTracked = false;
    bool isPinned = false;
    bool canPin = false; // whether the pin answers a click
    std::string trackHelp;
    std::string pinHelp;
    std::string status;      // of its token, where there is something to say
    std::string service;     // the credential service that the user forced on it
    std::string serviceNote; // why the service can be changed; empty: it cannot

    bool operator==(const AccountRowContent&) const = default;
};

struct HiddenAccountContent {
    std::string configDir;
    std::string name;
    bool operator==(const HiddenAccountContent&) const = default;
};

// Everything that the settings say about the accounts.
struct AccountsContent {
    std::vector<AccountRowContent> rows; // all that are not hidden, tracked or not, in their order
    std::string count;                   // "2 of 3 accounts tracked"
    std::string hiddenTitle;             // empty: none is hidden
    std::vector<HiddenAccountContent> hidden;
    std::string emptyTitle; // where there are no rows
    std::string emptyText;
    bool hasSignInGuide = false;

    bool operator==(const AccountsContent&) const = default;

    [[nodiscard]] static AccountsContent of(const AppState& state,
                                            const AccountStore::NameOrder& byName);

    static constexpr const char* header =
        "Drag & drop to reorder the accounts. Pin them to see their usage in the menu bar.\n"
        "Untrack accounts to hide them and to stop refreshing their usage.";
    static constexpr const char* removalText =
        "Vellumor will stop listing this account and won't pick it up again when scanning. Nothing "
        "is deleted — Claude Code and any other Quorle app are untouched, and adding the folder "
        "back restores this account exactly as it is now.";
};

// What the sheet for an existing folder says; another text for one that was removed earlier.
struct ManualAddContent {
    std::string title;
    std::string text;
    std::string confirm;

    bool operator==(const ManualAddContent&) const = default;

    [[nodiscard]] static ManualAddContent of(bool wasRemoved);
    // Why an account cannot be added there; empty when it can.
    [[nodiscard]] static std::string objection(FolderState folder);
};

// What the sheet for a new sign-in says about the label that was typed.
struct NewClaudeAccountContent {
    std::string directory; // "~/.claude-work"
    std::string command;   // "CLAUDE_CONFIG_DIR=~/.claude-work claude"

    bool operator==(const NewClaudeAccountContent&) const = default;

    // What a shell would not take as part of one word becomes "-"; a blank label is "work".
    [[nodiscard]] static NewClaudeAccountContent of(const std::string& label);

    static constexpr const char* removedNote =
        "You removed this folder from Vellumor earlier. Using it again will bring it back.";
};

} // namespace vellumor
