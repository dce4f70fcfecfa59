// soak_program REFRESHES [SUPPLIED-TOOLS] - refreshes one store so often, beside real servers that
// come and go, and holds every list against the servers that are there. Prints what the process
// used at the beginning and at the end; exits 1 where something grew, a list was wrong or a tick
// was missed.
//
// Runs in a network of its own: any other development server counts as a wrong row.

#include "scan/CurlHttpClient.h"
#include "scan/ProcessToolRunner.h"
#include "state/AppState.h"
#include "tests/support/ServerProgram.h"

#include <QCoroTask>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

using namespace tidewick;

namespace
{

constexpr int slots = 4;            // servers at a time, at most
constexpr int refreshesASlot = 5;   // until one of them comes or goes
constexpr int warmUp = 40;          // refreshes until everything was allocated once
constexpr double tickSeconds = 5;   // the store's own timer
constexpr double memoryRoom = 6144; // KiB that the allocator may still take after the warm-up

/// What the process holds of the system.
struct Holdings
{
    int descriptors = 0;
    int threads = 0;
    int children = 0;
    double resident = 0; ///< KiB
};

int entries(const QString &folder)
{
    return static_cast<int>(
        QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

Holdings holdings()
{
    Holdings result;
    result.descriptors = entries(QStringLiteral("/proc/self/fd"));
    result.threads = entries(QStringLiteral("/proc/self/task"));
    QFile children(
        QStringLiteral("/proc/self/task/%1/children").arg(QCoreApplication::applicationPid()));
    if (children.open(QIODevice::ReadOnly))
        result.children = static_cast<int>(children.readAll().count(' ')); // one behind each
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmRSS:"))
                result.resident = line.simplified().split(' ').value(1).toDouble();
        }
    }
    return result;
}

/// Real servers, one a slot, that come and go.
class Servers
{
public:
    void toggle(int slot)
    {
        auto &server = m_servers.at(static_cast<size_t>(slot));
        if (server.process) {
            server.process.reset();
            return;
        }
        server.port = freePort(20000 + slot * 100);
        server.process = std::make_unique<ServerProgram>(
            QStringLiteral("/usr/bin/python3"),
            QStringList{QStringLiteral("-m"), QStringLiteral("http.server"),
                        QStringLiteral("--bind"), QStringLiteral("127.0.0.1"),
                        QString::number(server.port)},
            QStringLiteral("/"), server.port);
    }

    void stopAll()
    {
        for (Server &server : m_servers)
            server.process.reset();
    }

    /// Whether the list holds each server that runs, with its own process, and nothing else.
    bool match(const QList<PortInfo> &list) const
    {
        std::map<qint64, QString> expected;
        for (const Server &server : m_servers) {
            if (server.process)
                expected[server.port] = QString::number(server.process->processId());
        }
        std::map<qint64, QString> found;
        for (const PortInfo &record : list)
            found[record.port()] = record.pid();
        return found == expected;
    }

private:
    struct Server
    {
        int port = 0;
        std::unique_ptr<ServerProgram> process;
    };
    std::array<Server, slots> m_servers;
};

struct Outcome
{
    int wrongLists = 0;
    int failedScans = 0;
    int slowest = 0; ///< milliseconds
    Holdings atFirst;
    Holdings atLast;
};

QCoro::Task<> soak(AppState &state, int refreshes, Outcome &outcome)
{
    Servers servers;
    for (int i = 0; i < warmUp + refreshes; ++i) {
        if (i == warmUp) {
            servers.stopAll();
            outcome.atFirst = holdings();
        }
        if (i % refreshesASlot == 0)
            servers.toggle(i / refreshesASlot % slots);
        QElapsedTimer timer;
        timer.start();
        auto load = state.loadRunningPorts();
        co_await load;
        outcome.slowest = std::max(outcome.slowest, static_cast<int>(timer.elapsed()));
        outcome.failedScans += state.lastError() ? 1 : 0;
        outcome.wrongLists += servers.match(state.runningPorts()) ? 0 : 1;
    }
    servers.stopAll();
    outcome.atLast = holdings();
    QCoreApplication::quit();
}

bool report(const Outcome &outcome, int refreshes, int missedTicks)
{
    const Holdings &first = outcome.atFirst;
    const Holdings &last = outcome.atLast;
    std::printf("%-24s %10s %10s\n", "", "at first", "at last");
    std::printf("%-24s %10d %10d\n", "file descriptors", first.descriptors, last.descriptors);
    std::printf("%-24s %10d %10d\n", "threads", first.threads, last.threads);
    std::printf("%-24s %10d %10d\n", "child processes", first.children, last.children);
    std::printf("%-24s %10.0f %10.0f\n", "resident memory, KiB", first.resident, last.resident);
    std::printf(
        "refreshes %d, the slowest %d ms; wrong lists %d, failed scans %d, missed ticks %d\n",
        refreshes, outcome.slowest, outcome.wrongLists, outcome.failedScans, missedTicks);
    return last.descriptors <= first.descriptors && last.threads <= first.threads + 1 &&
           last.children == 0 && last.resident <= first.resident + memoryRoom &&
           outcome.wrongLists == 0 && outcome.failedScans == 0 && missedTicks == 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const int refreshes = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 300;
    const ToolTable tools = argc > 2 ? ToolTable::suppliedOverStock(QString::fromLocal8Bit(argv[2]))
                                     : ToolTable::stock();
    QThreadPool pool;
    pool.setMaxThreadCount(8);
    AppState state(
        {std::make_shared<ProcessToolRunner>(), tools, std::make_shared<CurlHttpClient>()}, pool);
    int ticks = 0;
    QObject::connect(state.refreshTimer(), &QTimer::timeout, &application, [&ticks] { ++ticks; });
    QElapsedTimer timer;
    timer.start();
    Outcome outcome;
    auto run = soak(state, refreshes, outcome);
    QCoreApplication::exec();
    const int dueTicks = static_cast<int>(double(timer.elapsed()) / 1000 / tickSeconds);
    return report(outcome, refreshes, std::max(0, dueTicks - ticks)) ? EXIT_SUCCESS : EXIT_FAILURE;
}
