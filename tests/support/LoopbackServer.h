#pragma once

#include <QSslConfiguration>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vellumor::test {

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

// A request as it came in.
struct SeenRequest {
    std::string method;
    std::string path; // the request's target, with its query
    HttpHeaders headers;
    std::string body;

    // The first header of that name, in any letter case.
    [[nodiscard]] std::optional<std::string> header(std::string_view name) const;
};

// What the server does with a request. An ordinary answer states its length and leaves the
// connection open.
struct Answer {
    int status = 200;
    HttpHeaders headers;
    std::string body;
};
// The head of `answer`, and then nothing for ever.
struct StallAfterHead {
    Answer answer;
};
// Nothing at all, for ever.
struct Silence {};
// `answer`, of which the body comes in pieces of `count` bytes.
struct Drip {
    Answer answer;
    std::size_t count = 1;
    std::chrono::milliseconds every{100};
};
// A body of `size` bytes with their length in the head, made while it is taken.
struct Flood {
    std::uint64_t size = 50ULL * 1024 * 1024;
};
// The connection is reset.
struct Reset {};
// These bytes as they are, maybe none; then the connection is closed.
struct RawBytes {
    std::string bytes;
};

using Reaction = std::variant<Answer, StallAfterHead, Silence, Drip, Flood, Reset, RawBytes>;

// An HTTP/1.1 server on 127.0.0.1 that does what a test tells it, from the event loop of its
// thread. With a TLS configuration it speaks https; TestAuthority makes one.
class LoopbackServer {
public:
    using Handler = std::function<Reaction(const SeenRequest&)>;

    // A port of 0 takes a free one. Throws std::runtime_error when it cannot listen.
    explicit LoopbackServer(Handler handler, std::optional<QSslConfiguration> tls = std::nullopt,
                            std::uint16_t port = 0);
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer();

    [[nodiscard]] std::uint16_t port() const;
    // The address of `path`; `host` is another name of 127.0.0.1.
    [[nodiscard]] std::string url(std::string_view path = "/",
                                  std::string_view host = "127.0.0.1") const;

    // Every whole request, in the order of arrival.
    [[nodiscard]] const std::vector<SeenRequest>& requests() const;
    // How many of them bore this token.
    [[nodiscard]] std::size_t requestsWith(const std::string& token) const;
    // Connections that were accepted, whether or not they came to a request.
    [[nodiscard]] int connections() const;
    // The bytes of bodies handed to the system so far.
    [[nodiscard]] std::uint64_t bodyBytesTaken() const;

private:
    class Acceptor;
    class Connection;

    std::unique_ptr<Acceptor> m_acceptor;
};

} // namespace vellumor::test
