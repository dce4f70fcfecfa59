// The probe against servers as developers run them.

#include "scan/http/CurlHttpClient.h"
#include "scan/http/HttpProbe.h"
#include "tests/support/Databases.h"
#include "tests/support/Duration.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ProbeText.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

using tidewick::CurlHttpClient;
using tidewick::HttpError;
using tidewick::HttpOutcome;
using tidewick::probeHttpService;
using tidewick::ProbeResult;
using tidewick::TlsEvidence;

namespace
{

const ProbeResult nothing{false, std::nullopt, std::nullopt};
const ProbeResult reachable{true, std::nullopt, std::nullopt};
const ProbeResult https{true, std::nullopt, QStringLiteral("HTTPS")};

class RealServers : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_directory.isValid());
        giveToOrdinaryUser(m_directory.path());
    }

    QString path(const char *name) const { return m_directory.filePath(QString::fromLatin1(name)); }

    void write(const char *name, const QByteArray &text) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(text);
    }

    /// What the program prints, to either output.
    static QString output(const char *program, const char *arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(findProgram(QString::fromLatin1(program)), words(arguments));
        process.waitForFinished();
        return QString::fromUtf8(process.readAll()).trimmed();
    }

    /// Starts the program in the directory of the test; PORT stands for the port. False where it
    /// does not come up.
    bool start(const char *program, const char *arguments)
    {
        if (port == 0)
            port = freePort();
        const QStringList list =
            words(arguments).replaceInStrings(QStringLiteral("PORT"), QString::number(port));
        m_server = std::make_unique<ServerProgram>(findProgram(QString::fromLatin1(program)), list,
                                                   m_directory.path(), port);
        return isUp();
    }

    /// The same for one of Databases.h.
    bool start(std::unique_ptr<ServerProgram> (*database)(const QString &, int))
    {
        port = freePort();
        m_server = database(m_directory.path(), port);
        return m_server != nullptr && isUp();
    }

    bool startNginx(const QByteArray &server)
    {
        port = freePort();
        write("nginx.conf", "daemon off; master_process off; pid nginx.pid; error_log stderr;\n"
                            "events {}\n"
                            "http { access_log off; client_body_temp_path b; proxy_temp_path p;\n"
                            "fastcgi_temp_path f; uwsgi_temp_path u; scgi_temp_path s;\n"
                            "server { listen 127.0.0.1:" +
                                QByteArray::number(port) + server + " } }\n");
        return start("nginx", "-p . -c nginx.conf -e stderr");
    }

    ProbeResult probe(const CurlHttpClient &client = CurlHttpClient()) const
    {
        return probeHttpService(port, client, {});
    }

    /// The error's code; 0 where there was an answer.
    int errorOf(const char *scheme, const QByteArray &method,
                const CurlHttpClient &client = CurlHttpClient()) const
    {
        const QString url =
            QStringLiteral("%1://127.0.0.1:%2").arg(QString::fromLatin1(scheme)).arg(port);
        TlsEvidence evidence;
        const HttpOutcome outcome = client.send({url, method, {}}, evidence, {});
        const auto *error = std::get_if<HttpError>(&outcome);
        return error == nullptr ? 0 : error->code;
    }

    /// A certificate authority in ca.pem; server.pem and server.key, which it has signed for
    /// `names`: all of this machine, unless others are given.
    bool makeCertificates(const QByteArray &names = "DNS:localhost,IP:127.0.0.1,IP:::1")
    {
        return openssl("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=authority "
                       "-keyout ca.key -out ca.pem") &&
               openssl("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost "
                       "-CA ca.pem -CAkey ca.key -keyout server.key -out server.pem "
                       "-addext basicConstraints=critical,CA:FALSE "
                       "-addext subjectAltName=" +
                       names);
    }

    CurlHttpClient trustingClient() const { return CurlHttpClient(path("ca.pem")); }

    ServerProgram &server() { return *m_server; }

    int port = 0;

private:
    static QStringList words(const char *text)
    {
        return QString::fromLatin1(text).split(QLatin1Char(' '));
    }

    bool isUp()
    {
        EXPECT_TRUE(m_server->isUp()) << m_server->output().toStdString();
        return m_server->isUp();
    }

    bool openssl(const QByteArray &arguments) const
    {
        return runAsOrdinaryUser(findProgram(QStringLiteral("openssl")),
                                 words(arguments.constData()), m_directory.path());
    }

    QTemporaryDir m_directory;
    std::unique_ptr<ServerProgram> m_server;
};

/// How many bytes this thread has read from files since its start, proc(5).
qint64 bytesRead()
{
    QFile counts(QStringLiteral("/proc/thread-self/io"));
    EXPECT_TRUE(counts.open(QIODevice::ReadOnly));
    return counts.readLine().split(' ').value(1).trimmed().toLongLong();
}

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): FAIL returns from the test
#define NEEDS(program)                                                                             \
    if (findProgram(QStringLiteral(program)).isEmpty())                                            \
    FAIL() << program " is missing; scripts/setup and scripts/unpack-servers install it"

const char *const nodePage = R"(
require('http').createServer((request, response) => {
    response.end('<script type="module" src="/@vite/client"></script>');
}).listen(Number(process.argv[2]), '127.0.0.1');
)";

const char *const nodeTls = R"(
const fs = require('fs');
const options = {key: fs.readFileSync('server.key'), cert: fs.readFileSync('server.pem')};
require('https').createServer(options, (request, response) => {
    console.log(`${request.method} ${request.url} ${request.headers['user-agent']}`);
    response.end();
}).listen(Number(process.argv[2]), '127.0.0.1');
)";

const char *const nodeHttp2 = R"(
const fs = require('fs');
const options = {key: fs.readFileSync('server.key'), cert: fs.readFileSync('server.pem')};
require('http2').createSecureServer(options, (request, response) => {
    response.end();
}).listen(Number(process.argv[2]), '127.0.0.1');
)";

/// Its handshake takes so many milliseconds, in a callback that others wait for.
const char *const slowNodeTls = R"(
const fs = require('fs');
const options = {key: fs.readFileSync('server.key'), cert: fs.readFileSync('server.pem')};
const context = require('tls').createSecureContext(options);
options.SNICallback = (name, done) => setTimeout(() => done(null, context), process.argv[3]);
require('https').createServer(options, (request, response) => {
    response.end();
}).listen(Number(process.argv[2]), '127.0.0.1');
)";

/// The same, in a thread that sleeps.
const char *const slowPythonTls = R"(
import http.server, ssl, sys, time
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain('server.pem', 'server.key')
context.sni_callback = lambda *ignored: time.sleep(int(sys.argv[2]) / 1000)
server = http.server.ThreadingHTTPServer(
    ('127.0.0.1', int(sys.argv[1])), http.server.SimpleHTTPRequestHandler)
server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
server.serve_forever()
)";

/// Ends each connection once its handshake is done.
const char *const closingPythonTls = R"(
import socket, ssl, sys
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain('server.pem', 'server.key')
listener = socket.create_server(('127.0.0.1', int(sys.argv[1])))
while True:
    connection = listener.accept()[0]
    try:
        connection = context.wrap_socket(connection, server_side=True)
        connection.recv(4096)
        connection.unwrap()
    except OSError:
        pass
    connection.close()
)";

const char *const silentPython = R"(
import socket, sys
listener = socket.create_server(('127.0.0.1', int(sys.argv[1])))
connections = []
while True:
    connections.append(listener.accept())
    print('accepted', flush=True)
)";

const char *const pythonTls = R"(
import http.server, ssl, sys
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain('server.pem', 'server.key')
server = http.server.ThreadingHTTPServer(
    ('127.0.0.1', int(sys.argv[1])), http.server.SimpleHTTPRequestHandler)
server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
server.serve_forever()
)";

} // namespace

TEST_F(RealServers, pythonNamesItself)
{
    NEEDS("python3");
    ASSERT_TRUE(start("python3", "-m http.server --bind 127.0.0.1 PORT"));
    const QString version = output("python3", "--version").replace(u' ', u'/');
    EXPECT_EQ(probe(), (ProbeResult{true, 200, QStringLiteral("SimpleHTTP/0.6 ") + version}));
}

TEST_F(RealServers, pythonOnTheIpv6LoopbackAlone)
{
    NEEDS("python3");
    ASSERT_TRUE(start("python3", "-m http.server --bind ::1 PORT"));
    EXPECT_EQ(errorOf("http", "GET"), HttpError::cannotConnect);
    const QString version = output("python3", "--version").replace(u' ', u'/');
    EXPECT_EQ(probe(), (ProbeResult{true, 200, QStringLiteral("SimpleHTTP/0.6 ") + version}));
}

TEST_F(RealServers, nodeWithAPageOfVite)
{
    NEEDS("node");
    write("page.js", nodePage);
    ASSERT_TRUE(start("node", "page.js PORT"));
    EXPECT_EQ(probe(), (ProbeResult{true, 200, QStringLiteral("Vite")}));
}

TEST_F(RealServers, phpIsPoweredByItself)
{
    NEEDS("php");
    write("index.php", "<?php echo 'hello';");
    ASSERT_TRUE(start("php", "-n -S 127.0.0.1:PORT"));
    const QString version = output("php", "-n -r print(PHP_VERSION);");
    EXPECT_EQ(probe(), (ProbeResult{true, 200, QStringLiteral("PHP/") + version}));
}

TEST_F(RealServers, nginxWithA404)
{
    NEEDS("nginx");
    ASSERT_TRUE(startNginx("; return 404;"));
    const QString version = output("nginx", "-v").section(QStringLiteral(": "), 1);
    EXPECT_EQ(probe(), (ProbeResult{true, 404, version}));
}

TEST_F(RealServers, nginxWithTlsAnswersAPlainRequest)
{
    NEEDS("nginx");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    ASSERT_TRUE(startNginx(" ssl; ssl_certificate server.pem; ssl_certificate_key server.key;"));
    const QString version = output("nginx", "-v").section(QStringLiteral(": "), 1);
    EXPECT_EQ(probe(trustingClient()), (ProbeResult{true, 400, version}));
}

TEST_F(RealServers, nodeWithATrustedCertificate)
{
    NEEDS("node");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.js", nodeTls);
    ASSERT_TRUE(start("node", "tls.js PORT"));
    EXPECT_EQ(probe(trustingClient()), https);
    // The hello that came first has sent no request.
    EXPECT_EQ(server().output(), "HEAD / undefined\n");
}

TEST_F(RealServers, nodeWithAnUnknownCertificate)
{
    NEEDS("node");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.js", nodeTls);
    ASSERT_TRUE(start("node", "tls.js PORT"));
    EXPECT_EQ(errorOf("http", "GET"), HttpError::secureConnectionFailed);
    EXPECT_EQ(errorOf("https", "HEAD"), HttpError::certificateUntrusted);
    EXPECT_EQ(probe(), nothing);
    EXPECT_EQ(server().output(), "");
}

// They fill hundreds of kilobytes, and reading them takes longer than all else of a request.
TEST_F(RealServers, theSystemsAuthoritiesAreReadOnce)
{
    NEEDS("node");
    NEEDS("openssl");
    constexpr qint64 fewBytes = 100'000;
    ASSERT_TRUE(makeCertificates());
    write("tls.js", nodeTls);
    ASSERT_TRUE(start("node", "tls.js PORT"));
    const CurlHttpClient client;
    qint64 before = bytesRead();
    EXPECT_EQ(errorOf("https", "HEAD", client), HttpError::certificateUntrusted);
    EXPECT_GT(bytesRead() - before, fewBytes);
    before = bytesRead();
    EXPECT_EQ(errorOf("https", "HEAD", client), HttpError::certificateUntrusted);
    EXPECT_EQ(errorOf("https", "HEAD", client), HttpError::certificateUntrusted);
    EXPECT_LT(bytesRead() - before, fewBytes);
}

TEST_F(RealServers, pythonWithTheCertificateOfAnotherName)
{
    NEEDS("python3");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates("DNS:example.org"));
    write("tls.py", pythonTls);
    ASSERT_TRUE(start("python3", "tls.py PORT"));
    EXPECT_EQ(errorOf("http", "GET", trustingClient()), HttpError::secureConnectionFailed);
    EXPECT_EQ(errorOf("https", "HEAD", trustingClient()), HttpError::certificateUntrusted);
}

TEST_F(RealServers, nodeWithAnUnknownCertificateOnADevelopmentPort)
{
    NEEDS("node");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    port = freePort(19000);
    ASSERT_LE(port, 19999);
    write("tls.js", nodeTls);
    ASSERT_TRUE(start("node", "tls.js PORT"));
    EXPECT_EQ(probe(), reachable);
}

TEST_F(RealServers, nodeWithHttp2Alone)
{
    NEEDS("node");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("http2.js", nodeHttp2);
    ASSERT_TRUE(start("node", "http2.js PORT"));
    EXPECT_EQ(probe(trustingClient()), https);
}

TEST_F(RealServers, pythonWithTls)
{
    NEEDS("python3");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.py", pythonTls);
    ASSERT_TRUE(start("python3", "tls.py PORT"));
    EXPECT_EQ(errorOf("http", "GET"), HttpError::secureConnectionFailed);
    EXPECT_EQ(probe(trustingClient()), https);
    EXPECT_EQ(probe(), nothing);
}

TEST_F(RealServers, aPlainRedirectToAnUnknownCertificate)
{
    NEEDS("node");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.js", nodeTls);
    ASSERT_TRUE(start("node", "tls.js PORT"));
    const LoopbackServer redirect(answering("HTTP/1.1 302 Go\r\nLocation: https://127.0.0.1:" +
                                            QByteArray::number(port) + "/\r\n\r\n"));
    port = redirect.port();
    EXPECT_EQ(errorOf("http", "GET"), HttpError::certificateUntrusted);
    EXPECT_EQ(errorOf("http", "GET", trustingClient()), 0);
}

// Its status page knows GET alone: the HEAD of the HTTPS check stays without an answer.
TEST_F(RealServers, opensslWithItsStatusPage)
{
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    ASSERT_TRUE(start("openssl", "s_server -www -quiet -accept 127.0.0.1:PORT "
                                 "-cert server.pem -key server.key"));
    EXPECT_EQ(errorOf("http", "GET"), HttpError::secureConnectionFailed);
    EXPECT_EQ(errorOf("https", "HEAD"), HttpError::certificateUntrusted);
    EXPECT_EQ(errorOf("https", "GET", trustingClient()), 0);
    EXPECT_EQ(errorOf("https", "HEAD", trustingClient()), HttpError::timedOut);
    EXPECT_EQ(probe(), nothing);
}

// It knows GET alone, and says so in text that is no HTTP.
TEST_F(RealServers, gnutlsWithItsStatusPage)
{
    NEEDS("gnutls-serv");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    ASSERT_TRUE(start("gnutls-serv", "--http --quiet --port=PORT "
                                     "--x509certfile=server.pem --x509keyfile=server.key"));
    EXPECT_EQ(errorOf("http", "GET"), HttpError::secureConnectionFailed);
    EXPECT_EQ(errorOf("https", "HEAD"), HttpError::certificateUntrusted);
    EXPECT_EQ(errorOf("https", "GET", trustingClient()), 0);
    EXPECT_EQ(errorOf("https", "HEAD", trustingClient()), 0);
    EXPECT_EQ(probe(trustingClient()), nothing);
}

class SlowTls : public RealServers, public testing::WithParamInterface<int>
{
};

TEST_P(SlowTls, isRecognisedInNode)
{
    NEEDS("node");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.js", slowNodeTls);
    ASSERT_TRUE(start("node", ("tls.js PORT " + QByteArray::number(GetParam())).constData()));
    EXPECT_EQ(probe(trustingClient()), https);
}

TEST_P(SlowTls, isRecognisedInPython)
{
    NEEDS("python3");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.py", slowPythonTls);
    ASSERT_TRUE(start("python3", ("tls.py PORT " + QByteArray::number(GetParam())).constData()));
    EXPECT_EQ(probe(trustingClient()), https);
}

INSTANTIATE_TEST_SUITE_P(Milliseconds, SlowTls, testing::Values(50, 150, 400, 900));

// A hello is for plain requests: this server would answer it.
TEST_F(RealServers, aTlsServerThatAnswersNothing)
{
    NEEDS("python3");
    NEEDS("openssl");
    ASSERT_TRUE(makeCertificates());
    write("tls.py", closingPythonTls);
    ASSERT_TRUE(start("python3", "tls.py PORT"));
    EXPECT_EQ(errorOf("http", "GET"), HttpError::secureConnectionFailed);
    EXPECT_EQ(errorOf("https", "GET", trustingClient()), HttpError::connectionLost);
}

TEST_F(RealServers, oneThatAcceptsAndSaysNothing)
{
    NEEDS("python3");
    write("silent.py", silentPython);
    ASSERT_TRUE(start("python3", "silent.py PORT"));
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(probe(), nothing);
    constexpr qint64 attempts = 6;
    EXPECT_GE(timer.elapsed(), attempts * 990);
    EXPECT_EQ(server().outputToItsEnd().count("accepted"), attempts + 1) << "with the test's own";
}

TEST_F(RealServers, redisCostsLittleTime)
{
    NEEDS("redis-check-rdb");
    ASSERT_TRUE(start(&startRedis));
    // A TLS hello that it leaves without an answer would take a second.
    EXPECT_TRUE(
        takesLessThan(std::chrono::milliseconds(900), [this] { EXPECT_EQ(probe(), nothing); }));
}

// Each connection leaves a line in its log: six requests to 127.0.0.1, no hello, and before them
// the test's own one.
TEST_F(RealServers, mariadbSeesSixRequestsAlone)
{
    NEEDS("mariadbd");
    ASSERT_TRUE(start(&startMariadb));
    EXPECT_EQ(probe(), nothing);
    EXPECT_EQ(server().outputToItsEnd().count("Aborted connection"), 6 + 1);
}

// Its log has a line for each connection: the test's own one, six requests, two hellos, one for
// each address that leads to it, and on a busy machine two bare requests. Not each version of it
// also complains about a hello.
TEST_F(RealServers, postgresSeesFewConnections)
{
    NEEDS("initdb");
    NEEDS("postgres");
    ASSERT_TRUE(start(&startPostgres));
    EXPECT_EQ(probe(), nothing);
    const auto connections = server().outputToItsEnd().count("connection received");
    EXPECT_GE(connections, 1 + 6 + 2);
    EXPECT_LE(connections, 1 + 6 + 2 + 2);
}
