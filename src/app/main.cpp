#include "app/ApplicationMode.h"
#include "app/DiagnosticsMode.h"
#include "app/Startup.h"
#include "base/Environment.h"
#include "platform/linux/SessionBus.h"

#include <sodium.h>
#include <unistd.h>

#include <csignal>

int main(int argc, char** argv)
{
    const auto environment = vellumor::readEnvironment(environ);
    vellumor::SessionBus::pinAddress(environment);
    // A reader of our output that goes away must not take the program with it.
    std::signal(SIGPIPE, SIG_IGN);
    if (sodium_init() < 0)
        return 1; // no source of randomness: nothing here could be kept secret
    if (vellumor::Startup::mode(environment) == vellumor::Startup::Mode::diagnostics)
        return vellumor::runDiagnosticsMode(argc, argv, environment);
    return vellumor::runApplicationMode(argc, argv, environment);
}
