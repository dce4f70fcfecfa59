#include "scan/Logging.h"
#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

using namespace tidewick;

namespace
{

void scanOnce()
{
    const auto tools = std::make_shared<RecordingToolRunner>(
        [](const RecordingToolRunner::Call & /*call*/, const auto & /*stop*/) -> ToolResult {
            return {"header\n"
                    "python3 3 a 3u IPv4 0x1 0t0 TCP *:8000 (LISTEN)\n"
                    "nginx 2 a 3u IPv4 0x1 0t0 TCP *:8080 (LISTEN)\n"};
        });
    fetchRunningPorts({tools, ToolTable::stock(), RecordingHttpClient::refusing()}, {});
}

void runShell(const char *script)
{
    ProcessToolRunner().run(QStringLiteral("/bin/sh"),
                            {QStringLiteral("-c"), QLatin1String(script)}, {});
}

} // namespace

TEST(ScanLog, isSilentByDefault)
{
    const CapturedLog log("");
    scanOnce();
    runShell("sleep 0.3");
    EXPECT_EQ(CapturedLog::lines(), QStringList());
}

TEST(ScanLog, tellsTheCountsAndTheDurationOfAScan)
{
    const CapturedLog log("tidewick.*=true");
    scanOnce();
    ASSERT_EQ(CapturedLog::lines().size(), 1);
    EXPECT_TRUE(
        QRegularExpression(QStringLiteral("^tidewick.scan: scan of 2 ports, 1 shown, \\d+ ms$"))
            .match(CapturedLog::lines()[0])
            .hasMatch())
        << CapturedLog::lines()[0].toStdString();
}

TEST(ScanLog, namesToolsThatAreSlowOrFailAndNoOthers)
{
    const CapturedLog log("tidewick.*=true");
    for (int run = 0; run < 10; ++run)
        runShell("exit 0");
    EXPECT_LT(CapturedLog::lines().size(), 10)
        << "a loaded machine makes some of them slow, not all";
    CapturedLog::lines().clear();
    for (const auto &[script, end] :
         {std::pair("sleep 0.3", "ended with 0 after"), std::pair("exit 3", "ended with 3 after"),
          std::pair("kill -9 $$", "ended with -1 after")}) {
        CapturedLog::lines().clear();
        runShell(script);
        ASSERT_EQ(CapturedLog::lines().size(), 1) << script;
        const QString line = CapturedLog::lines()[0];
        EXPECT_TRUE(line.startsWith(QStringLiteral("tidewick.scan: tool \"/bin/sh\"")) &&
                    line.contains(QLatin1String(end)))
            << line.toStdString();
    }
}
