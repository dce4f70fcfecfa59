// A listener sends any bytes for an answer: the first text, then the rest, which comes as often as
// the input's size says. Runs in a network of its own: a redirect may lead to any local port.

#include "scan/http/CurlHttpClient.h"
#include "scan/http/HttpProbe.h"
#include "tests/fuzz/Fuzz.h"

#include <array>
#include <mutex>
#include <thread>

#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace tidewick;

namespace
{

/// Reads a request, or what else comes first, sends the answer of now and closes; for ever.
class Server
{
public:
    Server()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        const auto *const generic = reinterpret_cast<const sockaddr *>(&address);
        promise(bind(m_listener, generic, sizeof address) == 0 && listen(m_listener, 64) == 0,
                "a network of its own has a free port");
        std::thread([this] { serve(); }).detach();
    }

    static constexpr uint16_t port = 3000;

    void setAnswer(const QByteArray &answer)
    {
        const std::lock_guard lock(m_mutex);
        m_answer = answer;
    }

private:
    QByteArray answer()
    {
        const std::lock_guard lock(m_mutex);
        return m_answer;
    }

    void serve()
    {
        std::array<char, 4096> request;
        for (;;) {
            const int client = accept(m_listener, nullptr, nullptr);
            const QByteArray bytes = answer();
            ssize_t sent = recv(client, request.data(), request.size(), 0) > 0 ? 0 : -1;
            for (qsizetype at = 0; sent >= 0 && at < bytes.size(); at += sent)
                sent =
                    send(client, bytes.constData() + at, size_t(bytes.size() - at), MSG_NOSIGNAL);
            close(client);
        }
    }

    int m_listener = socket(AF_INET, SOCK_STREAM, 0);
    std::mutex m_mutex;
    QByteArray m_answer;
};

bool leaveForAnotherNetwork()
{
    if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    ifreq link{};
    link.ifr_flags = IFF_UP;
    link.ifr_name[0] = 'l';
    link.ifr_name[1] = 'o';
    const int control = socket(AF_INET, SOCK_DGRAM, 0);
    const bool isUp = ioctl(control, SIOCSIFFLAGS, &link) == 0;
    close(control);
    return isUp;
}

void check(const HttpOutcome &outcome)
{
    if (const auto *const error = std::get_if<HttpError>(&outcome))
        promise(error->code < 0, "an error has a code");
    const auto *const response = std::get_if<HttpResponse>(&outcome);
    if (response == nullptr)
        return;
    promise(response->status >= 200 || response->status == 101, "an interim response is no answer");
    promise(response->body.size() <= HttpResponse::bodyLimit, "a body has its limit");
    for (const char *const name : {"Server", "Location", "Content-Type"}) {
        const auto value = response->headers.value(name);
        promise(!value || isSingleLine(*value), "a header is one line");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*count*/, char *** /*arguments*/)
{
    promise(leaveForAnotherNetwork(), "a network of its own can be had");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Server server;
    static const CurlHttpClient client;
    const QByteArray bytes = bytesOf(data, size);
    const qsizetype separator = bytes.indexOf('\0');
    server.setAnswer(separator < 0
                         ? bytes
                         : bytes.first(separator) +
                               bytes.sliced(separator + 1).repeated(qsizetype(size % 128)));
    const char *const methods[] = {"GET", "HEAD", "OPTIONS"};
    TlsEvidence evidence;
    check(client.send({QStringLiteral("http://127.0.0.1:%1").arg(Server::port), methods[size % 3],
                       "Tidewick/1.0"},
                      evidence, {}));
    return 0;
}
