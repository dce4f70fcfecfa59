// The supplied lsof and ps beside servers as developers run them, by their own users.
#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"
#include "scan/http/CurlHttpClient.h"
#include "tests/libexec/SuppliedTools.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/TestText.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

#include <sys/stat.h>

namespace
{

class RealPrograms : public SuppliedTools
{
protected:
    void SetUp() override
    {
        SuppliedTools::SetUp();
        giveToOrdinaryUser(m_home.path());
    }

    /// Root, or the user that the servers run as.
    BeforeExec asOwner() const { return asUser(viewer() == 0 ? 0 : ordinaryUser); }

    std::string home(const std::string &name) const
    {
        return m_home.path().toStdString() + '/' + name;
    }

    void write(const std::string &name, const QByteArray &text) const
    {
        QFile file(QString::fromStdString(home(name)));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        ASSERT_EQ(file.write(text), text.size());
        file.close();
        ASSERT_EQ(chmod(home(name).c_str(), 0755), 0);
    }

    /// Starts it in the directory of the test; PORT stands for the port. False where it does not
    /// come up.
    bool start(const std::string &executable, const char *arguments)
    {
        m_server.reset();
        m_port = freePort();
        const QStringList list = QString::fromLatin1(arguments)
                                     .replace(QStringLiteral("PORT"), QString::number(m_port))
                                     .split(QLatin1Char(' '));
        m_server = std::make_unique<ServerProgram>(QString::fromStdString(executable), list,
                                                   m_home.path(), m_port);
        EXPECT_TRUE(m_server->isUp()) << m_server->output().toStdString();
        return m_server->isUp();
    }

    int port() const { return m_port; }

    /// What the COMMAND column says of the server, for its own user; its directory must be told
    /// too.
    std::string command() const
    {
        const auto list = rowsOf(m_port, asOwner());
        if (list.empty())
            return {};
        const std::string pid = std::to_string(list[0].pid);
        EXPECT_EQ(runProgram(lsof(), {"-p", pid, "-a", "-d", "cwd", "-F", "n"}, asOwner()).text,
                  "p" + pid + "\nn" + m_home.path().toStdString() + "\n");
        return list[0].command;
    }

private:
    QTemporaryDir m_home;
    std::unique_ptr<ServerProgram> m_server;
    int m_port = 0;
};

std::string installed(const char *name)
{
    return findProgram(QString::fromLatin1(name)).toStdString();
}

/// What scripts/fetch-node has fetched.
std::string fetchedNode(const std::string &version)
{
    const std::string path =
        "/var/tmp/tidewick-node-" + std::to_string(geteuid()) + '/' + version + "/bin/node";
    return access(path.c_str(), X_OK) == 0 ? path : std::string();
}

const char *const plainPage =
    "require('http').createServer().listen(Number(process.argv[2]), '127.0.0.1');\n";

} // namespace

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): FAIL returns from the test
#define NEEDS(program)                                                                             \
    if (installed(program).empty())                                                                \
    FAIL() << program " is missing; scripts/setup and scripts/unpack-servers install it"

INSTANTIATE_TEST_SUITE_P(As, RealPrograms, testing::Values(0U, strangerUser), viewerName);

class NodeVersions : public RealPrograms
{
protected:
    /// A server that is what it is, and one that calls itself what Next.js does.
    void isNode(const std::string &program)
    {
        write("plain.js", plainPage);
        write("titled.js", QByteArray("process.title = 'next-server (v16.4.6)';\n") + plainPage);
        for (const char *const arguments : {"plain.js PORT", "titled.js PORT"}) {
            ASSERT_TRUE(start(program, arguments));
            EXPECT_EQ(command(), "node") << program << ' ' << arguments;
        }
    }
};

INSTANTIATE_TEST_SUITE_P(As, NodeVersions, testing::Values(0U, strangerUser), viewerName);

TEST_P(NodeVersions, theInstalledOne)
{
    NEEDS("node");
    isNode(installed("node"));
}

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): FAIL returns from the test
#define FETCHED_NODE(name, version)                                                                \
    TEST_P(NodeVersions, name)                                                                     \
    {                                                                                              \
        if (fetchedNode(version).empty())                                                          \
            FAIL() << "Node " version " is missing; scripts/fetch-node fetches it";                \
        isNode(fetchedNode(version));                                                              \
    }
FETCHED_NODE(node18, "18")
FETCHED_NODE(node20, "20")
FETCHED_NODE(node22, "22")
FETCHED_NODE(node24, "24")
FETCHED_NODE(theNewestNode, "latest")

TEST_P(RealPrograms, python)
{
    NEEDS("python3");
    ASSERT_TRUE(start(installed("python3"), "-m http.server --bind 127.0.0.1 PORT"));
    EXPECT_TRUE(command().starts_with("python3")) << command();
}

TEST_P(RealPrograms, scriptsThatNameTheirProcess)
{
    NEEDS("python3");
    const QByteArray server = "#!/usr/bin/python3\n"
                              "import http.server, sys\n"
                              "http.server.HTTPServer(('127.0.0.1', int(sys.argv[1])),\n"
                              "    http.server.SimpleHTTPRequestHandler).serve_forever()\n";
    for (const char *const name : {"flask", "gunicorn", "uvicorn"}) {
        write(name, server);
        ASSERT_TRUE(start(home(name), "PORT"));
        EXPECT_TRUE(command().starts_with("python3")) << command();
    }
}

TEST_P(RealPrograms, php)
{
    NEEDS("php");
    ASSERT_TRUE(start(installed("php"), "-n -S 127.0.0.1:PORT"));
    EXPECT_TRUE(command().starts_with("php")) << command();
}

TEST_P(RealPrograms, nginx)
{
    NEEDS("nginx");
    write("nginx.conf", "daemon off; pid nginx.pid; events {}\n"
                        "http { access_log off; client_body_temp_path b; proxy_temp_path p;\n"
                        "fastcgi_temp_path f; uwsgi_temp_path u; scgi_temp_path s;\n"
                        "include server.conf; }\n");
    const int port = freePort(20'000);
    write("server.conf", "server { listen 127.0.0.1:" + QByteArray::number(port) + "; }\n");
    const ServerProgram server(findProgram(QStringLiteral("nginx")),
                               {QStringLiteral("-p"), QStringLiteral("."), QStringLiteral("-c"),
                                QStringLiteral("nginx.conf"), QStringLiteral("-e"),
                                QStringLiteral("stderr")},
                               QString::fromStdString(home("")), port);
    ASSERT_TRUE(server.isUp());
    const auto list = rowsOf(port, asOwner());
    ASSERT_GE(list.size(), 2U) << "the master and its worker";
    EXPECT_EQ(list[0].command, "nginx");
    EXPECT_LT(list[0].pid, list[1].pid);
}

TEST_P(RealPrograms, redis)
{
    NEEDS("redis-check-rdb");
    // The server is this program under another name.
    directory().copy(installed("redis-check-rdb"), "redis-check-rdb");
    const std::string server = directory().path("redis-server");
    ASSERT_EQ(symlink("redis-check-rdb", server.c_str()), 0);
    ASSERT_TRUE(start(server, "--port PORT --bind 127.0.0.1"));
    EXPECT_EQ(command(), "redis-server");
}

TEST_P(RealPrograms, postgres)
{
    NEEDS("postgres");
    ASSERT_TRUE(runAsOrdinaryUser(QString::fromStdString(installed("initdb")),
                                  {QStringLiteral("--no-sync"), QStringLiteral("-A"),
                                   QStringLiteral("trust"), QStringLiteral("-D"),
                                   QString::fromStdString(home("data"))},
                                  QString::fromStdString(home(""))));
    ASSERT_TRUE(start(installed("postgres"), "-D data -k . -h 127.0.0.1 -p PORT"));
    const auto own = rowsOf(port(), asOwner());
    ASSERT_GE(own.size(), 1U);
    EXPECT_EQ(own[0].command, "postgres");
    if (viewer() != strangerUser)
        return;
    // "nobody" is no service's user.
    EXPECT_TRUE(rowsOf(port()).empty());
}

TEST_P(RealPrograms, aRefreshWithEitherTools)
{
    NEEDS("python3");
    const int port = freePort();
    const ServerProgram server(findProgram(QStringLiteral("python3")),
                               {QStringLiteral("-m"), QStringLiteral("http.server"),
                                QStringLiteral("--bind"), QStringLiteral("127.0.0.1"),
                                QString::number(port)},
                               QStringLiteral("/tmp"), port);
    ASSERT_TRUE(server.isUp());
    for (const tidewick::ToolTable &table :
         {tidewick::ToolTable::stock(),
          tidewick::ToolTable::suppliedOverStock(QStringLiteral(SUPPLIED_TOOLS)),
          tidewick::ToolTable::suppliedOverStock(QStringLiteral("/nonexistent"))}) {
        const tidewick::SystemInterfaces system{std::make_shared<tidewick::ProcessToolRunner>(),
                                                table,
                                                std::make_shared<tidewick::CurlHttpClient>()};
        const auto records = fetchRunningPorts(system, {});
        const auto record = std::find_if(records.begin(), records.end(),
                                         [port](const auto &each) { return each.port() == port; });
        ASSERT_NE(record, records.end());
        EXPECT_TRUE(record->command().startsWith(QStringLiteral("python3")));
        EXPECT_TRUE(record->fullCommand.contains(QStringLiteral("http.server --bind 127.0.0.1")));
        EXPECT_EQ(record->workingDirectory, QStringLiteral("/tmp"));
        EXPECT_GT(record->memoryUsage, 1);
        EXPECT_EQ(record->httpStatus, 200);
    }
}
