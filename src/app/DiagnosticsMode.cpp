#include "app/DiagnosticsMode.h"

#include "accounts/KeychainReader.h"
#include "app/BuildSettings.h"
#include "async/LiveClock.h"
#include "diagnostics/Diagnostics.h"
#include "platform/linux/LoginShell.h"
#include "platform/linux/QtHttpTransport.h"
#include "platform/linux/QtProcessRunner.h"
#include "platform/linux/SecretServiceKeyring.h"
#include "platform/linux/SessionBus.h"
#include "usage/ApiBase.h"
#include "usage/ClaudeBinaryFinder.h"

#include <QCoreApplication>

#include <cstdio>

namespace vellumor {

namespace {

void printToStandardOutput(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

Task<> runAndQuit(Diagnostics& diagnostics)
{
    co_await diagnostics.run();
    QCoreApplication::quit();
}

} // namespace

int runDiagnosticsMode(int argc, char** argv, const Environment& environment)
{
    // Sockets need an event loop, but no screen: this is no GUI application.
    QCoreApplication application(argc, argv);
    const Folders folders = Folders::fromEnvironment(environment);
    LiveClock clock;
    Worker worker;
    ServiceDirectories directories(folders.home);
    SecretServiceKeyring keyring(SessionBus::address(environment));
    const KeychainReader keychain(directories, keyring, clock);
    QtHttpTransport transport;
    UsageClient client(
        transport, worker, clock,
        [&keychain](const std::string& service) { return keychain.readCredentials(service); },
        ApiBase::usageEndpoint(environment, BuildSettings::apiBase));
    const FileStore files;
    PersistedClaudePath persisted(files, folders.vellumor() + "/claude-path.json");
    QtProcessRunner processes(clock);
    ClaudeBinaryFinder finder(
        processes, worker, persisted,
        {environment, folders.home, LoginShell::path(environment), folders.home});
    Diagnostics diagnostics(
        worker, client, clock, folders,
        [&] { return Findings::gather(environment, folders, directories, keychain); },
        [&](std::optional<std::string> preference) { return finder.find(std::move(preference)); },
        printToStandardOutput);
    Task<> task;
    QMetaObject::invokeMethod(
        &application, [&] { task = runAndQuit(diagnostics); }, Qt::QueuedConnection);
    QCoreApplication::exec();
    return 0;
}

} // namespace vellumor
