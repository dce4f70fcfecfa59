// What one whole refresh of listeners that answer costs, and how its time divides between the
// tools, the probes and our own code, with the stock tools and with the supplied ones:
// refresh_bench DIRECTORY [RUNS], where DIRECTORY holds the supplied ones. The listeners are this
// machine's real ones: scripts/bench starts them.
#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"
#include "scan/http/CurlHttpClient.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <sys/resource.h>

using namespace tidewick;

namespace
{

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
    HttpOutcome send(const HttpRequest &request, TlsEvidence &evidence,
                     const std::stop_token &stop) const override
    {
        const Stopwatch stopwatch(m_sum);
        return CurlHttpClient::send(request, evidence, stop);
    }

private:
    double &m_sum;
};

struct Refresh
{
    double total = 0;
    double tools = 0;
    double probes = 0;
    double own = 0;
    double processor = 0; ///< milliseconds of processor time, the children's included
    qsizetype listeners = 0;
};

double processorTime()
{
    double sum = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used{};
        getrusage(who, &used);
        for (const timeval &time : {used.ru_utime, used.ru_stime})
            sum += double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
    }
    return sum;
}

Refresh refresh(const ToolTable &toolTable)
{
    Refresh result;
    const SystemInterfaces system{std::make_shared<TimedToolRunner>(result.tools), toolTable,
                                  std::make_shared<TimedHttpClient>(result.probes)};
    const double before = processorTime();
    {
        const Stopwatch stopwatch(result.total);
        result.listeners = fetchRunningPorts(system, {}).size();
    }
    result.own = result.total - result.tools - result.probes;
    result.processor = processorTime() - before;
    return result;
}

template <class Field>
double median(std::vector<Refresh> refreshes, Field field)
{
    std::sort(refreshes.begin(), refreshes.end(),
              [field](const Refresh &a, const Refresh &b) { return a.*field < b.*field; });
    return refreshes[refreshes.size() / 2].*field;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 2)
        return EXIT_FAILURE;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    std::vector<Refresh> stock;
    std::vector<Refresh> supplied;
    for (int run = 0; run < runs; ++run) {
        stock.push_back(refresh(ToolTable::stock()));
        supplied.push_back(refresh(ToolTable::suppliedOverStock(QString::fromLocal8Bit(argv[1]))));
    }
    std::printf("one refresh of %d listeners (%d with the supplied tools), medians of %d\n",
                int(stock[0].listeners), int(supplied[0].listeners), runs);
    std::printf("%14s %10s %10s %10s\n", "ms", "stock", "supplied", "ratio");
    for (const auto &[what, field] : {std::pair{"tools", &Refresh::tools},
                                      {"probes", &Refresh::probes},
                                      {"our own", &Refresh::own},
                                      {"all", &Refresh::total},
                                      {"processor", &Refresh::processor}}) {
        const double before = median(stock, field);
        const double after = median(supplied, field);
        std::printf("%14s %10.2f %10.2f %10.3f\n", what, before, after, after / before);
    }
    return EXIT_SUCCESS;
}
