#include "support/LoopbackServer.h"

#include <QByteArray>
#include <QHostAddress>
#include <QSslSocket>
#include <QTcpServer>
#include <QTimer>

#include <sys/socket.h>

#include <algorithm>
#include <stdexcept>

namespace vellumor::test {

namespace {

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameName(std::string_view one, std::string_view other)
{
    return std::ranges::equal(one, other, {}, lowered, lowered);
}

std::string headOf(const Answer& answer, std::uint64_t length)
{
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n";
    for (const auto& [name, value] : answer.headers)
        head += name + ": " + value + "\r\n";
    if (answer.status != 204 && answer.status != 304)
        head += "Content-Length: " + std::to_string(length) + "\r\n";
    return head + "\r\n";
}

// Takes one whole request off the front of `bytes`; nothing while it is not complete.
std::optional<SeenRequest> takeRequest(std::string& bytes)
{
    const std::size_t headEnd = bytes.find("\r\n\r\n");
    if (headEnd == std::string::npos)
        return std::nullopt;
    SeenRequest request;
    const std::string head = bytes.substr(0, headEnd + 2);
    std::size_t at = head.find("\r\n") + 2;
    const std::string first = head.substr(0, at - 2);
    const std::size_t blank = first.find(' ');
    request.method = first.substr(0, blank);
    request.path = first.substr(blank + 1, first.rfind(' ') - blank - 1);
    while (at < head.size()) {
        const std::size_t end = head.find("\r\n", at);
        const std::string line = head.substr(at, end - at);
        const std::size_t colon = line.find(':');
        const std::size_t value = line.find_first_not_of(' ', colon + 1);
        request.headers.emplace_back(line.substr(0, colon),
                                     value == std::string::npos ? "" : line.substr(value));
        at = end + 2;
    }
    const std::size_t length = std::stoul(request.header("Content-Length").value_or("0"));
    if (bytes.size() < headEnd + 4 + length)
        return std::nullopt;
    request.body = bytes.substr(headEnd + 4, length);
    bytes.erase(0, headEnd + 4 + length);
    return request;
}

} // namespace

std::optional<std::string> SeenRequest::header(std::string_view name) const
{
    for (const auto& [key, value] : headers) {
        if (isSameName(key, name))
            return value;
    }
    return std::nullopt;
}

class LoopbackServer::Acceptor final : public QTcpServer {
public:
    Acceptor(Handler handler, std::optional<QSslConfiguration> tls)
        : m_handler(std::move(handler))
        , m_tls(std::move(tls))
    {
    }

    [[nodiscard]] Reaction react(SeenRequest request)
    {
        requests.push_back(std::move(request));
        return m_handler(SeenRequest(requests.back()));
    }
    [[nodiscard]] bool isSecure() const { return m_tls.has_value(); }

    std::vector<SeenRequest> requests;
    int connections = 0;
    std::uint64_t bodyBytesTaken = 0;

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    Handler m_handler;
    std::optional<QSslConfiguration> m_tls;
};

// One client. Belongs to the acceptor until the connection ends.
class LoopbackServer::Connection final : public QObject {
public:
    Connection(Acceptor& acceptor, qintptr descriptor, const std::optional<QSslConfiguration>& tls)
        : QObject(&acceptor)
        , m_acceptor(acceptor)
    {
        connect(&m_socket, &QSslSocket::readyRead, this, [this] { takeBytes(); });
        connect(&m_socket, &QSslSocket::disconnected, this, [this] { deleteLater(); });
        connect(&m_socket, &QSslSocket::bytesWritten, this, [this] { pour(); });
        connect(&m_socket, &QSslSocket::encryptedBytesWritten, this, [this] { pour(); });
        connect(&m_drip, &QTimer::timeout, this, [this] { dripOnce(); });
        m_socket.setSocketDescriptor(descriptor);
        if (tls) {
            m_socket.setSslConfiguration(*tls);
            m_socket.startServerEncryption();
        }
    }

private:
    void takeBytes()
    {
        m_received += m_socket.readAll().toStdString();
        while (!m_isBusy) {
            auto request = takeRequest(m_received);
            if (!request)
                return;
            m_isBusy = true;
            const Reaction reaction = m_acceptor.react(*std::move(request));
            std::visit([this](const auto& what) { act(what); }, reaction);
        }
    }

    void act(const Answer& answer)
    {
        send(headOf(answer, answer.body.size()));
        sendBody(answer.body);
        m_isBusy = false;
    }
    void act(const StallAfterHead& stall) { send(headOf(stall.answer, stall.answer.body.size())); }
    void act(const Silence&) {}
    void act(const Drip& drip)
    {
        send(headOf(drip.answer, drip.answer.body.size()));
        m_dripping = drip.answer.body;
        m_dripCount = drip.count;
        m_drip.start(drip.every);
    }
    void act(const Flood& flood)
    {
        send(headOf(Answer(), flood.size));
        m_toPour = flood.size;
        pour();
    }
    void act(const Reset&)
    {
        const linger atOnce{1, 0};
        ::setsockopt(static_cast<int>(m_socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
                     sizeof atOnce);
        m_socket.abort();
    }
    void act(const RawBytes& raw)
    {
        send(raw.bytes);
        m_socket.disconnectFromHost();
    }

    void send(std::string_view bytes)
    {
        m_socket.write(bytes.data(), static_cast<qint64>(bytes.size()));
    }
    void sendBody(std::string_view bytes)
    {
        send(bytes);
        m_acceptor.bodyBytesTaken += bytes.size();
    }

    void dripOnce()
    {
        sendBody(std::string_view(m_dripping).substr(0, m_dripCount));
        m_dripping.erase(0, m_dripCount);
        if (m_dripping.empty()) {
            m_drip.stop();
            m_isBusy = false;
            takeBytes();
        }
    }

    // No more than a piece waits in this process at a time.
    void pour()
    {
        constexpr std::uint64_t piece = 64 * 1024;
        while (m_toPour > 0 && m_socket.bytesToWrite() + m_socket.encryptedBytesToWrite() == 0) {
            const std::uint64_t count = std::min(piece, m_toPour);
            m_toPour -= count;
            sendBody(std::string(count, 'x'));
            m_isBusy = m_toPour > 0;
        }
    }

    Acceptor& m_acceptor;
    std::string m_received;
    bool m_isBusy = false; // with an answer; the next request waits
    QTimer m_drip;
    std::string m_dripping;
    std::size_t m_dripCount = 0;
    std::uint64_t m_toPour = 0;
    QSslSocket m_socket; // plain without a TLS configuration
};

void LoopbackServer::Acceptor::incomingConnection(qintptr descriptor)
{
    ++connections;
    std::make_unique<Connection>(*this, descriptor, m_tls).release(); // belongs to its parent
}

LoopbackServer::LoopbackServer(Handler handler, std::optional<QSslConfiguration> tls,
                               std::uint16_t port)
    : m_acceptor(std::make_unique<Acceptor>(std::move(handler), std::move(tls)))
{
    if (!m_acceptor->listen(QHostAddress::LocalHost, port))
        throw std::runtime_error("no server on 127.0.0.1: " +
                                 m_acceptor->errorString().toStdString());
}

LoopbackServer::~LoopbackServer() = default;

std::uint16_t LoopbackServer::port() const
{
    return m_acceptor->serverPort();
}

std::string LoopbackServer::url(std::string_view path, std::string_view host) const
{
    return std::string(m_acceptor->isSecure() ? "https" : "http") + "://" + std::string(host) +
           ":" + std::to_string(port()) + std::string(path);
}

const std::vector<SeenRequest>& LoopbackServer::requests() const
{
    return m_acceptor->requests;
}

std::size_t LoopbackServer::requestsWith(const std::string& token) const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(requests(), [bearer = "Bearer " + token](const SeenRequest& request) {
            return request.header("authorization") == bearer;
        }));
}

int LoopbackServer::connections() const
{
    return m_acceptor->connections;
}

std::uint64_t LoopbackServer::bodyBytesTaken() const
{
    return m_acceptor->bodyBytesTaken;
}

} // namespace vellumor::test
