#include "cli/DesktopProgram.h"
#include "cli/StatusCommand.h"

#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

using namespace vellumor;

constexpr int cannotStart = 127; // as shells have it

int startDesktop(char** arguments)
{
    const int error = DesktopProgram::become(arguments);
    std::fprintf(stderr, "vellumor: the program itself cannot be started: %s\n",
                 std::strerror(error));
    return cannotStart;
}

int run(const CommandLine::Purpose& purpose)
{
    if (const auto* text = std::get_if<CommandLine::Text>(&purpose))
        return Printer::write(text->text) ? StatusCommand::printed : StatusCommand::failed;
    if (const auto* mistake = std::get_if<CommandLine::Mistake>(&purpose)) {
        std::fprintf(stderr, "vellumor: %s\n", mistake->text.c_str());
        return StatusCommand::wrongArguments;
    }
    return StatusCommand(std::get<CommandLine::Status>(purpose), readEnvironment(environ)).run();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc <= 1)
        return startDesktop(argv);
    std::setlocale(LC_ALL, "");
    std::signal(SIGPIPE, SIG_IGN); // the library of the bus would have it so anyway
    return run(CommandLine::read({argv + 1, argv + argc}));
}
