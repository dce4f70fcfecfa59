// The probe against servers as developers run them.

#include "scan/http/CurlHttpClient.h"
#include "scan/http/HttpProbe.h"
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
        EXPECT_TRUE(m_server->isUp()) << m_server->output().toStdString();
        return m_server->isUp();
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

    /// The error's code; 0 where there was a response.
    int errorOf(const char *scheme, const QByteArray &method,
                const CurlHttpClient &client = CurlHttpClient()) const
    {
        const QString url =
            QStringLiteral("%1://127.0.0.1:%2").arg(QString::fromLatin1(scheme)).arg(port);
        const HttpOutcome outcome = client.send({url, method, {}}, {});
        const auto *error = std::get_if<HttpError>(&outcome);
        return error == nullptr ? 0 : error->code;
    }

    /// A certificate authority in ca.pem; server.pem and server.key, which it has signed for all
    /// names of this machine.
    bool makeCertificates()
    {
        return openssl("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=authority "
                       "-keyout ca.key -out ca.pem") &&
               openssl("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost "
                       "-CA ca.pem -CAkey ca.key -keyout server.key -out server.pem "
                       "-addext basicConstraints=critical,CA:FALSE "
                       "-addext subjectAltName=DNS:localhost,IP:127.0.0.1,IP:::1");
    }

    bool initialisePostgres() const
    {
        return runAsOrdinaryUser(findProgram(QStringLiteral("initdb")),
                                 words("--no-sync -A trust -U test -D data"), m_directory.path());
    }

    CurlHttpClient trustingClient() const { return CurlHttpClient(path("ca.pem")); }

    ServerProgram &server() { return *m_server; }

    int port = 0;

private:
    static QStringList words(const char *text)
    {
        return QString::fromLatin1(text).split(QLatin1Char(' '));
    }

    bool openssl(const char *arguments) const
    {
        return runAsOrdinaryUser(findProgram(QStringLiteral("openssl")), words(arguments),
                                 m_directory.path());
    }

    QTemporaryDir m_directory;
    std::unique_ptr<ServerProgram> m_server;
};

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
    EXPECT_EQ(errorOf("https", "HEAD", trustingClient()), HttpError::badServerResponse);
    EXPECT_EQ(probe(trustingClient()), nothing);
}

// The server is the program of redis-tools under another name; the package that carries the name
// would start a daemon, too.
TEST_F(RealServers, redisSpeaksNoHttp)
{
    NEEDS("redis-check-rdb");
    const QString program = path("redis-server");
    ASSERT_TRUE(QFile::link(findProgram(QStringLiteral("redis-check-rdb")), program));
    ASSERT_TRUE(start(qPrintable(program), "--port PORT --bind 127.0.0.1"));
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(probe(), nothing);
    RecordProperty("milliseconds", int(timer.elapsed()));
    EXPECT_LT(timer.elapsed(), 3000);
}

TEST_F(RealServers, postgresSpeaksNoHttp)
{
    NEEDS("initdb");
    NEEDS("postgres");
    ASSERT_TRUE(initialisePostgres());
    ASSERT_TRUE(start("postgres", "-D data -p PORT -c unix_socket_directories= "
                                  "-c listen_addresses=127.0.0.1"));
    EXPECT_EQ(probe(), nothing);
}
