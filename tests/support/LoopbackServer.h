#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// One accepted connection, as the behaviour of a LoopbackServer sees it.
class LoopbackConnection
{
public:
    LoopbackConnection(int descriptor, const std::atomic<bool> &stopping)
        : m_descriptor(descriptor), m_stopping(stopping)
    {
    }

    /// Everything up to the empty line, or the first record of a TLS hello; what came where the
    /// client ends before that.
    QByteArray readHead();
    /// False once the client is gone.
    bool send(const QByteArray &bytes);
    void stopSending();
    void stopReceiving();
    /// The end of the behaviour then sends a reset.
    void resetAtEnd();
    /// Waits; false where the client or the server has ended meanwhile.
    bool pause(int milliseconds);
    /// Waits for as long as client and server live.
    void hold();

private:
    bool clientIsGone() const;

    int m_descriptor;
    const std::atomic<bool> &m_stopping;
};

/// A server on a free port of one loopback address. Each connection is served by `behaviour` in a
/// thread of its own and closed at the end of it. The destructor ends them all.
class LoopbackServer
{
public:
    using Behaviour = std::function<void(LoopbackConnection &)>;
    enum class Address { ipv4, ipv6 };

    explicit LoopbackServer(Behaviour behaviour, Address address = Address::ipv4);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    int port() const { return m_port; }
    /// "http://127.0.0.1:PORT" with `path`.
    QString url(const QString &path = {}) const;
    int connectionCount() const { return m_connectionCount; }

private:
    void accept();

    Behaviour m_behaviour;
    Address m_address;
    int m_port = 0;
    int m_listener;
    std::atomic<bool> m_stopping = false;
    std::atomic<int> m_connectionCount = 0;
    std::vector<std::thread> m_connections;
    std::thread m_acceptor;
};

/// Whether `head` is a TLS hello.
bool isHello(const QByteArray &head);

/// Reads one request, then sends `bytes` and closes.
LoopbackServer::Behaviour answering(const QByteArray &bytes);

/// Every head that came in, for a test to read while the server runs.
class RequestLog
{
public:
    void add(const QByteArray &head);
    std::vector<QByteArray> heads() const;

private:
    mutable std::mutex m_mutex;
    std::vector<QByteArray> m_heads;
};
