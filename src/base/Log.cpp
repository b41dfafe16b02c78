#include "base/Log.h"

#include "base/Text.h"

#include <fmt/format.h>

#include <unistd.h>

namespace vellumor {

namespace {

std::string_view name(Tag tag)
{
    switch (tag) {
    case Tag::main:
        return "main";
    case Tag::accounts:
        return "accounts";
    case Tag::usage:
        return "usage";
    case Tag::poller:
        return "poller";
    case Tag::stagger:
        return "stagger";
    case Tag::pipeline:
        return "pipeline";
    case Tag::revive:
        return "revive";
    case Tag::fileStore:
        return "FileStore";
    case Tag::sharedAccountsStore:
        return "SharedAccountsStore";
    }
    return "main";
}

} // namespace

void log(Tag tag, std::string_view text)
{
    const std::string line = fmt::format("[{}] {}\n", name(tag), Text::printable(text));
    // One call a line keeps lines of different threads whole; a failed write has nobody to be told
    // to.
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

void log(Tag tag, std::string_view accountName, std::string_view text)
{
    log(tag, fmt::format("{}: {}", accountName, text));
}

} // namespace vellumor
