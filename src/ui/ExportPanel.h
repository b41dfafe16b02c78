#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>
#include <string>

// ExportPanel: asks where a file is to go, in the desktop's own dialog, and writes it there.
namespace vellumor::ExportPanel {

// Comes back at once. The dialog is that of the desktop's portal, else Qt's. The file is written
// beside the main thread; when that does not succeed, `onFailure` is called on the main thread with
// the system's words for why. Cancelling does nothing.
void save(const std::string& suggestedName, std::string bytes,
          std::function<void(const std::string& reason)> onFailure,
          QDBusConnection bus = QDBusConnection::sessionBus());

// Takes the place of a file that is there only when it is whole: on a full disk or in a folder that
// may not be written to, the old one stays. Gives why it did not succeed; nothing when it did.
[[nodiscard]] std::string write(const QString& path, const std::string& bytes);

} // namespace vellumor::ExportPanel
