#include "scan/SocketScan.h"

#include "products/DevelopmentProcess.h"
#include "scan/Enrichment.h"
#include "scan/Logging.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

#include <QElapsedTimer>
#include <QSet>
#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>

namespace tidewick
{
namespace
{

struct HostAndPort
{
    QString host;
    QStringView port;
};

/// Splits lsof's NAME column, "host:port" or "[IPv6 host]:port".
std::optional<HostAndPort> splitName(QStringView name)
{
    const QStringView bracketEnd = u"]:";
    if (name.contains(bracketEnd)) {
        const auto pieces = name.split(bracketEnd);
        if (pieces.size() != 2)
            return std::nullopt;
        return HostAndPort{pieces[0].toString().remove(QLatin1Char('[')), pieces[1]};
    }
    const auto pieces = name.split(u':'); // a single one is not both a local host and a number
    return HostAndPort{pieces.first().toString(), pieces.last()};
}

bool isLocalHost(QStringView host)
{
    constexpr std::array<QStringView, 6> accepted{u"*",         u"0.0.0.0", u"127.0.0.1",
                                                  u"localhost", u"::1",     u"::"};
    return std::find(accepted.begin(), accepted.end(), host) != accepted.end();
}

std::optional<PortInfo> parseLine(QStringView line)
{
    const auto columns = line.split(u' ', Qt::SkipEmptyParts);
    if (columns.size() < 9)
        return std::nullopt;
    const auto name = splitName(columns[8]);
    if (!name)
        return std::nullopt;
    const auto port = parseInteger(name->port);
    if (!port || !isLocalHost(name->host))
        return std::nullopt;
    return PortInfo(*port, columns[1].toString(), columns[0].toString(), columns[2].toString(),
                    QStringLiteral("localhost"));
}

/// Keeps one copy of each text in the rows of a scan, because a command line may be 128 KB long and
/// one process may have thousands of rows.
class SharedTexts
{
public:
    void share(PortInfo &record)
    {
        share(record.fullCommand);
        share(record.workingDirectory);
        for (QString &value : record.metadata)
            share(value);
    }

private:
    void share(QString &text) { text = *m_texts.insert(text); }

    QSet<QString> m_texts;
};

} // namespace

QList<PortInfo> fetchRunningPorts(const SystemInterfaces &system, const std::stop_token &stop)
{
    QElapsedTimer duration;
    duration.start();
    const QStringList arguments{QStringLiteral("-i"), QStringLiteral("TCP"), QStringLiteral("-P"),
                                QStringLiteral("-n"), QStringLiteral("-sTCP:LISTEN")};
    const ToolResult lsof = system.tools->run(presentTool(system.toolTable.lsof), arguments, stop);
    if (lsof.isTruncated)
        throw std::length_error("lsof: the list of listeners is too long");
    const auto listed = parsePortInfo(decodeUtf8(lsof.standardOutput).value_or(QString()));
    QList<PortInfo> kept;
    for (const PortInfo &record : listed) {
        if (isDevelopmentProcess(record))
            kept.append(record);
    }
    SharedTexts texts;
    for (PortInfo &record : kept) {
        record = enrichPortInfo(record, system, stop);
        texts.share(record);
    }
    qCDebug(scanLog) << "scan of" << listed.size() << "ports," << kept.size() << "shown,"
                     << duration.elapsed() << "ms";
    return kept;
}

QList<PortInfo> parsePortInfo(const QString &lsofOutput)
{
    QList<PortInfo> records;
    QSet<qint64> seenPorts;
    const auto lines = splitLines(lsofOutput);
    for (const QStringView line : lines.sliced(1)) {
        auto record = parseLine(line);
        if (!record || seenPorts.contains(record->port()))
            continue;
        seenPorts.insert(record->port());
        records.append(*std::move(record));
    }
    std::stable_sort(records.begin(), records.end(),
                     [](const PortInfo &a, const PortInfo &b) { return a.port() < b.port(); });
    return records;
}

bool isDevelopmentProcess(const PortInfo &record)
{
    return isDevelopmentProcessName(record.command().toLower().toStdString());
}

} // namespace tidewick
