// lsof's output is any text.

#include "scan/SocketScan.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

#include <algorithm>
#include <limits>

using namespace tidewick;

namespace
{

/// A scan where ps and the second lsof print nothing, and nothing answers HTTP.
QList<PortInfo> scanned(const QByteArray &list)
{
    const auto answer = [&list](const RecordingToolRunner::Call &call, const auto &) {
        const bool isList = call.arguments.contains(QStringLiteral("-sTCP:LISTEN"));
        return ToolResult{isList ? list : QByteArray(), 0};
    };
    const SystemInterfaces system{std::make_shared<RecordingToolRunner>(answer), ToolTable::stock(),
                                  RecordingHttpClient::refusing()};
    return fetchRunningPorts(system, {});
}

/// The columns that a record is made of stand in one line, where lsof prints them.
bool isRow(QStringView line, const PortInfo &record)
{
    const auto columns = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (columns.size() < 9 || columns[0] != record.command() || columns[1] != record.pid() ||
        columns[2] != record.user())
        return false;
    const auto colon = columns[8].lastIndexOf(QLatin1Char(':'));
    return colon >= 0 && parseInteger(columns[8].sliced(colon + 1)) == record.port();
}

} // namespace

/// What stands before and after it takes no row along, but for one of the same port before it.
void checkKept(const QString &text)
{
    const QString row = QStringLiteral("\nnode 4242 ana 3u IPv4 77 0t0 TCP *:3000 (LISTEN)\n");
    for (const QString &all : {text + row, QStringLiteral("COMMAND") + row + text}) {
        const auto records = parsePortInfo(all);
        promise(std::any_of(records.begin(), records.end(),
                            [](const PortInfo &record) { return record.port() == 3000; }),
                "no row is lost");
    }
}

QByteArray validInput(Random &random)
{
    QByteArray table = "COMMAND PID USER FD TYPE DEVICE SIZE/OFF NODE NAME\n";
    for (auto rows = 1 + random() % 8; rows > 0; --rows)
        table += oneOf(random, {"node", "python3.11", "docker-pr", "postgres", "sshd", "\\x20x"}) +
                 "  " + numberBelow(random, 99'999) + ' ' + oneOf(random, {"ana", "root", "1000"}) +
                 "   3u  " + oneOf(random, {"IPv4", "IPv6"}) + ' ' + numberBelow(random, 9999) +
                 " 0t0 TCP " + oneOf(random, {"*", "127.0.0.1", "[::1]", "[fe80::1]"}) + ':' +
                 numberBelow(random, 65'536) + " (LISTEN)\n";
    return table;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    const auto text = decodeUtf8(bytes);
    const QList<PortInfo> shown = scanned(bytes);
    promise(text || shown.isEmpty(), "what is no UTF-8 is no list");
    if (!text)
        return 0;
    checkKept(*text);
    qsizetype known = 0;
    const auto lines = splitLines(*text);
    qint64 last = std::numeric_limits<qint64>::min(); // lsof prints no sign, but one would be read
    for (const PortInfo &record : parsePortInfo(*text)) {
        promise(record.port() > last, "each port once, ascending");
        promise(record.address() == QStringLiteral("localhost"), "every address is localhost");
        promise(std::any_of(lines.begin() + 1, lines.end(),
                            [&record](QStringView line) { return isRow(line, record); }),
                "a record is a whole row");
        known += isDevelopmentProcess(record) ? 1 : 0;
        last = record.port();
    }
    countRecords(size_t(parsePortInfo(*text).size()));
    promise(shown.size() == known, "every development process is shown, and nothing else");
    return 0;
}
