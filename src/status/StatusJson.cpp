#include "status/StatusJson.h"

#include "base/Format.h"
#include "base/Text.h"
#include "status/StatusKeys.h"

namespace vellumor::StatusJson {

namespace {

namespace Keys = StatusKeys;

// What a broken file or a foreign program may have put there must not lose all the rest.
std::string valid(const std::string& text)
{
    return Text::isValidUtf8(text) ? text : Text::printable(text);
}

void put(Json& object, const char* key, const std::string& text)
{
    if (!text.empty())
        object[key] = valid(text);
}

void put(Json& object, const char* key, const std::optional<Instant>& moment)
{
    if (moment)
        object[key] = Format::isoFractional(*moment);
}

Json jsonOf(const StatusWindow& window)
{
    Json json = {{Keys::kind, valid(window.kind)}, {Keys::title, valid(window.title)},
                 {Keys::percent, window.percent},  {Keys::percentText, window.percentText},
                 {Keys::active, window.isActive},  {Keys::stale, window.isStale}};
    put(json, Keys::resetsAt, window.resetsAt);
    put(json, Keys::resetText, window.resetText);
    put(json, Keys::scope, window.scope);
    return json;
}

Json jsonOf(const StatusAccount& account, Instant now)
{
    Json json = {
        {Keys::id, valid(account.id)},  {Keys::name, valid(account.name)},
        {Keys::state, account.state},   {Keys::creditsExhausted, account.areCreditsExhausted},
        {Keys::windows, Json::array()}, {Keys::notes, Json::array()}};
    for (const StatusWindow& window : account.windows)
        json[Keys::windows].push_back(jsonOf(window));
    for (const std::string& note : account.notes)
        json[Keys::notes].push_back(valid(note));
    put(json, Keys::credits, account.credits);
    put(json, Keys::forecast, account.forecast);
    put(json, Keys::updatedAt, account.updatedAt);
    if (account.updatedAt)
        json[Keys::age] = Format::relativeAge(*account.updatedAt, now);
    return json;
}

} // namespace

std::string text(const StatusReport& report, StatusOrigin origin, Instant now, JsonLayout layout)
{
    Json json = {{Keys::schemaVersion, StatusReport::schemaVersion},
                 {Keys::source, origin == StatusOrigin::program ? "program" : "files"},
                 {Keys::accounts, Json::array()}};
    put(json, Keys::updatedAt, report.updatedAt);
    for (const StatusAccount& account : report.accounts)
        json[Keys::accounts].push_back(jsonOf(account, now));
    return Text::escapedJson(writeJson(std::move(json), layout, JsonSlashes::plain).value_or("{}"));
}

} // namespace vellumor::StatusJson
