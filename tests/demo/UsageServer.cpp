// The usage endpoint of the demonstration: answers on 127.0.0.1, prints its port on a line of its
// own and runs until it is ended.
// By itself it knows two accounts, in both shapes that the real one has. With the name of a file it
// knows those in there, a JSON object of token to `status`, `headers` and `body`, each of which may
// be missing, or to `{"silent": true}`; a body that is a text is sent as it is. The file is read
// anew for each request, and the token of each is printed on a line of its own.

#include "base/Format.h"
#include "base/Json.h"
#include "base/SystemClock.h"
#include "store/FileReader.h"
#include "support/LoopbackServer.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

using namespace std::chrono_literals;
using vellumor::Json;
using vellumor::test::Answer;
using vellumor::test::LoopbackServer;
using vellumor::test::Reaction;
using vellumor::test::SeenRequest;
using vellumor::test::Silence;

std::string in(std::chrono::minutes time)
{
    return vellumor::Format::isoFractional(vellumor::systemNow() + time);
}

// One row a limit.
Json presentShape()
{
    return {
        {"limits",
         {{{"kind", "session"}, {"group", "session"}, {"percent", 62.0}, {"resets_at", in(134min)}},
          {{"kind", "weekly_all"},
           {"group", "weekly"},
           {"percent", 41.0},
           {"resets_at", in(4680min)}},
          {{"kind", "weekly_scoped"},
           {"group", "weekly"},
           {"percent", 17.0},
           {"resets_at", in(4680min)},
           {"scope", {{"model", {{"display_name", "Opus"}}}}}}}},
        {"extra_usage",
         {{"is_enabled", true},
          {"used_credits", 1250},
          {"currency", "EUR"},
          {"monthly_limit", 5000}}}};
}

// One object a limit.
Json olderShape()
{
    return {{"five_hour", {{"utilization", 93.0}, {"resets_at", in(48min)}}},
            {"seven_day", {{"utilization", 78.0}, {"resets_at", in(1680min)}}},
            {"seven_day_opus", {{"utilization", 0.0}, {"resets_at", nullptr}}}};
}

std::string tokenOf(const SeenRequest& request)
{
    constexpr std::string_view scheme = "Bearer ";
    const std::string header = request.header("authorization").value_or("");
    return header.starts_with(scheme) ? header.substr(scheme.size()) : "";
}

Answer ownAnswer(const std::string& token)
{
    if (token == "demonstration-token-in-a-file")
        return {200, {{"Content-Type", "application/json"}}, presentShape().dump()};
    if (token == "demonstration-token-in-the-keyring")
        return {200, {{"Content-Type", "application/json"}}, olderShape().dump()};
    return {401, {}, "{}"};
}

Reaction reactionFrom(const std::string& file, const std::string& token)
{
    const Json accounts =
        vellumor::parseJsonObject(vellumor::readFile(file).bytes).value_or(Json::object());
    const auto account = accounts.find(token);
    if (account == accounts.end())
        return Answer{401, {}, "{}"};
    if (account->value("silent", false))
        return Silence{};
    Answer answer{account->value("status", 200), {{"Content-Type", "application/json"}}, "{}"};
    const Json headers = account->value("headers", Json::object());
    for (const auto& [name, value] : headers.items())
        answer.headers.emplace_back(name, value.get<std::string>());
    if (const auto body = account->find("body"); body != account->end())
        answer.body = body->is_string() ? body->get<std::string>() : body->dump();
    return answer;
}

void printLine(const std::string& text)
{
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

LoopbackServer::Handler handlerOf(const std::string& file)
{
    return [file](const SeenRequest& request) -> Reaction {
        if (request.path != "/api/oauth/usage")
            return Answer{404, {}, "{}"};
        const std::string token = tokenOf(request);
        if (file.empty())
            return ownAnswer(token);
        printLine(token);
        return reactionFrom(file, token);
    };
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const LoopbackServer server(handlerOf(argc > 1 ? argv[1] : ""));
    printLine(std::to_string(server.port()));
    return QCoreApplication::exec();
}
