#include "ui/settings/PathPanel.h"

#include <QDir>
#include <QFileDialog>

namespace vellumor::PathPanel {

namespace {

void choose(QFileDialog::FileMode mode, const QString& title, SettingsActions::Chosen chosen)
{
    auto* const panel = new QFileDialog(nullptr, title, QDir::homePath());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptOpen);
    panel->setFileMode(mode);
    panel->setOption(QFileDialog::ShowDirsOnly, mode == QFileDialog::Directory);
    panel->setFilter(panel->filter() | QDir::Hidden); // config directories begin with a dot
    QObject::connect(
        panel, &QFileDialog::fileSelected, panel,
        [chosen = std::move(chosen)](const QString& path) { chosen(path.toStdString()); });
    panel->open();
}

} // namespace

void chooseFile(SettingsActions::Chosen chosen)
{
    choose(QFileDialog::ExistingFile, QStringLiteral("Choose"), std::move(chosen));
}

void chooseFolder(SettingsActions::Chosen chosen)
{
    choose(QFileDialog::Directory, QStringLiteral("Choose"), std::move(chosen));
}

} // namespace vellumor::PathPanel
