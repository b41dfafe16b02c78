#include "app/ApplicationMode.h"

#include "app/AppDelegate.h"
#include "app/DisplayProbe.h"
#include "app/Program.h"
#include "app/Startup.h"
#include "base/Log.h"
#include "platform/linux/ColourScheme.h"
#include "platform/linux/SingleCopy.h"
#include "platform/linux/tray/LinuxStatusItem.h"
#include "store/FileStore.h"
#include "store/Folders.h"
#include "ui/Accessibility.h"
#include "ui/DesktopPalette.h"

#include <QApplication>
#include <QSessionManager>
#include <QSettings>

#include <malloc.h>

#include <cstdlib>

namespace vellumor {

namespace {

// Everything that needs a screen, in the order in which it leans on one another.
struct Screens {
    Screens(Program& program, QApplication& application)
        : statusItem(program.clock(), trayWorker)
        , delegate({program.appState(), program.clock(), statusItem, program.notifications(),
                    [&program] { program.healInBackground(); },
                    [&program] { program.startPolling(); },
                    [&program](Instant now) { return program.markPresence(now); },
                    [&application] { application.quit(); }, [] { ::malloc_trim(0); }})
    {
        scheme.start([this] { palette.adopt(scheme.prefersDark()); });
    }

    Worker trayWorker; // of its own: whatever else hangs, the label stands in the panel
    DesktopPalette palette;
    ColourScheme scheme;
    LinuxStatusItem statusItem;
    AppDelegate delegate;
};

void setUpApplication(QApplication& application)
{
    QGuiApplication::setDesktopFileName(QStringLiteral("dev.quorle.vellumor"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // The session starts what the user has chosen to start; nothing else brings the program back.
    QObject::connect(
        &application, &QGuiApplication::saveStateRequest, &application,
        [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection);
    // The file panel would keep its last folders in a file of its own.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
    Accessibility::install();
}

int run(QApplication& application, const Environment& environment, Folders folders,
        AppDelegate*& delegate)
{
    setUpApplication(application);
    Program program(environment, std::move(folders));
    Screens screens(program, application);
    delegate = &screens.delegate;
    QMetaObject::invokeMethod(
        &application,
        [&] {
            log(Tag::main, "running");
            screens.delegate.applicationDidFinishLaunching();
        },
        Qt::QueuedConnection);
    const int status = QApplication::exec();
    program.finishWrites();
    // Fetches that are under way are not waited for, and nothing is taken apart.
    std::_Exit(status);
}

} // namespace

int runApplicationMode(int argc, char** argv, const Environment& environment)
{
    Folders folders = Folders::fromEnvironment(environment);
    const bool hasScreen = isDisplayReachable(environment);
    std::unique_ptr<QCoreApplication> application;
    if (hasScreen)
        application = std::make_unique<QApplication>(argc, argv);
    else
        application = std::make_unique<QCoreApplication>(argc, argv);
    const FileStore files;
    SingleCopy copy(files, folders.vellumor() + "/.lock", environment);
    AppDelegate* delegate = nullptr; // until it is there, nobody can ask for it: no event is read
    const auto onActivate = [&delegate](const std::string& activationToken) {
        delegate->activate(activationToken);
    };
    switch (Startup::begin(copy, hasScreen ? Startup::Screen::there : Startup::Screen::absent,
                           onActivate)) {
    case Startup::Outcome::handedOver:
        return 0;
    case Startup::Outcome::noDisplay:
        return 1;
    case Startup::Outcome::run:
        break;
    }
    return run(static_cast<QApplication&>(*application), environment, std::move(folders), delegate);
}

} // namespace vellumor
