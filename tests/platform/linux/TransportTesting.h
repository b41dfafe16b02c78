#pragma once

#include "platform/linux/QtHttpTransport.h"
#include "support/LoopbackServer.h"

#include <string>
#include <string_view>

namespace vellumor::test {

inline constexpr std::string_view token = "a-token-of-the-test";

// Asks for `url` and runs the event loop until the answer is there.
inline HttpAnswer ask(HttpTransport& transport, std::string url, std::string_view bearer = token)
{
    HttpRequest request;
    request.url = std::move(url);
    request.bearer = SecretBytes(bearer);
    request.headers = {{"x-kind", "one"}, {"x-version", "2"}};
    return QCoro::waitFor(transport.get(std::move(request)));
}

// A server that does the same at each request.
inline LoopbackServer::Handler always(Reaction reaction)
{
    return [reaction = std::move(reaction)](const SeenRequest&) { return reaction; };
}

inline Answer redirectTo(std::string location, int status = 302)
{
    Answer answer;
    answer.status = status;
    answer.headers = {{"Location", std::move(location)}};
    return answer;
}

inline Answer bodied(std::string body)
{
    Answer answer;
    answer.body = std::move(body);
    return answer;
}

} // namespace vellumor::test
