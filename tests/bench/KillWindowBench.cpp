// kill_window_bench [SUPPLIED-TOOLS] - how long the list names a process that has ended, how long a
// kill takes from the press to the signal, and how soon a process id could come back: together the
// chance that a kill meets another process. Runs for about a minute, in a network of its own.

#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "state/AppState.h"
#include "state/Workers.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/WaitUntil.h"

#include <QCoroTask>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace tidewick;

namespace
{

constexpr int rounds = 10;

ServerProgram startServer()
{
    const int port = freePort();
    return {QStringLiteral("/usr/bin/python3"),
            {QStringLiteral("-m"), QStringLiteral("http.server"), QStringLiteral("--bind"),
             QStringLiteral("127.0.0.1"), QString::number(port)},
            QStringLiteral("/"),
            port};
}

bool isListed(const AppState &state, qint64 pid)
{
    const auto &list = state.runningPorts();
    return std::any_of(list.begin(), list.end(), [text = QString::number(pid)](const auto &record) {
        return record.pid() == text;
    });
}

/// Milliseconds from the end of a process to the list without it, at even distances from the tick.
std::vector<double> timesInTheList(AppState &state)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const ServerProgram server = startServer();
        const auto isShown = [&] {
            return isListed(state, server.processId());
        };
        waitUntil(isShown, 60'000);
        QThread::msleep(1); // behind the publication
        waitUntil([] { return false; }, int(AppState::refreshInterval.count()) * i / rounds);
        QElapsedTimer timer;
        ::kill(pid_t(server.processId()), SIGKILL);
        timer.start();
        waitUntil([&] { return !isShown(); }, 60'000);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return times;
}

/// Milliseconds from the call of a kill to the end of the process.
std::vector<double> timesOfAKill(AppState &state)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        ServerProgram server = startServer();
        QElapsedTimer timer;
        timer.start();
        const auto killing = state.killProcess(QString::number(server.processId()));
        waitUntil([&] { return !server.isRunning(); });
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
        waitUntil([&] { return !state.isKillingProcess(); });
    }
    return times;
}

/// New processes a second, made as fast as this machine can.
double newProcessesASecond()
{
    std::atomic<int> count = 0;
    QElapsedTimer timer;
    timer.start();
    std::vector<std::jthread> makers;
    makers.reserve(size_t(QThread::idealThreadCount()));
    for (int i = 0; i < QThread::idealThreadCount(); ++i)
        makers.emplace_back([&] {
            for (; timer.elapsed() < 2000; ++count) {
                // Nothing makes them faster, and the child does nothing that vfork(2) forbids.
                const pid_t child = vfork(); // NOLINT(clang-analyzer-security.insecureAPI.vfork)
                if (child == 0)
                    _exit(0);
                waitpid(child, nullptr, 0);
            }
        });
    makers.clear();
    return count / (double(timer.elapsed()) / 1000);
}

int processIds()
{
    QFile file(QStringLiteral("/proc/sys/kernel/pid_max"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toInt() : 0;
}

void print(const char *what, std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%-48s median %7.1f ms, longest %7.1f ms\n", what, times[times.size() / 2],
                times.back());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const ToolTable tools = argc > 1 ? ToolTable::suppliedOverStock(QString::fromLocal8Bit(argv[1]))
                                     : ToolTable::stock();
    Workers workers;
    AppState state(
        {std::make_shared<ProcessToolRunner>(), tools, std::make_shared<CurlHttpClient>()},
        workers);
    print("from the end of a process to a list without it:", timesInTheList(state));
    print("from the press to the end of the process:", timesOfAKill(state));
    const double rate = newProcessesASecond();
    std::printf(
        "at %.0f new processes a second, as fast as this machine makes them, process ids come "
        "round in:\n",
        rate);
    for (const int ids : {32768, 4194304})
        std::printf("  %7.1f s where there are %d%s\n", ids / rate, ids,
                    ids == processIds() ? ", as here" : "");
    return EXIT_SUCCESS;
}
