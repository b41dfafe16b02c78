#include "platform/linux/QtHttpTransport.h"

#include "base/Text.h"
#include "platform/linux/BearerHeader.h"
#include "platform/linux/HttpRoute.h"

#include <QCoroNetworkReply>
#include <QDeadlineTimer>
#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace vellumor {

namespace {

HttpAnswer failure(std::string problem)
{
    HttpAnswer answer;
    answer.problem = std::move(problem);
    return answer;
}

QByteArray bytesOf(std::string_view text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

using Headers = std::vector<std::pair<std::string, std::string>>;

QNetworkRequest plainRequest(const QUrl& url, const Headers& headers,
                             const QtHttpTransport::Options& options)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // One small answer every few minutes gains nothing by it.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Qt's own measure against bombs ends in another error; ours is the limit of the body.
    request.setDecompressedSafetyCheckThreshold(-1);
    if (options.tls)
        request.setSslConfiguration(*options.tls);
    for (const auto& [name, value] : headers)
        request.setRawHeader(bytesOf(name), bytesOf(value));
    return request;
}

// A body that can be sent but once: Qt would send a POST again when the connection is closed
// without an answer, and what it tells would count twice.
class OnceOnly final : public QIODevice {
public:
    explicit OnceOnly(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    [[nodiscard]] qint64 size() const override { return m_bytes.size(); }
    bool reset() override { return false; }

protected:
    qint64 readData(char* into, qint64 most) override
    {
        const qint64 count = std::min(most, m_bytes.size() - m_taken);
        std::copy_n(m_bytes.constData() + m_taken, count, into);
        m_taken += count;
        return count > 0 || most == 0 ? count : -1;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_taken = 0;
};

QNetworkReply* posted(QNetworkAccessManager& manager, const QNetworkRequest& request,
                      std::string_view body)
{
    auto bytes = std::make_unique<OnceOnly>(bytesOf(body));
    QNetworkReply* reply = manager.post(request, bytes.get());
    bytes.release()->setParent(reply);
    return reply;
}

// One request and its answer, kept until the answer has ended. Breaks it off by itself at a limit.
class Hop {
public:
    Hop(QNetworkAccessManager& manager, const HttpRoute& route, const HttpRequest& asked,
        const QtHttpTransport::Options& options, QDeadlineTimer deadline)
        : m_options(options)
        , m_bearer(route.carriesToken() ? asked.bearer.view() : std::string_view())
    {
        QNetworkRequest request = plainRequest(route.url(), asked.headers, options);
        if (route.carriesToken())
            request.setRawHeader("Authorization", m_bearer.value());
        m_reply.reset(manager.get(request));
        watchTime(deadline);
        watchReply();
    }
    Hop(QNetworkAccessManager& manager, const HttpRoute& route, const HttpPost& asked,
        const QtHttpTransport::Options& options, QDeadlineTimer deadline)
        : m_options(options)
        , m_bearer({})
        , m_reply(posted(manager, plainRequest(route.url(), asked.headers, options), asked.body))
    {
        watchTime(deadline);
        watchReply();
    }
    Hop(const Hop&) = delete;
    Hop& operator=(const Hop&) = delete;
    ~Hop()
    {
        if (m_reply->error() == QNetworkReply::OperationCanceledError)
            m_bearer.leave();
    }

    // To be awaited before the rest is asked.
    [[nodiscard]] QNetworkReply* reply() const { return m_reply.get(); }

    // Where the answer sends the request; nothing when it does not.
    [[nodiscard]] std::optional<QByteArray> location() const
    {
        constexpr std::array redirects{301, 302, 303, 307, 308};
        const QByteArray location = m_reply->rawHeader("Location");
        if (std::ranges::find(redirects, status()) == redirects.end() || location.isEmpty())
            return std::nullopt;
        return location;
    }

    [[nodiscard]] HttpAnswer answer()
    {
        take(); // what came with the end
        if (m_end == End::tooLarge) {
            HttpAnswer answer = failure("the answer is too large");
            answer.kind = HttpAnswer::Kind::tooLarge;
            answer.status = status();
            return answer;
        }
        return isWhole() ? wholeAnswer() : failure(problem());
    }

private:
    enum class End { itself, idle, total, tooLarge };
    struct Later {
        void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
    };
    using Seconds = std::chrono::duration<double>;

    void watchTime(QDeadlineTimer deadline)
    {
        QObject::connect(&m_idle, &QTimer::timeout, &m_idle, [this] { breakOff(End::idle); });
        QObject::connect(&m_total, &QTimer::timeout, &m_total, [this] { breakOff(End::total); });
        m_total.setSingleShot(true);
        m_total.start(std::chrono::milliseconds(deadline.remainingTime()));
        m_idle.setSingleShot(true);
        m_idle.start(m_options.idleLimit);
    }

    void watchReply()
    {
        const auto moved = [this] { m_idle.start(); };
        QObject::connect(m_reply.get(), &QNetworkReply::requestSent, &m_idle, moved);
        QObject::connect(m_reply.get(), &QNetworkReply::uploadProgress, &m_idle, moved);
        QObject::connect(m_reply.get(), &QNetworkReply::encrypted, &m_idle, moved);
        QObject::connect(m_reply.get(), &QNetworkReply::metaDataChanged, &m_idle, moved);
        QObject::connect(m_reply.get(), &QNetworkReply::readyRead, &m_idle, [this] {
            m_idle.start();
            take();
        });
    }

    void take()
    {
        std::array<char, 16384> piece;
        while (m_end == End::itself && m_reply->isOpen()) {
            const qint64 count = m_reply->read(piece.data(), static_cast<qint64>(piece.size()));
            if (count <= 0)
                return;
            if (m_body.size() + static_cast<std::size_t>(count) > HttpTransport::maxBodySize)
                breakOff(End::tooLarge);
            else
                m_body.append(piece.data(), static_cast<std::size_t>(count));
        }
    }

    // In the next turn of the loop: the waiter goes on inside abort(), and would otherwise destroy
    // the timer that calls this.
    void breakOff(End why)
    {
        if (m_end != End::itself)
            return;
        m_end = why;
        m_body = std::string();
        QMetaObject::invokeMethod(m_reply.get(), &QNetworkReply::abort, Qt::QueuedConnection);
    }

    [[nodiscard]] int status() const
    {
        const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        return status.isValid() ? status.toInt() : -1;
    }

    // Qt calls a status of 400 and more an error of its own, beside those of the network.
    [[nodiscard]] bool isWhole() const
    {
        if (m_end != End::itself || status() < 0)
            return false;
        const QNetworkReply::NetworkError error = m_reply->error();
        const bool isOfStatus = error == QNetworkReply::ProxyAuthenticationRequiredError ||
                                (error >= QNetworkReply::ContentAccessDenied &&
                                 error != QNetworkReply::ProtocolFailure);
        return error == QNetworkReply::NoError || (status() >= 400 && isOfStatus);
    }

    [[nodiscard]] HttpAnswer wholeAnswer()
    {
        HttpAnswer answer;
        answer.kind = HttpAnswer::Kind::answered;
        answer.status = status();
        answer.body = std::move(m_body);
        if (m_reply->hasRawHeader("Retry-After"))
            answer.retryAfter = m_reply->rawHeader("Retry-After").toStdString();
        return answer;
    }

    [[nodiscard]] std::string problem() const
    {
        if (m_end == End::idle)
            return fmt::format("no data for {:g} seconds", Seconds(m_options.idleLimit).count());
        if (m_end == End::total)
            return fmt::format("no whole answer within {:g} seconds",
                               Seconds(m_options.totalLimit).count());
        if (m_reply->error() == QNetworkReply::NoError)
            return "no HTTP answer";
        return Text::printable(m_reply->errorString().toStdString());
    }

    const QtHttpTransport::Options& m_options;
    BearerHeader m_bearer;
    std::unique_ptr<QNetworkReply, Later> m_reply;
    QTimer m_idle;
    QTimer m_total;
    End m_end = End::itself;
    std::string m_body;
};

// A free coroutine: it holds nothing of the transport but the manager, and looks whether that is
// still there.
Task<HttpAnswer> exchange(QPointer<QNetworkAccessManager> manager, QtHttpTransport::Options options,
                          HttpRequest request)
{
    const QDeadlineTimer deadline(options.totalLimit);
    const bool hasToken = !request.bearer.view().empty();
    if (hasToken && !BearerHeader::isSendable(request.bearer.view()))
        co_return failure("the token holds characters that cannot be sent");
    HttpRoute route(request.url, hasToken);
    if (!route.canBeAsked())
        co_return failure("the address is not one of http or https");
    for (int redirects = 0; manager != nullptr; ++redirects) {
        Hop hop(*manager, route, request, options, deadline);
        co_await hop.reply();
        HttpAnswer answer = hop.answer();
        const std::optional<QByteArray> location = hop.location();
        const bool isRefused = options.redirects == QtHttpTransport::Redirects::refuse;
        if (answer.kind != HttpAnswer::Kind::answered || !location || isRefused)
            co_return answer;
        if (redirects == QtHttpTransport::maxRedirects)
            co_return failure("too many redirects");
        route.follow(*location);
        if (!route.canBeAsked())
            co_return failure("redirected to an address that is not one of http or https");
    }
    co_return failure("the program is ending");
}

// Once, wherever the answer may point.
Task<HttpAnswer> send(QNetworkAccessManager& manager, QtHttpTransport::Options options,
                      HttpPost request)
{
    const HttpRoute route(request.url, false);
    if (!route.canBeAsked())
        co_return failure("the address is not one of http or https");
    Hop hop(manager, route, request, options, QDeadlineTimer(options.totalLimit));
    co_await hop.reply();
    co_return hop.answer();
}

} // namespace

QtHttpTransport::QtHttpTransport()
    : QtHttpTransport(Options())
{
}

QtHttpTransport::QtHttpTransport(Options options)
    : m_options(std::move(options))
{
}

// A reply that goes with its manager would never finish, and its waiter never go on.
QtHttpTransport::~QtHttpTransport()
{
    if (!m_manager)
        return;
    for (QNetworkReply* reply : m_manager->findChildren<QNetworkReply*>())
        reply->abort();
}

Task<HttpAnswer> QtHttpTransport::get(HttpRequest request)
{
    return exchange(&manager(), m_options, std::move(request));
}

Task<HttpAnswer> QtHttpTransport::post(HttpPost request)
{
    return send(manager(), m_options, std::move(request));
}

QNetworkAccessManager& QtHttpTransport::manager()
{
    if (!m_manager)
        m_manager = std::make_unique<QNetworkAccessManager>();
    return *m_manager;
}

} // namespace vellumor
