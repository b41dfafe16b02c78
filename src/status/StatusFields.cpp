#include "status/StatusFields.h"

#include "base/Format.h"
#include "base/Text.h"

#include <array>
#include <functional>
#include <variant>
#include <vector>

namespace vellumor::StatusFields {

namespace {

struct Field {
    std::string_view name;
    std::string_view help;
    std::string (*value)(const StatusAccount&, Instant now);
};

std::string percentOf(const StatusWindow* window)
{
    return window == nullptr ? "" : window->percentText;
}

std::string resetOf(const StatusWindow* window)
{
    return window == nullptr ? "" : window->resetText;
}

const StatusWindow* session(const StatusAccount& account)
{
    return account.window("session");
}

const StatusWindow* weekly(const StatusAccount& account)
{
    return account.window("weekly_all");
}

using Account = StatusAccount;

constexpr std::array fields = {
    Field{"name", "the account's name", [](const Account& a, Instant) { return a.name; }},
    Field{"id", "its id", [](const Account& a, Instant) { return a.id; }},
    Field{"state", "ok, stale, loading, noData, noToken, expired or blocked",
          [](const Account& a, Instant) { return a.state; }},
    Field{"session", "how full the session is: 62%",
          [](const Account& a, Instant) { return percentOf(session(a)); }},
    Field{"session.reset", "the time until it resets: 2h 14m",
          [](const Account& a, Instant) { return resetOf(session(a)); }},
    Field{"weekly", "how full the week of all models is",
          [](const Account& a, Instant) { return percentOf(weekly(a)); }},
    Field{"weekly.reset", "the time until it resets",
          [](const Account& a, Instant) { return resetOf(weekly(a)); }},
    Field{"worst", "how full the fullest limit is",
          [](const Account& a, Instant) { return percentOf(a.fullest()); }},
    Field{
        "worst.title", "which one it is: Weekly (Opus)",
        [](const Account& a, Instant) { return a.fullest() == nullptr ? "" : a.fullest()->title; }},
    Field{"worst.reset", "the time until it resets",
          [](const Account& a, Instant) { return resetOf(a.fullest()); }},
    Field{"forecast", "what the present pace leads to",
          [](const Account& a, Instant) { return a.forecast; }},
    Field{"credits", "usage credits", [](const Account& a, Instant) { return a.credits; }},
    Field{"age", "how old the reading is: 2m ago",
          [](const Account& a, Instant now) {
              return a.updatedAt ? Format::relativeAge(*a.updatedAt, now) : "";
          }},
    Field{"note", "why there are no numbers, or not the latest",
          [](const Account& a, Instant) { return a.notes.empty() ? "" : a.notes.front(); }},
};

const Field* fieldOf(std::string_view name)
{
    for (const Field& field : fields) {
        if (field.name == name)
            return &field;
    }
    return nullptr;
}

struct Mistake {
    std::string text;
};
using Piece = std::variant<std::string, const Field*, Mistake>;

// Takes the first piece off; `rest` is not empty.
Piece next(std::string_view& rest)
{
    const char first = rest.front();
    const bool isDoubled = rest.size() > 1 && rest[1] == first;
    if ((first == '{' || first == '}') && isDoubled) {
        rest.remove_prefix(2);
        return std::string(1, first);
    }
    const auto end = first == '{' ? rest.find('}') : rest.find_first_of("{}", first == '}' ? 0 : 1);
    if (first == '}' || (first == '{' && end == std::string_view::npos)) {
        rest = {};
        return Mistake{std::string(1, first)};
    }
    if (first != '{') {
        const std::string plain(rest.substr(0, end));
        rest.remove_prefix(plain.size());
        return plain;
    }
    const std::string_view name = rest.substr(1, end - 1);
    rest.remove_prefix(end + 1);
    const Field* field = fieldOf(name);
    if (field == nullptr)
        return Mistake{"{" + std::string(name) + "}"};
    return field;
}

std::string textOf(const StatusAccount& account, std::string_view format, Instant now)
{
    std::string text;
    while (!format.empty()) {
        const Piece piece = next(format);
        if (const auto* plain = std::get_if<std::string>(&piece))
            text += *plain;
        else if (const auto* field = std::get_if<const Field*>(&piece))
            text += Text::printable((*field)->value(account, now));
    }
    return text;
}

} // namespace

std::string help()
{
    std::string text;
    for (const Field& field : fields) {
        std::string name = "  {" + std::string(field.name) + "}";
        name.resize(20, ' ');
        text += name + std::string(field.help) + "\n";
    }
    return text;
}

std::optional<std::string> mistake(std::string_view format)
{
    while (!format.empty()) {
        const Piece piece = next(format);
        if (const auto* wrong = std::get_if<Mistake>(&piece))
            return wrong->text;
    }
    return std::nullopt;
}

std::string text(const StatusReport& report, std::string_view format, std::string_view between,
                 Instant now)
{
    std::string text;
    bool isFirst = true;
    for (const StatusAccount& account : report.accounts) {
        if (!isFirst)
            text += between;
        isFirst = false;
        text += textOf(account, format, now);
    }
    return text;
}

} // namespace vellumor::StatusFields
