#pragma once

#include "platform/HttpPoster.h"
#include "platform/HttpTransport.h"

#include <QSslConfiguration>

#include <chrono>
#include <memory>
#include <optional>

class QNetworkAccessManager;

namespace vellumor {

// HttpTransport and HttpPoster on Qt Network, over HTTP/1.1. Main thread only. When it goes away,
// every request under way ends as a transport failure first, and so its waiter goes on inside the
// destructor.
//
// An empty bearer sends no Authorization header; one with anything but visible ASCII in it is
// refused before a connection is made. The system's proxies are used, but not for this machine
// itself.
//
// What Qt does: it tells of an answer's head only when that is complete, so that the head counts as
// one piece for the idle limit. It sends a GET once more by itself when the peer closes the
// connection without an answer, and is kept from doing that to a POST. It may take the end of the
// connection for the end of an answer in chunks: who reads the body must tell a part from the
// whole.
class QtHttpTransport final : public HttpTransport, public HttpPoster {
public:
    enum class Redirects {
        follow,
        refuse, // what points elsewhere is the answer
    };
    struct Options {
        std::chrono::milliseconds idleLimit = std::chrono::seconds(15); // without a byte that moved
        std::chrono::milliseconds totalLimit = std::chrono::seconds(120); // with all redirects
        std::optional<QSslConfiguration> tls;                             // none: Qt's default
        Redirects redirects = Redirects::follow;                          // of a GET
    };
    static constexpr int maxRedirects = 20;

    QtHttpTransport();
    explicit QtHttpTransport(Options options);
    QtHttpTransport(const QtHttpTransport&) = delete;
    QtHttpTransport& operator=(const QtHttpTransport&) = delete;
    ~QtHttpTransport() override;

    [[nodiscard]] Task<HttpAnswer> get(HttpRequest request) override;
    [[nodiscard]] Task<HttpAnswer> post(HttpPost request) override;

private:
    [[nodiscard]] QNetworkAccessManager& manager();

    Options m_options;
    std::unique_ptr<QNetworkAccessManager>
        m_manager; // made by the first request: it costs a thread
};

} // namespace vellumor
