#pragma once

#include "async/Task.h"
#include "base/SecretBytes.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vellumor {

// One GET. The bearer token travels in the Authorization header and nowhere else.
struct HttpRequest {
    std::string url;
    SecretBytes bearer; // visible ASCII
    std::vector<std::pair<std::string, std::string>> headers;
};

// What came of it.
struct HttpAnswer {
    enum class Kind {
        answered,  // status, body and retryAfter are those of the last answer
        tooLarge,  // the body is over the limit, and was not read to its end
        transport, // no whole answer: `problem` says why
    };

    Kind kind = Kind::transport;
    int status = -1; // of HTTP; -1 without an answer
    std::string body;
    std::optional<std::string> retryAfter; // the header's value as it came
    std::string problem;                   // never holds a header
};

// Sends requests over the network. Main thread only. Nothing is cached or kept on disk, no cookie
// is sent twice, TLS is always verified. A request ends 15 seconds after the last byte that moved,
// and 120 seconds after its start in any case. A redirect is followed, to http and https alone, 20
// times at most; the token goes along only as RedirectPolicy says.
class HttpTransport {
public:
    static constexpr std::size_t maxBodySize = std::size_t{4} * 1024 * 1024;

    virtual ~HttpTransport() = default;
    [[nodiscard]] virtual Task<HttpAnswer> get(HttpRequest request) = 0;
};

} // namespace vellumor
