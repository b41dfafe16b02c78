#pragma once

#include "platform/HttpTransport.h"

#include <string>
#include <utility>
#include <vector>

namespace vellumor {

// One POST. It carries no token.
struct HttpPost {
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
};

// Sends what the program tells of its own accord, each request once. As HttpTransport in all but
// this: a redirect is not followed, and comes back as an answer of its status or as a failure. Main
// thread only.
class HttpPoster {
public:
    virtual ~HttpPoster() = default;
    [[nodiscard]] virtual Task<HttpAnswer> post(HttpPost request) = 0;
};

} // namespace vellumor
