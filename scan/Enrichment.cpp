#include "scan/Enrichment.h"

#include "scan/CommandMetadata.h"
#include "scan/ServiceDetection.h"
#include "scan/http/HttpProbe.h"
#include "text/EscapedPath.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tidewick
{
namespace
{

/// The tools, asked about one process.
class ProcessQueries
{
public:
    ProcessQueries(const SystemInterfaces &system, QString pid, const std::stop_token &stop)
        : m_system(system), m_pid(std::move(pid)), m_stop(stop)
    {
    }

    /// What ps prints for `field`; nothing if ps fails.
    std::optional<QString> ps(const QString &field, const char *errorPrefix) const
    {
        return ask(m_system.toolTable.ps,
                   {QStringLiteral("-p"), m_pid, QStringLiteral("-o"), field}, errorPrefix);
    }

    /// What lsof prints for the working directory, in its field format.
    std::optional<QString> lsofDirectory(const char *errorPrefix) const
    {
        return ask(m_system.toolTable.lsof,
                   {QStringLiteral("-p"), m_pid, QStringLiteral("-a"), QStringLiteral("-d"),
                    QStringLiteral("cwd"), QStringLiteral("-F"), QStringLiteral("n")},
                   errorPrefix);
    }

private:
    std::optional<QString> ask(const QStringList &tool, const QStringList &arguments,
                               const char *errorPrefix) const
    {
        if (m_stop.stop_requested())
            return std::nullopt;
        try {
            return decodeUtf8(
                m_system.tools->run(presentTool(tool), arguments, m_stop).standardOutput);
        } catch (const ToolStartError &error) {
            printError(errorPrefix, error);
            return std::nullopt;
        }
    }

    const SystemInterfaces &m_system;
    QString m_pid;
    const std::stop_token &m_stop;
};

void addCommandLine(PortInfo &record, const ProcessQueries &queries)
{
    const auto output = queries.ps(QStringLiteral("command="), "Error getting process info: ");
    if (!output)
        return;
    record.fullCommand = output->trimmed();
    record.metadata = extractMetadata(record.fullCommand, record.command());
}

void addMemoryAndCpu(PortInfo &record, const ProcessQueries &queries)
{
    const auto output = queries.ps(QStringLiteral("rss=,%cpu="), "Error getting memory/CPU: ");
    if (!output)
        return;
    const QString line = output->trimmed();
    const auto pieces = QStringView(line).split(u' ', Qt::SkipEmptyParts);
    constexpr double kilobytesInAMegabyte = 1024;
    if (pieces.size() >= 1) {
        if (const auto kilobytes = parseNumber(pieces[0]))
            record.memoryUsage = *kilobytes / kilobytesInAMegabyte;
    }
    if (pieces.size() >= 2)
        record.cpuUsage = parseNumber(pieces[1]).value_or(record.cpuUsage);
}

void addStartTime(PortInfo &record, const ProcessQueries &queries)
{
    const auto output = queries.ps(QStringLiteral("etime="), "Error getting elapsed time: ");
    if (!output)
        return;
    const double seconds = parseElapsedTime(output->trimmed());
    constexpr double longest = 1e11; // about 3,000 years, which a date can still hold
    if (seconds > 0)
        record.startTime =
            QDateTime::currentDateTime().addSecs(-qint64(std::min(seconds, longest)));
}

void addWorkingDirectory(PortInfo &record, const ProcessQueries &queries)
{
    const auto output = queries.lsofDirectory("Error getting working directory: ");
    if (!output)
        return;
    for (const QStringView line : splitLines(*output)) {
        if (line.startsWith(u'n')) {
            record.workingDirectory =
                unescapedPath(line.sliced(1)).value_or(record.workingDirectory);
            return;
        }
    }
}

void addHttp(PortInfo &record, const SystemInterfaces &system, const std::stop_token &stop)
{
    const ProbeResult result = probeHttpService(record.port(), *system.http, stop);
    record.isHttpAccessible = result.isAccessible;
    record.httpStatus = result.statusCode;
    if (result.isAccessible && record.serviceType == ServiceType::unknown())
        record.serviceType = ServiceType::webServer();
    if (result.serverInfo)
        record.metadata.insert(QStringLiteral("probeResult"), *result.serverInfo);
}

/// `a * b + c`; a result beyond 64 bits ends the program.
qint64 multiplyAndAdd(qint64 a, qint64 b, qint64 c)
{
    qint64 product = 0;
    qint64 sum = 0;
    if (__builtin_mul_overflow(a, b, &product) || __builtin_add_overflow(product, c, &sum))
        qFatal("tidewick: an elapsed time is beyond 64 bits");
    return sum;
}

} // namespace

PortInfo enrichPortInfo(PortInfo record, const SystemInterfaces &system,
                        const std::stop_token &stop)
{
    const ProcessQueries queries(system, record.pid(), stop);
    addCommandLine(record, queries);
    addMemoryAndCpu(record, queries);
    addStartTime(record, queries);
    addWorkingDirectory(record, queries);
    record.serviceType = detectServiceType(record.port(), record.command(), record.fullCommand);
    addHttp(record, system, stop);
    return record;
}

double parseElapsedTime(QStringView text)
{
    if (!text.contains(u'-'))
        return parseHMS(text);
    const auto pieces = text.split(u'-', Qt::SkipEmptyParts);
    const auto days = pieces.isEmpty() ? std::nullopt : parseInteger(pieces[0]);
    if (pieces.size() != 2 || !days)
        return 0;
    constexpr qint64 secondsInADay = 86400;
    return double(multiplyAndAdd(*days, secondsInADay, 0)) + parseHMS(pieces[1]);
}

double parseHMS(QStringView text)
{
    QList<qint64> numbers;
    for (const QStringView piece : text.split(u':', Qt::SkipEmptyParts)) {
        if (const auto number = parseInteger(piece))
            numbers.append(*number);
    }
    if (numbers.size() > 3)
        return 0;
    qint64 seconds = 0;
    for (const qint64 number : numbers)
        seconds = multiplyAndAdd(seconds, 60, number);
    return double(seconds);
}

} // namespace tidewick
