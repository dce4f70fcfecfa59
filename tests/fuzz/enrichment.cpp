// What ps and lsof print of one process is any bytes: four texts, separated by NULs.

#include "scan/Enrichment.h"
#include "scan/SystemInterfaces.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"

#include <cmath>

using namespace tidewick;

QByteArray validInput(Random &random)
{
    return oneOf(random,
                 {"node server.js", "python3 -m http.server 8000", "/usr/bin/ruby bin/rails s"}) +
           '\n' + '\0' + ' ' + numberBelow(random, 9'999'999) + "  " + numberBelow(random, 999) +
           '.' + numberBelow(random, 10) + '\n' + '\0' + "  " + numberBelow(random, 99) + "-0" +
           numberBelow(random, 10) + ':' + numberBelow(random, 60) + ':' + numberBelow(random, 60) +
           '\n' + '\0' + 'p' + numberBelow(random, 99'999) + "\nfcwd\nn" +
           oneOf(random, {"/", "/home/ana/shop", "/srv/a b", "/tmp/\\n", "/tmp/caf\xc3\xa9"}) +
           '\n';
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 4);
    if (isBeyondAnyLife(texts[2]))
        return 0;
    const auto answer = [&texts](const RecordingToolRunner::Call &call, const auto &) {
        const QString last = call.arguments.last();
        if (last == QStringLiteral("command="))
            return ToolResult{texts[0], 0};
        if (last == QStringLiteral("rss=,%cpu="))
            return ToolResult{texts[1], 0};
        return ToolResult{last == QStringLiteral("etime=") ? texts[2] : texts[3], 0};
    };
    const SystemInterfaces system{std::make_shared<RecordingToolRunner>(answer), ToolTable::stock(),
                                  RecordingHttpClient::refusing()};
    const PortInfo before(41234, QStringLiteral("7"), QStringLiteral("node"), QStringLiteral("ada"),
                          QStringLiteral("localhost"));
    const PortInfo after = enrichPortInfo(before, system, {});
    countRecords((after.fullCommand.isEmpty() ? 0 : 1) + (after.memoryUsage > 0 ? 1 : 0) +
                 (after.startTime ? 1 : 0) + (after.workingDirectory.isEmpty() ? 0 : 1));
    promise(after.id() == before.id() && after.port() == before.port() &&
                after.pid() == before.pid() && after.command() == before.command() &&
                after.user() == before.user(),
            "what the scan found stays");
    promise(texts[0].contains(after.fullCommand.toUtf8()), "a command line is what ps printed");
    promise(std::isfinite(after.memoryUsage) && std::isfinite(after.cpuUsage), "loads are numbers");
    promise(after.workingDirectory.isEmpty() || texts[3].contains('\\') ||
                texts[3].contains('n' + after.workingDirectory.toUtf8()),
            "a directory without escapes is what lsof printed");
    promise(!after.workingDirectory.contains(QChar::Null), "a directory is a name");
    promise(!after.startTime || after.startTime->isValid(), "a start time is a time");
    promise(!after.isHttpAccessible, "nothing answered");
    return 0;
}
