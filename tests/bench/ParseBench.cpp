// How long parsePortInfo takes for long outputs, and that its time grows no faster than they do.
// For scale, awk splitting the same text at white space is timed in the same run.
#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"

#include <QElapsedTimer>
#include <QTemporaryFile>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace tidewick;

namespace
{

constexpr int runs = 15;

QString lsofOutput(int lines)
{
    QString output = QStringLiteral("COMMAND PID USER FD TYPE DEVICE SIZE/OFF NODE NAME\n");
    for (int line = 0; line < lines; ++line) {
        output +=
            QStringLiteral("node    %1 alice   23u  IPv4 0x1a2b      0t0  TCP *:%2 (LISTEN)\n")
                .arg(1000 + line)
                .arg(1 + line);
    }
    return output;
}

/// The median of `runs` runs, in milliseconds.
template <class Work>
double median(Work work)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[runs / 2];
}

} // namespace

int main()
{
    std::printf("parsePortInfo, medians of %d runs\n%10s %12s %14s %12s %12s\n", runs, "lines",
                "ms", "us per line", "awk, ms", "ms / awk");
    double shortest = 0;
    double longest = 0;
    for (const int lines : {1000, 10000, 100000}) {
        const QString output = lsofOutput(lines);
        const double parse = median([&output] { parsePortInfo(output); });

        QTemporaryFile file;
        if (!file.open() || file.write(output.toUtf8()) < 0 || !file.flush())
            return EXIT_FAILURE;
        const QStringList arguments{QStringLiteral("{ print $2, $9 }"), file.fileName()};
        const double awk = median([&arguments] {
            ProcessToolRunner().run(QStringLiteral("/usr/bin/awk"), arguments, {});
        });

        longest = parse * 1000 / lines;
        if (shortest == 0)
            shortest = longest;
        std::printf("%10d %12.2f %14.3f %12.2f %12.2f\n", lines, parse, longest, awk, parse / awk);
    }
    std::printf("a line among 100000 costs %.2f times one among 1000\n", longest / shortest);
    return EXIT_SUCCESS;
}
