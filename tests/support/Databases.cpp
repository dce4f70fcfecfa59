#include "tests/support/Databases.h"

#include <QDir>
#include <QFile>

namespace
{

/// `arguments` are separated by spaces; PORT stands for the port, DATA for the path of data/.
std::unique_ptr<ServerProgram> start(const QString &program, const char *arguments,
                                     const QString &directory, int port)
{
    const QStringList list =
        QString::fromLatin1(arguments)
            .split(QLatin1Char(' '))
            .replaceInStrings(QStringLiteral("PORT"), QString::number(port))
            .replaceInStrings(QStringLiteral("DATA"),
                              QDir(directory).filePath(QStringLiteral("data")));
    return std::make_unique<ServerProgram>(program, list, directory, port);
}

} // namespace

// The server is the program of redis-tools under another name; the package that carries the name
// would start a daemon, too.
std::unique_ptr<ServerProgram> startRedis(const QString &directory, int port)
{
    const QString source = findProgram(QStringLiteral("redis-check-rdb"));
    const QString program = QDir(directory).filePath(QStringLiteral("redis-server"));
    if (source.isEmpty() || !QFile::link(source, program))
        return nullptr;
    return start(program, "--port PORT --bind 127.0.0.1", directory, port);
}

std::unique_ptr<ServerProgram> startMariadb(const QString &directory, int port)
{
    const QString program = findProgram(QStringLiteral("mariadbd"));
    const QDir home(directory);
    if (program.isEmpty() || !home.mkdir(QStringLiteral("data")))
        return nullptr;
    giveToOrdinaryUser(home.filePath(QStringLiteral("data")));
    return start(program,
                 "--no-defaults --skip-grant-tables --datadir=DATA --port=PORT --socket=socket "
                 "--bind-address=127.0.0.1",
                 directory, port);
}

std::unique_ptr<ServerProgram> startPostgres(const QString &directory, int port)
{
    const QString initdb = findProgram(QStringLiteral("initdb"));
    const QString program = findProgram(QStringLiteral("postgres"));
    const QStringList making{QStringLiteral("--no-sync"), QStringLiteral("-A"),
                             QStringLiteral("trust"),     QStringLiteral("-U"),
                             QStringLiteral("test"),      QStringLiteral("-D"),
                             QStringLiteral("data")};
    if (initdb.isEmpty() || program.isEmpty() || !runAsOrdinaryUser(initdb, making, directory))
        return nullptr;
    return start(program,
                 "-D data -p PORT -c unix_socket_directories= -c listen_addresses=127.0.0.1 "
                 "-c log_connections=on",
                 directory, port);
}
