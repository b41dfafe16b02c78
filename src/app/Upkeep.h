#pragma once

#include "async/Worker.h"
#include "platform/linux/AutostartFile.h"
#include "platform/linux/QtHttpTransport.h"
#include "store/DataRemover.h"
#include "store/Folders.h"
#include "store/SealableFileCalls.h"
#include "updates/UpdateChecker.h"
#include "updates/UpdateSchedule.h"
#include "updates/UpdateStore.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// How the program comes to start, grows newer, and leaves. Main thread only.
class Upkeep {
public:
    struct Parts {
        Clock& clock;
        const FileStore& files;
        SealableFileCalls& fileCalls; // through which `files` writes
        Worker& storeWorker;          // which writes what the program keeps
        RunJob write;
        std::function<void()> stopPolling;
        std::function<void()> terminate;
    };

    // Everything borrowed outlives it.
    Upkeep(const Environment& environment, const Folders& folders, Parts parts);

    [[nodiscard]] Task<bool> isLaunchedAtLogin();
    // Nothing, or why it could not be done.
    [[nodiscard]] Task<std::optional<std::string>> setLaunchedAtLogin(bool on);

    [[nodiscard]] UpdateSchedule& updates() { return m_schedule; }
    [[nodiscard]] Task<UpdateResult> checkForUpdates() { return m_checker.check(); }
    // Hears of what the program finds by itself.
    void onUpdate(UpdateSchedule::Told told) { m_told = std::move(told); }

    // Deletes what the program keeps and shares, and ends it; from then on it writes nothing more.
    // When something is left, its names, and the program goes on.
    [[nodiscard]] Task<std::vector<std::string>> removeAllData();

private:
    Parts m_parts;
    std::string m_data; // the folder in which both of ours lie
    AutostartFile m_autostart;
    QtHttpTransport m_transport; // does not follow redirects
    UpdateStore m_updateStore;
    UpdateChecker m_checker;
    UpdateSchedule::Told m_told;
    UpdateSchedule m_schedule;
};

} // namespace vellumor
