#include "app/ApplicationMode.h"

#include "app/Program.h"
#include "app/Startup.h"
#include "async/OrEnd.h"
#include "base/Log.h"
#include "platform/linux/SingleCopy.h"
#include "store/FileStore.h"
#include "store/Folders.h"

#include <QCoreApplication>

#include <cstdlib>

namespace vellumor {

namespace {

void onActivate(const std::string&)
{
    log(Tag::main, "started again — there is nothing to show yet");
}

} // namespace

int runApplicationMode(int argc, char** argv, const Environment& environment)
{
    const Folders folders = Folders::fromEnvironment(environment);
    QCoreApplication application(argc, argv);
    const FileStore files;
    SingleCopy copy(files, folders.vellumor() + "/.lock", environment);
    switch (Startup::begin(copy, environment, onActivate)) {
    case Startup::Outcome::handedOver:
        return 0;
    case Startup::Outcome::noDisplay:
        return 1;
    case Startup::Outcome::run:
        break;
    }
    log(Tag::main, "running — there is no status item yet");
    Program program(environment, folders);
    Task<> started;
    QMetaObject::invokeMethod(
        &application, [&] { started = orEnd(program.start()); }, Qt::QueuedConnection);
    // Nothing is saved at the end, and fetches that are under way are not waited for.
    std::_Exit(QCoreApplication::exec());
}

} // namespace vellumor
