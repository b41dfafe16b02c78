#pragma once

#include "app/state/ChangeNotice.h"
#include "async/Task.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What the settings say about the program itself. An empty text is one that is not shown.
struct GeneralContent {
    std::optional<bool> launchAtLogin; // nothing: not known yet
    std::string loginError;
    bool hasUpdates = false; // whether this build can look for new versions
    bool autoUpdates = false;
    bool isChecking = false;
    std::string updateNote;
    std::string updatePage; // where a newer version is to be had
    bool isRemoving = false;
    std::string removalError;

    bool operator==(const GeneralContent&) const = default;

    static constexpr const char* removalTitle = "Delete all Quorle data?";
    static constexpr const char* removalText =
        "Both Quorle folders among your application data, “Vellumor” and “Quorle”, will be "
        "deleted: settings, accounts, usage history and telemetry identity. Claude Code's own data "
        "is untouched. Launch at login is switched off, and Vellumor will quit.";
};

// Starting at login, updates, and the removal of everything. Main thread only.
class GeneralModel {
public:
    // What a look for a newer version has found.
    struct Update {
        enum class Kind { none, available, failed } kind = Kind::none;
        std::string version; // of the available one
        std::string page;
        std::string why; // it failed
    };

    struct Parts {
        Clock& clock; // outlives it
        std::function<Task<bool>()> isLaunchedAtLogin;
        // Nothing, or why it could not be done.
        std::function<Task<std::optional<std::string>>(bool on)> setLaunchedAtLogin;
        bool hasUpdates = false;
        std::function<bool()> autoUpdates;
        std::function<void(bool on)> setAutoUpdates;
        std::function<Task<Update>()> checkForUpdates;
        // Ends the program when all is gone; otherwise the names of what is left.
        std::function<Task<std::vector<std::string>>()> removeAllData;
    };

    explicit GeneralModel(Parts parts);

    // Calls `observer` after changes, once a turn of the event loop.
    void observe(std::function<void()> observer) { m_notice.observe(std::move(observer)); }
    [[nodiscard]] GeneralContent content() const;

    // Reads what others may have changed.
    [[nodiscard]] Task<> load();
    [[nodiscard]] Task<> setLaunchAtLogin(bool on);
    void setAutoUpdates(bool on);
    [[nodiscard]] Task<> checkForUpdates();
    // A newer version that was found without being asked for.
    void announce(const Update& update);
    [[nodiscard]] Task<> removeAllData();

private:
    Parts m_parts;
    ChangeNotice m_notice;
    GeneralContent m_content;
};

} // namespace vellumor
