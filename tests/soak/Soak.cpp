// soak_program REFRESHES [SUPPLIED-TOOLS [PAUSE]] - refreshes one store so often, PAUSE
// milliseconds (0) apart, beside real servers that come, go and are killed, and holds every list
// against the servers that are there. Prints what the process held at the beginning and at the end,
// when nothing was under way; exits 1 where something grew, a list was wrong, or a tick of the
// store's timer brought no list.
//
// Runs in a network of its own: any other development server counts as a wrong row.

#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "state/AppState.h"
#include "state/Workers.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/system/Holdings.h"

#include <QCoroTask>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

using namespace tidewick;

namespace
{

constexpr int slots = 4;                 // servers at a time, at most
constexpr int refreshesAChange = 5;      // until a server comes or goes
constexpr int changesARound = 2 * slots; // until each has come and gone
constexpr int warmUp = 200;              // refreshes until everything was allocated once
constexpr int leastTicks = 2;            // of the store's own timer, however short the run
constexpr double heapRoom = 64;          // KiB: by so much two equal moments differ
constexpr double residentRoom = 2048;    // KiB: the allocator's reserves are not ours to know

struct Outcome
{
    int wrongLists = 0;
    int failedScans = 0;
    int failedKills = 0;
    int kills = 0;
    int slowest = 0;  ///< milliseconds
    qint64 total = 0; ///< milliseconds of all scans
    Holdings atFirst;
    Holdings atLast;
};

/// Real servers, one a slot, that come and go.
class Servers
{
public:
    bool isUp(int slot) const { return m_servers.at(size_t(slot)).process != nullptr; }
    QString pid(int slot) const
    {
        return QString::number(m_servers.at(size_t(slot)).process->processId());
    }

    void start(int slot)
    {
        Server &server = m_servers.at(size_t(slot));
        server.port = freePort(20000 + slot * 100);
        server.process = std::make_unique<ServerProgram>(
            QStringLiteral("/usr/bin/python3"),
            QStringList{QStringLiteral("-m"), QStringLiteral("http.server"),
                        QStringLiteral("--bind"), QStringLiteral("127.0.0.1"),
                        QString::number(server.port)},
            QStringLiteral("/"), server.port);
    }
    void stop(int slot) { m_servers.at(size_t(slot)).process.reset(); }
    void stopAll()
    {
        for (int slot = 0; slot < slots; ++slot)
            stop(slot);
    }

    /// Whether the list holds each server that runs, with its own process and answer, and nothing
    /// else. The slots' ports ascend.
    bool match(const QList<PortInfo> &list) const
    {
        auto record = list.begin();
        for (const Server &server : m_servers) {
            if (!server.process)
                continue;
            if (record == list.end() || !isRowOf(server, *record))
                return false;
            ++record;
        }
        return record == list.end();
    }

    /// What runs, and what the list says of it: a wrong list is rare and cannot be asked for again.
    void print(const QList<PortInfo> &list) const
    {
        std::printf("wrong list, while these run:");
        for (const Server &server : m_servers) {
            if (server.process)
                std::printf(" %d (%lld)", server.port, server.process->processId());
        }
        std::printf("\n");
        for (const PortInfo &record : list)
            std::printf("  %lld (%s), status %lld, %.1f MB, in \"%s\": %s\n", record.port(),
                        qPrintable(record.pid()), record.httpStatus.value_or(0), record.memoryUsage,
                        qPrintable(record.workingDirectory), qPrintable(record.fullCommand));
    }

private:
    struct Server
    {
        int port = 0;
        std::unique_ptr<ServerProgram> process;
    };

    static bool isRowOf(const Server &server, const PortInfo &record)
    {
        return record.port() == server.port &&
               record.pid() == QString::number(server.process->processId()) &&
               record.fullCommand.endsWith(QString::number(server.port)) &&
               record.workingDirectory == QStringLiteral("/") && record.memoryUsage > 0 &&
               record.httpStatus == 200;
    }

    std::array<Server, slots> m_servers;
};

/// Has `client` do at first what it does rarely and keeps the memory and descriptors of: as many
/// requests at a time as overlapping scans make, each ended without a byte, which asks for a TLS
/// hello. Returns whether they were all under way at a time.
bool warmUpClient(const HttpClient &client)
{
    constexpr int atATime = 2 * slots;
    std::atomic<int> connections = 0;
    std::atomic<bool> isEachBesideAll = true;
    const LoopbackServer closing([&](LoopbackConnection &connection) {
        connection.readHead();
        ++connections;
        while (connections < atATime && connection.pause(10)) {
        }
        if (connections < atATime)
            isEachBesideAll = false;
    });
    const HttpRequest request{closing.url(), "GET", {}};
    std::vector<std::jthread> requests;
    requests.reserve(atATime);
    for (int i = 0; i < atATime; ++i)
        requests.emplace_back([&client, &request] {
            TlsEvidence evidence;
            client.send(request, evidence, {});
        });
    requests.clear(); // waits for them
    return isEachBesideAll;
}

/// One store, and what happens to it.
class Soak
{
public:
    Soak(AppState &state, Workers &workers, int refreshes, int pause)
        : m_state(state), m_workers(workers), m_refreshes(refreshes), m_pause(pause)
    {
    }

    const Outcome &outcome() const { return m_outcome; }

    QCoro::Task<> run()
    {
        for (int i = 0; i < warmUp + m_refreshes; ++i) {
            if (i == warmUp)
                m_outcome.atFirst = quietHoldings();
            if (i % refreshesAChange == 0) {
                auto change = changeServers(i / refreshesAChange);
                co_await change;
            }
            auto refresh = refreshOnce();
            co_await refresh;
            if (m_pause > 0)
                waitUntil([] { return false; }, m_pause);
        }
        m_outcome.atLast = quietHoldings();
    }

private:
    /// One server comes, or goes: by itself in one round and by a kill in the next.
    QCoro::Task<> changeServers(int change)
    {
        const int slot = change % slots;
        if (!m_servers.isUp(slot)) {
            m_servers.start(slot);
            co_return;
        }
        if (change / changesARound % 2 == 1) {
            auto kill = m_state.killProcess(m_servers.pid(slot));
            const bool isKilled = co_await kill;
            ++m_outcome.kills;
            m_outcome.failedKills += isKilled ? 0 : 1;
        }
        m_servers.stop(slot);
    }

    QCoro::Task<> refreshOnce()
    {
        QElapsedTimer timer;
        timer.start();
        auto load = m_state.loadRunningPorts();
        co_await load;
        const auto elapsed = static_cast<int>(timer.elapsed());
        m_outcome.slowest = std::max(m_outcome.slowest, elapsed);
        m_outcome.total += elapsed;
        m_outcome.failedScans += m_state.lastError() ? 1 : 0;
        const QList<PortInfo> list = m_state.runningPorts();
        if (!m_servers.match(list)) {
            ++m_outcome.wrongLists;
            m_servers.print(list);
        }
    }

    /// What is held while no server runs and no scan, after their threads have ended.
    Holdings quietHoldings()
    {
        m_servers.stopAll();
        Holdings now;
        waitUntil([this, &now] {
            m_workers.waitForDone(); // the system sees its threads a little longer
            now = holdings();
            return now.threads == 1;
        });
        return now;
    }

    AppState &m_state;
    Workers &m_workers;
    int m_refreshes;
    int m_pause; ///< milliseconds
    Servers m_servers;
    Outcome m_outcome;
};

/// Holds the lists that the store published against those that were due: the one at its creation,
/// one a call of loadRunningPorts(), one a tick, except while it kills.
class Schedule
{
public:
    explicit Schedule(AppState &state)
    {
        QObject::connect(&state, &AppState::lastRefreshChanged, &m_context, [this] { ++m_lists; });
        QObject::connect(state.refreshTimer(), &QTimer::timeout, &m_context, [this, &state] {
            ++m_ticks;
            m_heldBack += state.isKillingProcess() ? 1 : 0;
        });
        m_sinceStart.start();
    }

    /// Waits for `leastTicks` and for the last list. Returns how many ticks the clock saw and the
    /// timer or the list did not.
    int missedTicks(int calls) const
    {
        waitUntil([this] { return m_ticks >= leastTicks; }, 60'000);
        const auto dueTicks =
            static_cast<int>(m_sinceStart.elapsed() / AppState::refreshInterval.count());
        waitUntil([this, dueTicks] { return m_ticks >= dueTicks; }, 2500); // the last may be late
        const auto due = [this, calls] {
            return 1 + calls + m_ticks - m_heldBack;
        };
        // At last, since the list of each tick comes a little after it.
        waitUntil([this, due] { return m_lists >= due(); });
        return std::max(0, dueTicks - m_ticks) + std::abs(due() - m_lists);
    }
    int ticks() const { return m_ticks; }

private:
    int m_lists = 0;
    int m_ticks = 0;
    int m_heldBack = 0;
    QElapsedTimer m_sinceStart;
    QObject m_context;
};

bool report(const Outcome &outcome, int refreshes, int ticks, int missedTicks)
{
    const Holdings &first = outcome.atFirst;
    const Holdings &last = outcome.atLast;
    std::printf("%-24s %10s %10s\n", "", "at first", "at last");
    std::printf("%-24s %10d %10d\n", "file descriptors", first.descriptors, last.descriptors);
    std::printf("%-24s %10d %10d\n", "threads", first.threads, last.threads);
    std::printf("%-24s %10d %10d\n", "child processes", first.children, last.children);
    std::printf("%-24s %10.0f %10.0f\n", "heap, KiB", first.heap, last.heap);
    std::printf("%-24s %10.0f %10.0f\n", "resident memory, KiB", first.resident, last.resident);
    std::printf(
        "refreshes %d of %.0f ms on average, the slowest %d ms\nwrong lists %d, failed scans %d\n"
        "kills %d, failed %d; ticks %d, missed %d\n",
        refreshes, double(outcome.total) / (warmUp + refreshes), outcome.slowest,
        outcome.wrongLists, outcome.failedScans, outcome.kills, outcome.failedKills, ticks,
        missedTicks);
    return last.descriptors <= first.descriptors && last.threads <= first.threads &&
           last.children == 0 && last.heap <= first.heap + heapRoom &&
           last.resident <= first.resident + residentRoom && outcome.wrongLists == 0 &&
           outcome.failedScans == 0 && outcome.failedKills == 0 && missedTicks == 0;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const int refreshes = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 300;
    const ToolTable tools = argc > 2 ? ToolTable::suppliedOverStock(QString::fromLocal8Bit(argv[2]))
                                     : ToolTable::stock();
    Workers workers;
    const auto client = std::make_shared<CurlHttpClient>();
    // On a busy machine a request may end before the last has begun.
    waitUntil([&client] { return warmUpClient(*client); }, 60'000);
    AppState state({std::make_shared<ProcessToolRunner>(), tools, client}, workers);
    const Schedule schedule(state);
    const int pause = argc > 3 ? QByteArray(argv[3]).toInt() : 0;
    Soak soak(state, workers, refreshes, pause);
    auto run = soak.run();
    QCoro::waitFor(run);
    const int missedTicks = schedule.missedTicks(warmUp + refreshes);
    return report(soak.outcome(), refreshes, schedule.ticks(), missedTicks) ? EXIT_SUCCESS
                                                                            : EXIT_FAILURE;
}
