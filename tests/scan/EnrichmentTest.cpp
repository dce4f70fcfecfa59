#include "scan/Enrichment.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <map>

using namespace tidewick;

namespace
{

const QString commandQuery = QStringLiteral("-p 812 -o command=");
const QString memoryQuery = QStringLiteral("-p 812 -o rss=,%cpu=");
const QString elapsedQuery = QStringLiteral("-p 812 -o etime=");
const QString directoryQuery = QStringLiteral("-p 812 -a -d cwd -F n");

HttpOutcome refused()
{
    return HttpError{HttpError::cannotConnect};
}

HttpOutcome answering(int status, const char *headerLine)
{
    HttpResponse response;
    response.status = status;
    response.headers.addLine(headerLine);
    return response;
}

/// One record enriched by tools and a server that answer as set up here; by default the tools
/// print nothing and no server answers.
class EnrichmentTest : public testing::Test
{
protected:
    PortInfo enrich(const PortInfo &record)
    {
        testing::internal::CaptureStdout();
        PortInfo enriched = enrichPortInfo(record, {tools, ToolTable::stock(), http}, {});
        printed = testing::internal::GetCapturedStdout();
        return enriched;
    }
    PortInfo enrich(const char *command = "node", qint64 port = 1)
    {
        return enrich(PortInfo(port, QStringLiteral("812"), QString::fromUtf8(command),
                               QStringLiteral("alice"), QStringLiteral("localhost")));
    }

    std::map<QString, QByteArray> outputs; // by the arguments, joined
    QStringList missing;                   // the queries whose tool cannot be started
    HttpOutcome httpOutcome = refused();
    std::string printed;

    std::shared_ptr<RecordingToolRunner> tools = std::make_shared<RecordingToolRunner>(
        [this](const RecordingToolRunner::Call &call, const auto &) {
            const QString query = call.arguments.join(u' ');
            if (missing.contains(query))
                throw ToolStartError(QStringLiteral("no such tool"));
            return ToolResult{outputs[query], 0};
        });
    std::shared_ptr<RecordingHttpClient> http =
        std::make_shared<RecordingHttpClient>([this](const auto &) { return httpOutcome; });
};

const QString framework = QStringLiteral("framework");
const QString probeResult = QStringLiteral("probeResult");

} // namespace

TEST_F(EnrichmentTest, runsItsFourQueriesInOrder)
{
    enrich();
    const auto calls = tools->calls();
    ASSERT_EQ(calls.size(), 4U);
    const QStringList queries{commandQuery, memoryQuery, elapsedQuery, directoryQuery};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(calls[i].arguments.join(u' '), queries[qsizetype(i)]);
        EXPECT_TRUE(calls[i].program.endsWith(i < 3 ? u"/bin/ps" : u"bin/lsof"));
    }
}

TEST_F(EnrichmentTest, keepsTheIdentityFields)
{
    const PortInfo record(3000, QStringLiteral("812"), QStringLiteral("node"),
                          QStringLiteral("alice"), QStringLiteral("localhost"));
    const PortInfo enriched = enrich(record);
    EXPECT_EQ(enriched.id(), record.id());
    EXPECT_EQ(enriched.port(), 3000);
    EXPECT_EQ(enriched.pid(), QStringLiteral("812"));
    EXPECT_EQ(enriched.command(), QStringLiteral("node"));
}

TEST_F(EnrichmentTest, commandLineIsTrimmedAndGivesTheMetadata)
{
    outputs[commandQuery] = "  node /x/node_modules/.bin/vite dev.js \n";
    const PortInfo record = enrich();
    EXPECT_EQ(record.fullCommand, QStringLiteral("node /x/node_modules/.bin/vite dev.js"));
    EXPECT_EQ(record.metadata.value(framework), QStringLiteral("Vite"));
    EXPECT_EQ(record.metadata.value(QStringLiteral("script")), QStringLiteral("dev.js"));
}

TEST_F(EnrichmentTest, metadataComesFromTheTrimmedCommandLine)
{
    outputs[commandQuery] = "node a.js\n";
    EXPECT_EQ(enrich().metadata.value(QStringLiteral("script")), QStringLiteral("a.js"));
}

TEST_F(EnrichmentTest, newCommandLineDiscardsTheEarlierMetadata)
{
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.metadata.insert(QStringLiteral("old"), QStringLiteral("old"));
    EXPECT_TRUE(enrich(record).metadata.isEmpty());
}

TEST_F(EnrichmentTest, processThatHasExitedKeepsWhatItsNameTells)
{
    const PortInfo record = enrich("deno");
    EXPECT_TRUE(record.fullCommand.isEmpty());
    EXPECT_EQ(record.metadata.value(framework), QStringLiteral("Deno"));
    EXPECT_EQ(record.memoryUsage, 0);
    EXPECT_FALSE(record.startTime);
    EXPECT_TRUE(record.workingDirectory.isEmpty());
    EXPECT_EQ(record.serviceType, ServiceType::webServer());
    EXPECT_EQ(http->requests().size(), 9U);
    EXPECT_EQ(printed, "");
}

TEST_F(EnrichmentTest, memoryIsInMegabytesAndCpuAsPrinted)
{
    outputs[memoryQuery] = "  123904  12.5\n";
    const PortInfo record = enrich();
    EXPECT_EQ(record.memoryUsage, 121.0);
    EXPECT_EQ(record.cpuUsage, 12.5);
}

TEST_F(EnrichmentTest, memoryAloneLeavesCpu)
{
    outputs[memoryQuery] = "123904";
    EXPECT_EQ(enrich().memoryUsage, 121.0);
    EXPECT_EQ(enrich().cpuUsage, 0);
}

TEST_F(EnrichmentTest, unreadableMemoryStillSetsCpu)
{
    outputs[memoryQuery] = "x 3.0";
    EXPECT_EQ(enrich().memoryUsage, 0);
    EXPECT_EQ(enrich().cpuUsage, 3.0);
}

TEST_F(EnrichmentTest, unreadableCpuAndFurtherPiecesAreIgnored)
{
    outputs[memoryQuery] = "2048 1,5 7";
    EXPECT_EQ(enrich().memoryUsage, 2);
    EXPECT_EQ(enrich().cpuUsage, 0);
}

TEST_F(EnrichmentTest, unreadableFiguresLeaveWhatTheRecordSaid)
{
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.memoryUsage = 7;
    record.cpuUsage = 8;
    outputs[memoryQuery] = "x y";
    EXPECT_EQ(enrich(record).memoryUsage, 7);
    EXPECT_EQ(enrich(record).cpuUsage, 8);
}

TEST_F(EnrichmentTest, startTimeIsNowMinusTheElapsedTime)
{
    outputs[elapsedQuery] = "   02:01:05\n";
    const QDateTime before = QDateTime::currentDateTime();
    const PortInfo record = enrich();
    const QDateTime after = QDateTime::currentDateTime();
    ASSERT_TRUE(record.startTime);
    EXPECT_GE(*record.startTime, before.addSecs(-7265));
    EXPECT_LE(*record.startTime, after.addSecs(-7265));
}

TEST_F(EnrichmentTest, startTimeIsToldAfterOneSecond)
{
    outputs[elapsedQuery] = "00:01";
    EXPECT_TRUE(enrich().startTime);
}

TEST_F(EnrichmentTest, zeroAndUnreadableElapsedTimesLeaveTheStartTimeUnset)
{
    for (const char *text : {"00:00", "-05", "1-2-3", "x", "", "0-00:00:00"}) {
        outputs[elapsedQuery] = text;
        EXPECT_FALSE(enrich().startTime) << text;
    }
}

TEST_F(EnrichmentTest, elapsedTimeBeyondTheCalendarIsNoCrash)
{
    for (const char *text : {"9223372036854775807", "106751991167300-15:30:07"}) {
        outputs[elapsedQuery] = text;
        const PortInfo record = enrich();
        ASSERT_TRUE(record.startTime);
        EXPECT_TRUE(record.startTime->isValid());
        EXPECT_LT(*record.startTime, QDateTime::currentDateTime().addYears(-1000));
    }
}

TEST_F(EnrichmentTest, workingDirectoryIsTheFirstNameField)
{
    outputs[directoryQuery] = "p1234\nfcwd\nn/Users/dev/app\nn/second\n";
    EXPECT_EQ(enrich().workingDirectory, QStringLiteral("/Users/dev/app"));
}

TEST_F(EnrichmentTest, lineThatOnlyHoldsAnNIsNoNameField)
{
    outputs[directoryQuery] = "p1n\nfcwdn\nn/srv\n";
    EXPECT_EQ(enrich().workingDirectory, QStringLiteral("/srv"));
}

TEST_F(EnrichmentTest, workingDirectoryKeepsItsSpacesAndEndsAtACarriageReturn)
{
    outputs[directoryQuery] = "p1\nfcwd\nn/Users/my app \r\n";
    EXPECT_EQ(enrich().workingDirectory, QStringLiteral("/Users/my app "));
}

TEST_F(EnrichmentTest, workingDirectoryIsWhatLsofEscaped)
{
    outputs[directoryQuery] = "p1\nfcwd\nn/a\\nb\\t\\\\n \\xc3\\xa9\n";
    EXPECT_EQ(enrich().workingDirectory, QStringLiteral("/a\nb\t\\n \u00e9"));
    // Either a caret and a letter, or a control character.
    outputs[directoryQuery] = "p1\nfcwd\nn/a^A\n";
    EXPECT_EQ(enrich().workingDirectory, QString());
}

TEST_F(EnrichmentTest, outputWithoutANameFieldLeavesTheWorkingDirectory)
{
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.workingDirectory = QStringLiteral("/kept");
    outputs[directoryQuery] = "p1234\nfcwd\n";
    EXPECT_EQ(enrich(record).workingDirectory, QStringLiteral("/kept"));
}

TEST_F(EnrichmentTest, outputThatIsNotUtf8ChangesNothing)
{
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.fullCommand = QStringLiteral("kept");
    record.metadata.insert(QStringLiteral("kept"), {});
    record.memoryUsage = 1;
    for (const QString &query : {commandQuery, memoryQuery, elapsedQuery, directoryQuery})
        outputs[query] = "n2048 1 \xff";
    const PortInfo enriched = enrich(record);
    EXPECT_EQ(enriched.fullCommand, QStringLiteral("kept"));
    EXPECT_TRUE(enriched.metadata.contains(QStringLiteral("kept")));
    EXPECT_EQ(enriched.memoryUsage, 1);
    EXPECT_FALSE(enriched.startTime);
    EXPECT_TRUE(enriched.workingDirectory.isEmpty());
}

TEST_F(EnrichmentTest, toolThatCannotBeStartedIsOneLineAStepAndTheNextStepRuns)
{
    missing = {commandQuery, memoryQuery, elapsedQuery, directoryQuery};
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.fullCommand = QStringLiteral("bin/rails s");
    const PortInfo enriched = enrich(record);
    EXPECT_EQ(printed, "Error getting process info: no such tool\n"
                       "Error getting memory/CPU: no such tool\n"
                       "Error getting elapsed time: no such tool\n"
                       "Error getting working directory: no such tool\n");
    EXPECT_EQ(enriched.fullCommand, QStringLiteral("bin/rails s"));
    EXPECT_EQ(enriched.serviceType, ServiceType::webServer()); // by the command line it came with
    EXPECT_EQ(http->requests().size(), 9U);
}

TEST_F(EnrichmentTest, typeComesFromTheNewCommandLine)
{
    outputs[commandQuery] = "java -jar tomcat.jar";
    EXPECT_EQ(enrich("java").serviceType, ServiceType::webServer());
}

TEST_F(EnrichmentTest, unknownTypeThatAnswersIsAWebServer)
{
    httpOutcome = answering(404, "X: y");
    const PortInfo record = enrich("x");
    EXPECT_EQ(record.serviceType, ServiceType::webServer());
    EXPECT_TRUE(record.isHttpAccessible);
    EXPECT_EQ(record.httpStatus, 404);
    EXPECT_EQ(enrich("x", 1).serviceType, ServiceType::webServer());
}

TEST_F(EnrichmentTest, otherTypesKeepTheirTypeWhenTheyAnswer)
{
    httpOutcome = answering(200, "X: y");
    EXPECT_EQ(enrich("postgres").serviceType, ServiceType::database(QStringLiteral("PostgreSQL")));
    EXPECT_EQ(enrich("docker-proxy").serviceType, ServiceType::container());
}

TEST_F(EnrichmentTest, serverTextJoinsTheMetadataAndLeavesTheFramework)
{
    outputs[commandQuery] = "node next dev";
    httpOutcome = answering(200, "Server: Vite");
    const PortInfo record = enrich();
    EXPECT_EQ(record.metadata.value(framework), QStringLiteral("Next.js"));
    EXPECT_EQ(record.metadata.value(probeResult), QStringLiteral("Vite"));
}

TEST_F(EnrichmentTest, serverTextReplacesAnEarlierOne)
{
    missing = {commandQuery};
    httpOutcome = answering(200, "Server: new");
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.metadata.insert(probeResult, QStringLiteral("old"));
    EXPECT_EQ(enrich(record).metadata.value(probeResult), QStringLiteral("new"));
}

TEST_F(EnrichmentTest, silentListenerOverwritesWhatTheRecordSaid)
{
    PortInfo record(1, QStringLiteral("812"), QStringLiteral("x"), {}, {});
    record.isHttpAccessible = true;
    record.httpStatus = 200;
    const PortInfo enriched = enrich(record);
    EXPECT_FALSE(enriched.isHttpAccessible);
    EXPECT_FALSE(enriched.httpStatus);
    EXPECT_FALSE(enriched.metadata.contains(probeResult));
    EXPECT_EQ(enriched.serviceType, ServiceType::unknown());
}

TEST_F(EnrichmentTest, stopEndsItBeforeTheNextToolOrRequest)
{
    std::stop_source stopped;
    stopped.request_stop();
    enrichPortInfo(PortInfo(1, QStringLiteral("812"), QStringLiteral("x"), {}, {}),
                   {tools, ToolTable::stock(), http}, stopped.get_token());
    EXPECT_TRUE(tools->calls().empty());
    EXPECT_TRUE(http->requests().empty());
}

struct ElapsedRow
{
    const char *name;
    const char16_t *text;
    double seconds;
};

class ElapsedTime : public testing::TestWithParam<ElapsedRow>
{
};

TEST_P(ElapsedTime, isReadAsSeconds)
{
    EXPECT_EQ(parseElapsedTime(GetParam().text), GetParam().seconds);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ElapsedTime,
    testing::Values(ElapsedRow{"seconds", u"05", 5}, ElapsedRow{"minutes", u"01:05", 65},
                    ElapsedRow{"hours", u"02:01:05", 7265},
                    ElapsedRow{"days", u"3-02:01:05", 266465}, ElapsedRow{"zero", u"00:00", 0},
                    ElapsedRow{"threeDayPieces", u"1-2-3", 0}, ElapsedRow{"emptyDays", u"-05", 0},
                    ElapsedRow{"daysAlone", u"3-", 0}, ElapsedRow{"hyphenAlone", u"-", 0},
                    ElapsedRow{"daysNotANumber", u"x-01:00", 0},
                    ElapsedRow{"doubledHyphen", u"1--01:00", 86460},
                    ElapsedRow{"numbersCloseUp", u"ab:05", 5},
                    ElapsedRow{"fourNumbers", u"1:2:3:4", 0},
                    ElapsedRow{"fourPiecesThreeNumbers", u"x:1:2:3", 3723},
                    ElapsedRow{"emptyPieces", u"::05", 5}, ElapsedRow{"empty", u"", 0},
                    ElapsedRow{"noNumber", u"abc", 0},
                    ElapsedRow{"numberBeyond64BitsIsNone", u"99999999999999999999:05", 5}),
    rowName);

TEST(ElapsedTimeDeathTest, sumBeyond64BitsEndsTheProgram)
{
    EXPECT_DEATH(parseElapsedTime(u"9223372036854775807-00:00"), "beyond 64 bits");
    EXPECT_DEATH(parseHMS(u"9223372036854775807:00:00"), "beyond 64 bits");
}
