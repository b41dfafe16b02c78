#include "cli/CommandLine.h"

#include "base/Text.h"
#include "base/Version.h"
#include "status/StatusFields.h"

#include <string_view>

namespace vellumor {

namespace {

using Purpose = CommandLine::Purpose;
using Form = CommandLine::Form;
using Mistake = CommandLine::Mistake;

constexpr const char* programHelp =
    R"(Vellumor shows the usage limits of Claude Code accounts in the panel.

  vellumor                      starts it, or opens the popover of the copy that runs
  vellumor status [OPTION...]   prints the same readings on the terminal
  vellumor --help, --version

`vellumor status --help` has more.
)";

constexpr const char* statusHelp =
    R"(vellumor status [OPTION...]: prints what Vellumor knows of each account. From the program where it
runs, else from its files; it never asks the usage endpoint.

  --json            as JSON, for scripts
  --waybar          as one line of JSON, for a custom module of waybar
  --format FORMAT   in a form of your own, an account a line; FORMAT has fields in braces, see below
  --separator TEXT  with --format: what stands between two accounts; without it a line end, and two
                    blanks with --watch
  --account NAME    only the account of this name or id
  --watch           goes on, with a line at each change, until it is ended
  --help            this text
  --version         the version

Exit statuses: 0 printed; 1 it could not be printed, or --watch has lost the bus; 2 wrong arguments;
3 there is no account, or none of that name.

Fields of a format:
)";

std::string versionText()
{
    return "Vellumor " + std::string(version) + "\n";
}

std::string quoted(std::string_view argument)
{
    return "“" + Text::printable(Text::withinColumns(argument, 60)) + "”";
}

// Reads the options of `status`, one after the other.
class StatusOptions {
public:
    explicit StatusOptions(const std::vector<std::string>& arguments)
        : m_arguments(arguments)
    {
    }

    Purpose read()
    {
        for (m_next = 1; m_next < m_arguments.size();) {
            if (const auto purpose = readOne(m_arguments[m_next++]))
                return *purpose;
        }
        if (m_hasSeparator && m_status.form != Form::fields)
            return Mistake{"--separator goes with --format alone"};
        if (!m_hasSeparator && m_status.form == Form::fields)
            m_status.separator = m_status.isWatching ? "  " : "\n";
        return m_status;
    }

private:
    using Maybe = std::optional<Purpose>;

    Maybe readOne(const std::string& argument)
    {
        const auto equals = argument.find('=');
        const bool isJoined = argument.starts_with("--") && equals != std::string::npos;
        const std::string name = isJoined ? argument.substr(0, equals) : argument;
        const auto joined = isJoined ? std::optional(argument.substr(equals + 1)) : std::nullopt;
        if (name == "--format" || name == "--separator" || name == "--account")
            return readValue(name, joined);
        if (isJoined)
            return unknown(argument);
        return readSwitch(argument);
    }

    Maybe readSwitch(const std::string& argument)
    {
        if (argument == "--help" || argument == "-h")
            return CommandLine::Text{statusHelp + StatusFields::help()};
        if (argument == "--version")
            return CommandLine::Text{versionText()};
        if (argument == "--watch")
            m_status.isWatching = true;
        else if (argument == "--json")
            return choose(Form::json);
        else if (argument == "--waybar")
            return choose(Form::waybar);
        else
            return unknown(argument);
        return std::nullopt;
    }

    Maybe readValue(const std::string& name, std::optional<std::string> value)
    {
        if (!value) {
            if (m_next == m_arguments.size())
                return Mistake{name + " needs a value behind it"};
            value = m_arguments[m_next++];
        }
        if (name == "--account")
            m_status.account = *value;
        if (name == "--separator") {
            m_status.separator = *value;
            m_hasSeparator = true;
        }
        if (name != "--format")
            return std::nullopt;
        if (const auto mistake = StatusFields::mistake(*value)) {
            return Mistake{quoted(*mistake) +
                           " is no field of a format: `vellumor status --help` lists them"};
        }
        m_status.format = *value;
        return choose(Form::fields);
    }

    Maybe choose(Form form)
    {
        if (m_status.form != Form::table && m_status.form != form)
            return Mistake{"--json, --waybar and --format exclude one another"};
        m_status.form = form;
        return std::nullopt;
    }

    static Maybe unknown(const std::string& argument)
    {
        return Mistake{"status does not know " + quoted(argument) +
                       ": `vellumor status --help` lists its options"};
    }

    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 1;
    bool m_hasSeparator = false;
    CommandLine::Status m_status;
};

} // namespace

CommandLine::Purpose CommandLine::read(const std::vector<std::string>& arguments)
{
    if (arguments.empty())
        return Desktop{};
    const std::string& first = arguments.front();
    if (first == "status")
        return StatusOptions(arguments).read();
    const bool isAlone = arguments.size() == 1;
    if (isAlone && (first == "--help" || first == "-h"))
        return Text{programHelp};
    if (isAlone && first == "--version")
        return Text{versionText()};
    const bool isKnown = first == "--help" || first == "-h" || first == "--version";
    return Mistake{"it does not know " + quoted(isKnown ? arguments[1] : first) +
                   ": `vellumor --help` tells what it does, and without arguments it starts"};
}

} // namespace vellumor
