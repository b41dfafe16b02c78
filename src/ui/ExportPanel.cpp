#include "ui/ExportPanel.h"

#include "base/Log.h"
#include "ui/PortalSavePanel.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>

namespace vellumor::ExportPanel {

namespace {

const auto title = QStringLiteral("Export");

struct Export {
    QString name;
    std::string bytes;
    std::function<void(const std::string& reason)> onFailure;
};

QString startFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

void writeInBackground(const Export& what, const QString& path)
{
    QThreadPool::globalInstance()->start([what, path] {
        const std::string reason = write(path, what.bytes);
        if (reason.empty())
            return;
        log(Tag::main, "the export could not be written");
        QMetaObject::invokeMethod(qApp, [what, reason] { what.onFailure(reason); });
    });
}

QString suffixOf(const Export& what)
{
    return QFileInfo(what.name).suffix();
}

QString kindOf(const Export& what)
{
    return suffixOf(what).toUpper();
}

QString typeOf(const Export& what)
{
    return suffixOf(what) == QLatin1String("csv") ? QStringLiteral("text/csv")
                                                  : QStringLiteral("application/json");
}

void askWithQt(const Export& what)
{
    auto* const panel = new QFileDialog(nullptr, title, startFolder());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setDefaultSuffix(suffixOf(what));
    panel->setNameFilter(kindOf(what) + QStringLiteral(" (*.") + suffixOf(what) + QLatin1Char(')'));
    panel->selectFile(what.name);
    QObject::connect(panel, &QFileDialog::fileSelected, panel,
                     [what](const QString& path) { writeInBackground(what, path); });
    panel->show();
    panel->raise();
    panel->activateWindow();
}

} // namespace

void save(const std::string& suggestedName, std::string bytes,
          std::function<void(const std::string& reason)> onFailure, QDBusConnection bus)
{
    const Export what{QString::fromStdString(suggestedName), std::move(bytes),
                      std::move(onFailure)};
    auto* const panel = new PortalSavePanel(std::move(bus), qApp);
    panel->ask({title, what.name, startFolder(), kindOf(what), typeOf(what)},
               [what](PortalSavePanel::End end, const QString& path) {
                   if (end == PortalSavePanel::End::chosen)
                       writeInBackground(what, path);
                   else if (end == PortalSavePanel::End::unavailable)
                       askWithQt(what);
               });
}

std::string write(const QString& path, const std::string& bytes)
{
    const QFileInfo there(path);
    if (there.exists() && !there.isFile()) // a device would be replaced
        return "Not a regular file";
    QSaveFile file(path);
    const auto size = static_cast<qint64>(bytes.size());
    if (file.open(QIODevice::WriteOnly) && file.write(bytes.data(), size) == size && file.commit())
        return {};
    return file.errorString().toStdString();
}

} // namespace vellumor::ExportPanel
