#include "ui/ExportPanel.h"

#include "base/Log.h"

#include <QDir>
#include <QFileDialog>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>

namespace vellumor::ExportPanel {

namespace {

void write(const QString& path, const std::string& bytes)
{
    QSaveFile file(path);
    const auto size = static_cast<qint64>(bytes.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), size) != size ||
        !file.commit())
        log(Tag::main, "the export could not be written");
}

QString startFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace

void save(const std::string& suggestedName, std::string bytes)
{
    auto* const panel = new QFileDialog(nullptr, QStringLiteral("Export"), startFolder());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->selectFile(QString::fromStdString(suggestedName));
    QObject::connect(
        panel, &QFileDialog::fileSelected, panel, [bytes = std::move(bytes)](const QString& path) {
            QThreadPool::globalInstance()->start([path, bytes] { write(path, bytes); });
        });
    panel->show();
    panel->raise();
    panel->activateWindow();
}

} // namespace vellumor::ExportPanel
