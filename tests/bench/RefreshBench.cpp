// What one whole refresh of listeners that answer costs, and how its time divides between the
// tools, the probes and our own code. The listeners are this machine's real ones: scripts/bench
// starts them.
#include "scan/CurlHttpClient.h"
#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace tidewick;

namespace
{

constexpr int runs = 5;

/// Adds the milliseconds that it lives to `sum`.
class Stopwatch
{
public:
    explicit Stopwatch(double &sum) : m_sum(sum) { m_timer.start(); }
    ~Stopwatch() { m_sum += double(m_timer.nsecsElapsed()) / 1e6; }
    Q_DISABLE_COPY_MOVE(Stopwatch)

private:
    double &m_sum;
    QElapsedTimer m_timer;
};

class TimedToolRunner : public ProcessToolRunner
{
public:
    explicit TimedToolRunner(double &sum) : m_sum(sum) {}
    ToolResult run(const QString &program, const QStringList &arguments,
                   const std::stop_token &stop) const override
    {
        const Stopwatch stopwatch(m_sum);
        return ProcessToolRunner::run(program, arguments, stop);
    }

private:
    double &m_sum;
};

class TimedHttpClient : public CurlHttpClient
{
public:
    explicit TimedHttpClient(double &sum) : m_sum(sum) {}
    HttpOutcome send(const HttpRequest &request, const std::stop_token &stop) const override
    {
        const Stopwatch stopwatch(m_sum);
        return CurlHttpClient::send(request, stop);
    }

private:
    double &m_sum;
};

struct Refresh
{
    double total = 0;
    double tools = 0;
    double probes = 0;
    qsizetype listeners = 0;
};

Refresh refresh()
{
    Refresh result;
    const SystemInterfaces system{std::make_shared<TimedToolRunner>(result.tools),
                                  ToolTable::stock(),
                                  std::make_shared<TimedHttpClient>(result.probes)};
    {
        const Stopwatch stopwatch(result.total);
        result.listeners = fetchRunningPorts(system, {}).size();
    }
    return result;
}

} // namespace

int main()
{
    std::vector<Refresh> refreshes;
    refreshes.reserve(runs);
    for (int run = 0; run < runs; ++run)
        refreshes.push_back(refresh());
    std::sort(refreshes.begin(), refreshes.end(),
              [](const Refresh &a, const Refresh &b) { return a.total < b.total; });
    const Refresh median = refreshes[runs / 2];
    const double own = median.total - median.tools - median.probes;
    std::printf("one refresh of %d listeners, the median of %d\n", int(median.listeners), runs);
    std::printf("%10s %10s %10s\n", "", "ms", "share");
    for (const auto &[what, time] : {std::pair{"tools", median.tools},
                                     {"probes", median.probes},
                                     {"our own", own},
                                     {"all", median.total}})
        std::printf("%10s %10.2f %9.1f%%\n", what, time, 100 * time / median.total);
    return EXIT_SUCCESS;
}
