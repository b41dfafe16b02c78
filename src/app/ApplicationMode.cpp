#include "app/ApplicationMode.h"

#include "app/AppDelegate.h"
#include "app/DisplayProbe.h"
#include "app/Program.h"
#include "app/SettingsModels.h"
#include "app/Startup.h"
#include "app/StatusPublisher.h"
#include "base/Log.h"
#include "platform/linux/ColourScheme.h"
#include "platform/linux/LinuxDesktopActions.h"
#include "platform/linux/SingleCopy.h"
#include "platform/linux/status/LinuxStatusService.h"
#include "platform/linux/tray/LinuxStatusItem.h"
#include "store/FileStore.h"
#include "store/Folders.h"
#include "ui/Accessibility.h"
#include "ui/DesktopPalette.h"
#include "ui/IndicatorStyle.h"
#include "ui/ShortTime.h"

#include <QApplication>
#include <QSessionManager>
#include <QSettings>

#include <malloc.h>

#include <cstdlib>

namespace vellumor {

namespace {

// Everything that needs a screen, in the order in which it leans on one another.
struct Screens {
    Screens(Program& program, QApplication& application, const Environment& environment)
        : desktop(program.clock(), trayWorker, environment)
        , models(program, desktop)
        , statusItem(program.clock(), trayWorker)
        , delegate({program.appState(), program.clock(), statusItem, program.notifications(),
                    [&program] { program.healInBackground(); },
                    [&program] { program.startPolling(); },
                    [&program](Instant now) { return program.markPresence(now); },
                    [&application] { application.quit(); }, [] { ::malloc_trim(0); },
                    models.privacy, models.general, models.about, settingsActions(desktop),
                    [&program] { return program.reports().sweepCrashes(); },
                    [&program](Instant now) { return program.reports().emitSpineIfDue(now); },
                    [&program] { program.reports().recorder().notePopoverOpened(); },
                    [&program] { return program.isOnboardingDue(); },
                    [&program] { program.completeOnboarding(); }})
        , status({program.appState(), program.clock(), statusService,
                  [](Instant moment) { return shortTimeText(moment); },
                  [this] { delegate.activate({}); }})
    {
        status.start();
        scheme.start([this] { palette.adopt(scheme.prefersDark()); });
    }

    Worker trayWorker; // of its own: whatever else hangs, the label stands in the panel
    DesktopPalette palette;
    LinuxDesktopActions desktop;
    SettingsModels models;
    ColourScheme scheme;
    LinuxStatusItem statusItem;
    AppDelegate delegate;
    LinuxStatusService statusService;
    StatusPublisher status;
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
    QApplication::setStyle(new IndicatorStyle); // which it owns from then on
    Accessibility::install();
}

int run(QApplication& application, const Environment& environment, Folders folders,
        AppDelegate*& delegate)
{
    setUpApplication(application);
    Program program(environment, std::move(folders), [&application] { application.quit(); });
    Screens screens(program, application, environment);
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
