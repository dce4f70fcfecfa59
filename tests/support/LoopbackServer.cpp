#include "tests/support/LoopbackServer.h"

#include <chrono>
#include <stdexcept>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr int stepMs = 20;

/// Binds to a free port and listens; the port comes back in `port`.
int listenOnLoopback(LoopbackServer::Address family, int &port)
{
    sockaddr_storage address{};
    socklen_t size = 0;
    if (family == LoopbackServer::Address::ipv4) {
        auto &ipv4 = reinterpret_cast<sockaddr_in &>(address);
        ipv4.sin_family = AF_INET;
        ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        size = sizeof ipv4;
    } else {
        auto &ipv6 = reinterpret_cast<sockaddr_in6 &>(address);
        ipv6.sin6_family = AF_INET6;
        ipv6.sin6_addr = in6addr_loopback;
        size = sizeof ipv6;
    }
    const int listener = socket(address.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (bind(listener, generic, size) != 0 || listen(listener, 64) != 0 ||
        getsockname(listener, generic, &size) != 0)
        throw std::runtime_error("no free loopback port");
    // The port lies at the same place in both.
    port = ntohs(reinterpret_cast<sockaddr_in &>(address).sin_port);
    return listener;
}

/// The fourth and fifth byte of a record are the size of what follows.
bool isWholeHello(const QByteArray &head)
{
    return isHello(head) && head.size() >= 5 &&
           head.size() == 5 + (uchar(head[3]) << 8) + uchar(head[4]);
}

bool isReadable(int descriptor, int milliseconds)
{
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) > 0;
}

} // namespace

QByteArray LoopbackConnection::readHead()
{
    QByteArray head;
    char byte = 0;
    while (!m_stopping && !head.endsWith("\r\n\r\n") && !isWholeHello(head)) {
        if (!isReadable(m_descriptor, stepMs))
            continue;
        if (recv(m_descriptor, &byte, 1, 0) <= 0)
            break;
        head += byte;
    }
    return head;
}

bool LoopbackConnection::send(const QByteArray &bytes)
{
    qsizetype sent = 0;
    while (!m_stopping && sent < bytes.size()) {
        pollfd waiting{m_descriptor, POLLOUT, 0};
        if (poll(&waiting, 1, stepMs) == 0)
            continue;
        const ssize_t count = ::send(m_descriptor, bytes.constData() + sent,
                                     size_t(bytes.size() - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0)
            return false;
        sent += count;
    }
    return !m_stopping;
}

void LoopbackConnection::stopSending()
{
    shutdown(m_descriptor, SHUT_WR);
}

void LoopbackConnection::stopReceiving()
{
    shutdown(m_descriptor, SHUT_RD);
}

void LoopbackConnection::resetAtEnd()
{
    const linger atOnce{1, 0};
    setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

bool LoopbackConnection::pause(int milliseconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!m_stopping && !clientIsGone()) {
        const auto left = end - std::chrono::steady_clock::now();
        if (left.count() <= 0)
            return true;
        std::this_thread::sleep_for(
            std::min<std::chrono::nanoseconds>(left, std::chrono::milliseconds(stepMs)));
    }
    return false;
}

void LoopbackConnection::hold()
{
    while (pause(60'000)) {
    }
}

bool LoopbackConnection::clientIsGone() const
{
    pollfd waiting{m_descriptor, POLLRDHUP, 0};
    return poll(&waiting, 1, 0) > 0;
}

LoopbackServer::LoopbackServer(Behaviour behaviour, Address address)
    : m_behaviour(std::move(behaviour)),
      m_address(address),
      m_listener(listenOnLoopback(address, m_port)),
      m_acceptor([this] { accept(); })
{
}

LoopbackServer::~LoopbackServer()
{
    m_stopping = true;
    m_acceptor.join();
    close(m_listener);
    for (std::thread &connection : m_connections)
        connection.join();
}

QString LoopbackServer::url(const QString &path) const
{
    const QString host =
        m_address == Address::ipv4 ? QStringLiteral("127.0.0.1") : QStringLiteral("[::1]");
    return QStringLiteral("http://%1:%2").arg(host).arg(m_port) + path;
}

void LoopbackServer::accept()
{
    while (!m_stopping) {
        if (!isReadable(m_listener, stepMs))
            continue;
        const int descriptor = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0)
            continue;
        ++m_connectionCount;
        m_connections.emplace_back([this, descriptor] {
            LoopbackConnection connection(descriptor, m_stopping);
            m_behaviour(connection);
            close(descriptor);
        });
    }
}

bool isHello(const QByteArray &head)
{
    return head.startsWith("\x16\x03");
}

LoopbackServer::Behaviour answering(const QByteArray &bytes)
{
    return [bytes](LoopbackConnection &connection) {
        connection.readHead();
        connection.send(bytes);
    };
}

void RequestLog::add(const QByteArray &head)
{
    const std::lock_guard lock(m_mutex);
    m_heads.push_back(head);
}

std::vector<QByteArray> RequestLog::heads() const
{
    const std::lock_guard lock(m_mutex);
    return m_heads;
}
