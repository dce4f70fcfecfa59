#include "scan/http/CurlHttpClient.h"

#include "scan/http/LoopbackHost.h"
#include "scan/http/LoopbackUrl.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <ctime>
#include <memory>
#include <optional>
#include <utility>

#include <curl/curl.h>
#include <sys/socket.h>

namespace tidewick
{
namespace
{

using Clock = std::chrono::steady_clock;

constexpr auto attemptTime = std::chrono::seconds(1);
/// What a TLS hello may take of it: ten times what it does take. A server that knows no TLS may
/// well wait in silence for the rest of what it takes for a request (Redis does).
constexpr auto helloTime = std::chrono::milliseconds(100);
constexpr int redirectLimit = 20;
/// Of one exchange, its interim responses included.
constexpr size_t headerLimit = size_t{256} * 1024;

template <auto cleanup>
struct Deleter
{
    template <class Handle>
    void operator()(Handle *handle) const
    {
        cleanup(handle);
    }
};
using EasyHandle = std::unique_ptr<CURL, Deleter<curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, Deleter<curl_multi_cleanup>>;

/// Keeps a write to a connection that is gone from ending the program, whichever TLS library it
/// happens in. The signal of such a write goes to the writing thread alone.
class BrokenPipeGuard
{
public:
    BrokenPipeGuard()
    {
        sigemptyset(&m_brokenPipe);
        sigaddset(&m_brokenPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_maskBefore);
    }
    ~BrokenPipeGuard()
    {
        if (sigismember(&m_maskBefore, SIGPIPE) == 0) {
            const timespec now{};
            sigtimedwait(&m_brokenPipe, nullptr, &now);
        }
        pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }
    Q_DISABLE_COPY_MOVE(BrokenPipeGuard)

private:
    sigset_t m_brokenPipe;
    sigset_t m_maskBefore;
};

curl_socket_t openLoopbackSocket(void * /*context*/, curlsocktype /*purpose*/,
                                 curl_sockaddr *address)
{
    if (!isLoopbackAddress(address->addr))
        return CURL_SOCKET_BAD;
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

bool isRedirect(int status)
{
    constexpr std::array statuses{301, 302, 303, 307, 308};
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

/// What comes back for one request, taken in by curl's callbacks. A callback that returns another
/// count than it was given ends the transfer.
class Answer
{
public:
    Answer(CURL *easy, LoopbackUrl url) : m_easy(easy), m_url(std::move(url))
    {
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &takeHeader);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &takeBody);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    }
    Q_DISABLE_COPY_MOVE(Answer)

    /// The headers of the response proper are all there.
    bool hasHead() const { return m_hasHead; }
    bool headersAreTooLong() const { return m_headerBytes > headerLimit; }
    /// The response is there, though the transfer was ended before its time.
    bool hasEnough() const { return m_hasHead && (isSwitch() || bodyIsFull()); }

    /// Where to go instead; nothing where this is the answer.
    const std::optional<LoopbackUrl> &redirect() const { return m_redirect; }
    HttpResponse takeResponse() { return std::move(m_response); }
    int status() const { return m_response.status; }

private:
    bool bodyIsFull() const { return m_response.body.size() == HttpResponse::bodyLimit; }
    /// The one interim status after which no HTTP follows (RFC 9110, section 15.2.2).
    bool isSwitch() const { return m_response.status == 101; }

    static size_t takeHeader(char *data, size_t size, size_t count, void *self)
    {
        const bool goOn = static_cast<Answer *>(self)->addHeader({data, qsizetype(size * count)});
        return goOn ? size * count : 0;
    }

    static size_t takeBody(char *data, size_t size, size_t count, void *self)
    {
        const bool goOn = static_cast<Answer *>(self)->addBody({data, qsizetype(size * count)});
        return goOn ? size * count : 0;
    }

    bool addHeader(QByteArrayView line)
    {
        m_headerBytes += size_t(line.size());
        if (headersAreTooLong())
            return false;
        if (m_hasHead)
            return true; // a trailer
        if (line == "\r\n" || line == "\n")
            return endHead();
        if (m_expectsStatusLine)
            m_response.headers = {};
        else
            m_response.headers.addLine(line);
        m_expectsStatusLine = false;
        return true;
    }

    bool endHead()
    {
        long status = 0;
        curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &status);
        m_response.status = int(status);
        m_expectsStatusLine = true;
        m_hasHead = status >= 200 || isSwitch();
        if (m_hasHead && isRedirect(int(status))) {
            const auto location = m_response.headers.value("Location");
            m_redirect = redirectTarget(m_url, location.value_or(QString()).toUtf8());
        }
        return !m_redirect && !isSwitch();
    }

    bool addBody(QByteArrayView bytes)
    {
        m_response.body +=
            bytes.first(std::min(bytes.size(), HttpResponse::bodyLimit - m_response.body.size()));
        return !bodyIsFull();
    }

    CURL *m_easy;
    LoopbackUrl m_url;
    HttpResponse m_response;
    std::optional<LoopbackUrl> m_redirect;
    size_t m_headerBytes = 0;
    bool m_expectsStatusLine = true;
    bool m_hasHead = false;
};

int errorCode(CURLcode code)
{
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return HttpError::timedOut;
    case CURLE_ABORTED_BY_CALLBACK:
        return HttpError::cancelled;
    case CURLE_COULDNT_CONNECT:
        return HttpError::cannotConnect;
    case CURLE_OK: // the connection ended within the headers
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
        return HttpError::connectionLost;
#if LIBCURL_VERSION_NUM >= 0x080600
    case CURLE_TOO_LARGE: // a limit of its own: the number of header lines
        return HttpError::headersTooLong;
#endif
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return HttpError::badServerResponse;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE: // nothing to verify against
        return HttpError::certificateUntrusted;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_USE_SSL_FAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
        return HttpError::secureConnectionFailed;
    default:
        return HttpError::unknown;
    }
}

/// How a TLS server's answer to a plain request looks: nothing, a reset, or no HTTP.
bool mayBeTls(CURLcode code)
{
    return code == CURLE_GOT_NOTHING || code == CURLE_RECV_ERROR ||
           code == CURLE_UNSUPPORTED_PROTOCOL;
}

/// One request with its redirects and its TLS hello, all within one second.
class Attempt
{
public:
    Attempt(const QByteArray &authorities, const std::stop_token &stop)
        : m_authorities(authorities), m_stop(stop), m_wakeWhenStopped(stop, Wake{m_multi.get()})
    {
    }

    HttpOutcome run(const HttpRequest &request)
    {
        std::optional<LoopbackUrl> url = loopbackUrl(request.url.toUtf8());
        if (!url)
            return HttpError{HttpError::unsupportedUrl};
        QByteArray method = request.method;
        for (int redirects = 0; redirects <= redirectLimit; ++redirects) {
            const EasyHandle easy = newRequest(*url, method, request.userAgent);
            Answer answer(easy.get(), *url);
            const CURLcode code = transfer(easy.get(), m_deadline);
            if (!answer.redirect())
                return outcome(answer, code, *url);
            if (answer.status() == 303 && method != "HEAD")
                method = "GET";
            url = answer.redirect();
        }
        return HttpError{HttpError::tooManyRedirects};
    }

private:
    struct Wake
    {
        CURLM *multi;
        void operator()() const { curl_multi_wakeup(multi); }
    };

    EasyHandle newHandle(const LoopbackUrl &url) const
    {
        EasyHandle easy(curl_easy_init());
        curl_easy_setopt(easy.get(), CURLOPT_URL, url.text().constData());
        curl_easy_setopt(easy.get(), CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(easy.get(), CURLOPT_PROXY, "");
        curl_easy_setopt(easy.get(), CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(easy.get(), CURLOPT_OPENSOCKETFUNCTION, &openLoopbackSocket);
        if (!m_authorities.isEmpty()) {
            curl_easy_setopt(easy.get(), CURLOPT_CAINFO, m_authorities.constData());
            curl_easy_setopt(easy.get(), CURLOPT_CAPATH, nullptr);
        }
        return easy;
    }

    EasyHandle newRequest(const LoopbackUrl &url, const QByteArray &method,
                          const QByteArray &userAgent) const
    {
        EasyHandle easy = newHandle(url);
        curl_easy_setopt(easy.get(), CURLOPT_HTTP09_ALLOWED, 0L);
        if (method == "HEAD")
            curl_easy_setopt(easy.get(), CURLOPT_NOBODY, 1L);
        else
            curl_easy_setopt(easy.get(), CURLOPT_CUSTOMREQUEST, method.constData());
        if (!userAgent.isEmpty())
            curl_easy_setopt(easy.get(), CURLOPT_USERAGENT, userAgent.constData());
        return easy;
    }

    HttpOutcome outcome(Answer &answer, CURLcode code, const LoopbackUrl &url)
    {
        if (answer.headersAreTooLong())
            return HttpError{HttpError::headersTooLong};
        if ((answer.hasHead() && code == CURLE_OK) || answer.hasEnough())
            return answer.takeResponse();
        if (!url.isTls && !answer.hasHead() && mayBeTls(code) && speaksTls(url))
            return HttpError{HttpError::secureConnectionFailed};
        return HttpError{m_stop.stop_requested() ? HttpError::cancelled : errorCode(code)};
    }

    /// Says hello and no more: sends no request, and takes any certificate.
    bool speaksTls(LoopbackUrl url)
    {
        url.isTls = true;
        const EasyHandle easy = newHandle(url);
        curl_easy_setopt(easy.get(), CURLOPT_CONNECT_ONLY, 1L);
        curl_easy_setopt(easy.get(), CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(easy.get(), CURLOPT_SSL_VERIFYHOST, 0L);
        return transfer(easy.get(), std::min(m_deadline, Clock::now() + helloTime)) == CURLE_OK;
    }

    CURLcode transfer(CURL *easy, Clock::time_point deadline)
    {
        curl_multi_add_handle(m_multi.get(), easy);
        const CURLcode code = waitForEnd(deadline);
        curl_multi_remove_handle(m_multi.get(), easy);
        return code;
    }

    /// Until the transfer has ended, its time is up or a stop is requested.
    CURLcode waitForEnd(Clock::time_point deadline)
    {
        while (!m_stop.stop_requested()) {
            int running = 0;
            curl_multi_perform(m_multi.get(), &running);
            if (running == 0)
                return result();
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0)
                return CURLE_OPERATION_TIMEDOUT;
            curl_multi_poll(m_multi.get(), nullptr, 0, int(left), nullptr);
        }
        return CURLE_ABORTED_BY_CALLBACK;
    }

    CURLcode result()
    {
        int others = 0;
        const CURLMsg *message = curl_multi_info_read(m_multi.get(), &others);
        return message == nullptr ? CURLE_FAILED_INIT : message->data.result;
    }

    const QByteArray &m_authorities;
    const std::stop_token &m_stop;
    const Clock::time_point m_deadline = Clock::now() + attemptTime;
    const MultiHandle m_multi{curl_multi_init()};
    const std::stop_callback<Wake> m_wakeWhenStopped;
};

} // namespace

CurlHttpClient::CurlHttpClient(const QString &authorities)
    : m_authorities(QFile::encodeName(authorities))
{
}

HttpOutcome CurlHttpClient::send(const HttpRequest &request, const std::stop_token &stop) const
{
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK)
        return HttpError{};
    const BrokenPipeGuard guard;
    return Attempt(m_authorities, stop).run(request);
}

} // namespace tidewick
