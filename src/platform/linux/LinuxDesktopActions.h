#pragma once

#include "platform/DesktopActions.h"
#include "platform/linux/ChildLauncher.h"

#include <QDBusConnection>

#include <chrono>

namespace vellumor {

// DesktopActions by what a free desktop has: the file manager on the session bus, and programs
// under names that every distribution gives them. A child's environment lacks this program's own
// variables, which is why Qt's way to open an address is not taken.
class LinuxDesktopActions final : public DesktopActions {
public:
    // `answerLimit`: how long the file manager, which the bus may have to start, is waited for.
    // `clock` and `worker` outlive this; on the worker nothing that must not wait should be due.
    LinuxDesktopActions(Clock& clock, Worker& worker, Environment environment,
                        QDBusConnection bus = QDBusConnection::sessionBus(),
                        std::chrono::milliseconds answerLimit = std::chrono::seconds(10));

    [[nodiscard]] Task<bool> openTerminal() override;
    [[nodiscard]] Task<bool> showFolder(std::string path) override;
    [[nodiscard]] Task<bool> openPage(std::string url) override;

private:
    [[nodiscard]] Task<bool> showInFileManager(std::string path, bool isFolder);

    Worker& m_worker;
    QDBusConnection m_bus;
    int m_answerLimit; // milliseconds
    ChildLauncher m_launcher;
};

} // namespace vellumor
