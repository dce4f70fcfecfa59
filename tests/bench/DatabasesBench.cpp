// databases_bench SUPPLIED-TOOLS - how much longer a scan takes beside one Redis, and how many
// lines a scan leaves in the logs of MariaDB and PostgreSQL. Runs in a network of its own.
#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"
#include "scan/http/CurlHttpClient.h"
#include "tests/support/Databases.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace tidewick;

namespace
{

constexpr int rounds = 5;
constexpr int scansInARound = 5;

using Database = std::unique_ptr<ServerProgram> (*)(const QString &, int);

/// A database in a directory of its own.
class Running
{
public:
    explicit Running(Database database)
    {
        giveToOrdinaryUser(m_directory.path());
        m_server = database(m_directory.path(), freePort());
    }

    bool isUp() const { return m_server != nullptr && m_server->isUp(); }
    QByteArray log() { return m_server->outputToItsEnd(); }

private:
    QTemporaryDir m_directory;
    std::unique_ptr<ServerProgram> m_server;
};

/// Milliseconds of one scan.
double scan(const SystemInterfaces &system)
{
    QElapsedTimer timer;
    timer.start();
    fetchRunningPorts(system, {});
    return double(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The scans with and without the database take turns.
void compareRedis(const SystemInterfaces &system)
{
    std::vector<double> alone;
    std::vector<double> beside;
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < scansInARound; ++i)
            alone.push_back(scan(system));
        const Running redis(&startRedis);
        if (!redis.isUp()) {
            std::puts("Redis does not start; scripts/setup installs it");
            return;
        }
        for (int i = 0; i < scansInARound; ++i)
            beside.push_back(scan(system));
    }
    std::printf("a scan of one web server: %.1f ms alone, %.1f ms beside one Redis, %.1f more "
                "(medians of %d in turns)\n",
                median(alone), median(beside), median(beside) - median(alone),
                rounds * scansInARound);
}

/// The lines with `text` in the database's log after one scan. `others` of them are there without a
/// scan, because a connection asks whether the database is up.
void countLines(const SystemInterfaces &system, const char *name, Database database,
                const char *text, int others)
{
    Running running(database);
    if (!running.isUp()) {
        std::printf("%s does not start; scripts/unpack-servers unpacks it\n", name);
        return;
    }
    const double time = scan(system);
    std::printf("lines \"%s\" in the log of %s from one scan: %d (it took %.0f ms)\n", text, name,
                int(running.log().count(text)) - others, time);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc != 2)
        return EXIT_FAILURE;
    const SystemInterfaces system{std::make_shared<ProcessToolRunner>(),
                                  ToolTable::suppliedOverStock(QString::fromLocal8Bit(argv[1])),
                                  std::make_shared<CurlHttpClient>()};
    compareRedis(system);
    countLines(system, "MariaDB", &startMariadb, "Aborted connection", 1);
    countLines(system, "PostgreSQL", &startPostgres, "invalid length of startup packet", 0);
    return EXIT_SUCCESS;
}
