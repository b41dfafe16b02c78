#include "app/SettingsModels.h"

#include "async/OrEnd.h"
#include "ui/settings/PathPanel.h"

#include <QClipboard>
#include <QGuiApplication>

#include <variant>

namespace vellumor {

namespace {

using Update = GeneralModel::Update;

Update shown(const UpdateResult& result)
{
    if (const auto* const update = std::get_if<UpdateAvailable>(&result))
        return {Update::Kind::available, update->version, update->page, {}};
    if (const auto* const failure = std::get_if<UpdateFailure>(&result))
        return {Update::Kind::failed, {}, {}, failure->description()};
    return {};
}

Task<Update> checked(Upkeep& upkeep)
{
    const UpdateResult result = co_await upkeep.checkForUpdates();
    auto update = shown(result);
    co_return update;
}

GeneralModel::Parts generalParts(Program& program)
{
    Upkeep& upkeep = program.upkeep();
    return {.clock = program.clock(),
            .isLaunchedAtLogin = [&upkeep] { return upkeep.isLaunchedAtLogin(); },
            .setLaunchedAtLogin = [&upkeep](bool on) { return upkeep.setLaunchedAtLogin(on); },
            .hasUpdates = upkeep.updates().isConfigured(),
            .autoUpdates = [&upkeep] { return upkeep.updates().isAutomatic(); },
            .setAutoUpdates = [&upkeep](bool on) { upkeep.updates().setAutomatic(on); },
            .checkForUpdates = [&upkeep] { return checked(upkeep); },
            .removeAllData = [&upkeep] { return upkeep.removeAllData(); }};
}

// Whether it opened is in the log.
Task<> awaited(Task<bool> opened)
{
    co_await opened;
}

void open(Task<bool> opened)
{
    [[maybe_unused]] const Task<> running = orEnd(awaited(std::move(opened)));
}

} // namespace

SettingsModels::SettingsModels(Program& program, DesktopActions& desktop)
    : privacy(program.reports().store(), program.reports().recorder(), program.clock())
    , general(generalParts(program))
    , about({.clock = program.clock(),
             .look = [&program] { return program.aboutFacts(); },
             .showReports = [&program,
                             &desktop] { open(desktop.showFolder(program.crashReports())); }})
{
    program.upkeep().onUpdate([this](const UpdateResult& result) {
        if (std::holds_alternative<UpdateAvailable>(result))
            general.announce(shown(result));
    });
}

SettingsActions settingsActions(DesktopActions& desktop)
{
    return {.chooseFile = PathPanel::chooseFile,
            .chooseFolder = PathPanel::chooseFolder,
            .copy =
                [](const std::string& text) {
                    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
                },
            .openTerminal = [&desktop] { open(desktop.openTerminal()); },
            .openPage = [&desktop](const char* address) { open(desktop.openPage(address)); }};
}

} // namespace vellumor
