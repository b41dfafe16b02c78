#include "app/ApplicationMode.h"
#include "app/DiagnosticsMode.h"
#include "app/Startup.h"
#include "base/Environment.h"
#include "base/Log.h"
#include "platform/linux/ConnectionThreads.h"
#include "platform/linux/SessionBus.h"
#include "store/DiskPath.h"
#include "store/Folders.h"

#include <QLoggingCategory>
#include <malloc.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <optional>

namespace {

using namespace vellumor;

bool isForeignRoot(const Environment& environment)
{
    const std::string home = DiskPath::spelled(Folders::fromEnvironment(environment).home);
    struct stat status {};
    std::optional<unsigned> owner;
    if (::stat(home.c_str(), &status) == 0)
        owner = status.st_uid;
    return Startup::isForeignRoot(::geteuid(), owner);
}

// Qt's own account of its network traffic names headers, and a variable could ask for it.
void silenceNetworkLogging()
{
    qunsetenv("QT_LOGGING_RULES");
    QLoggingCategory::setFilterRules(QStringLiteral("qt.network.*=false"));
}

} // namespace

int main(int argc, char** argv)
{
    const auto environment = readEnvironment(environ);
    SessionBus::pinAddress(environment);
    silenceNetworkLogging();
    // The few threads share one heap: each heap of its own would hold on to pages that it does not
    // need.
    ::mallopt(M_ARENA_MAX, 1);
    // A reader of our output that goes away must not take the program with it.
    std::signal(SIGPIPE, SIG_IGN);
    if (sodium_init() < 0)
        return 1; // no source of randomness: nothing here could be kept secret
    if (isForeignRoot(environment)) {
        log(Tag::main, "running as root in another user's home — cannot start");
        return 1;
    }
    const bool isDiagnostics = Startup::mode(environment) == Startup::Mode::diagnostics;
    const int status = isDiagnostics ? runDiagnosticsMode(argc, argv, environment)
                                     : runApplicationMode(argc, argv, environment);
    awaitConnectionThreads();
    return status;
}
