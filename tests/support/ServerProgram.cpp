#include "tests/support/ServerProgram.h"

#include "tests/support/system/Users.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <csignal>

#include <grp.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr int timeoutMs = 20'000;

/// Where scripts/unpack-servers puts what it unpacks.
QString unpackedServers()
{
    return QStringLiteral("/var/tmp/tidewick-servers-%1/usr").arg(QString::number(geteuid()));
}

void becomeOrdinaryUser()
{
    if (setgroups(0, nullptr) != 0 || setgid(ordinaryUser) != 0 || setuid(ordinaryUser) != 0)
        _exit(127);
}

void prepare(QProcess &process, const QString &directory)
{
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setWorkingDirectory(directory);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    environment.insert(QStringLiteral("HOME"), directory);
    const QDir libraries(unpackedServers() + QStringLiteral("/lib"));
    for (const QString &name : libraries.entryList({QStringLiteral("*-linux-gnu*")}, QDir::Dirs))
        environment.insert(QStringLiteral("LD_LIBRARY_PATH"), libraries.filePath(name));
    process.setProcessEnvironment(environment);
    process.setChildProcessModifier([isRoots = isRealRoot()] {
        if (isRoots)
            becomeOrdinaryUser();
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
}

int newSocket(int family)
{
    return socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

bool takesConnections(int port)
{
    sockaddr_in ipv4{};
    ipv4.sin_family = AF_INET;
    ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ipv4.sin_port = htons(uint16_t(port));
    sockaddr_in6 ipv6{};
    ipv6.sin6_family = AF_INET6;
    ipv6.sin6_addr = in6addr_loopback;
    ipv6.sin6_port = ipv4.sin_port;
    const int first = newSocket(AF_INET);
    const int second = newSocket(AF_INET6);
    const bool connects = connect(first, reinterpret_cast<sockaddr *>(&ipv4), sizeof ipv4) == 0 ||
                          connect(second, reinterpret_cast<sockaddr *>(&ipv6), sizeof ipv6) == 0;
    close(first);
    close(second);
    return connects;
}

} // namespace

QString findProgram(const QString &name)
{
    QStringList directories{QStringLiteral("/usr/bin"), QStringLiteral("/usr/sbin"),
                            unpackedServers() + QStringLiteral("/sbin")};
    const QDir postgresql(unpackedServers() + QStringLiteral("/lib/postgresql"));
    for (const QString &version : postgresql.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        directories.append(postgresql.filePath(version + QStringLiteral("/bin")));
    return QStandardPaths::findExecutable(name, directories);
}

int freePort(int first)
{
    for (int port = first;; ++port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(uint16_t(port));
        socklen_t size = sizeof address;
        const int descriptor = newSocket(AF_INET);
        auto *generic = reinterpret_cast<sockaddr *>(&address);
        const bool isFree = bind(descriptor, generic, size) == 0;
        getsockname(descriptor, generic, &size);
        close(descriptor);
        if (isFree)
            return ntohs(address.sin_port);
    }
}

ServerProgram::ServerProgram(const QString &program, const QStringList &arguments,
                             const QString &directory, int port)
{
    prepare(m_process, directory);
    m_process.start(program, arguments);
    m_process.waitForStarted();
    m_processId = m_process.processId();
    const QDeadlineTimer deadline(timeoutMs);
    while (!m_isUp && m_process.state() == QProcess::Running && !deadline.hasExpired()) {
        m_process.waitForFinished(20);
        m_isUp = takesConnections(port);
    }
}

ServerProgram::~ServerProgram()
{
    end();
}

QByteArray ServerProgram::outputToItsEnd()
{
    end();
    return m_process.readAll();
}

void ServerProgram::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(3000)) {
        m_process.kill();
        m_process.waitForFinished(-1);
    }
}

bool ServerProgram::isRunning()
{
    m_process.waitForFinished(0);
    return m_process.state() == QProcess::Running;
}

QByteArray ServerProgram::output()
{
    m_process.waitForReadyRead(50);
    return m_process.readAll();
}

bool runAsOrdinaryUser(const QString &program, const QStringList &arguments,
                       const QString &directory)
{
    QProcess process;
    prepare(process, directory);
    process.start(program, arguments);
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void giveToOrdinaryUser(const QString &directory)
{
    if (isRealRoot() &&
        chown(QFile::encodeName(directory).constData(), ordinaryUser, ordinaryUser) != 0)
        qWarning("%s cannot be given away", qPrintable(directory));
}
