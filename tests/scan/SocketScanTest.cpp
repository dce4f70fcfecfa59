#include "scan/SocketScan.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "tests/support/TestText.h"
#include "text/Utf8.h"

#include <gtest/gtest.h>

#include <QFile>

#include <random>
#include <stdexcept>

using namespace tidewick;

namespace
{

const QString header = QStringLiteral("COMMAND PID USER FD TYPE DEVICE SIZE/OFF NODE NAME\n");

/// lsof's output with one line for each of `names`, all of one node process.
QString outputWithNames(const QStringList &names)
{
    QString output = header;
    for (const QString &name : names)
        output += QStringLiteral("node 812 alice 23u IPv4 0x1a2b 0t0 TCP %1 (LISTEN)\n").arg(name);
    return output;
}

QList<qint64> ports(const QList<PortInfo> &records)
{
    QList<qint64> result;
    for (const PortInfo &record : records)
        result.append(record.port());
    return result;
}

QList<PortInfo> parse(const char *output)
{
    return parsePortInfo(QString::fromUtf8(output));
}

SystemInterfaces systemWith(const std::shared_ptr<RecordingToolRunner> &tools)
{
    return {tools, ToolTable::stock(), RecordingHttpClient::refusing()};
}

/// A runner whose lsof prints `output` and ends with `exitStatus`.
std::shared_ptr<RecordingToolRunner> lsofPrinting(const QByteArray &output, int exitStatus = 0)
{
    return std::make_shared<RecordingToolRunner>([output, exitStatus](const auto &, const auto &) {
        return ToolResult{output, exitStatus};
    });
}

} // namespace

TEST(ParsePortInfo, emptyOutputYieldsNothing)
{
    EXPECT_TRUE(parsePortInfo({}).isEmpty());
}

TEST(ParsePortInfo, headerAloneYieldsNothing)
{
    EXPECT_TRUE(parsePortInfo(header).isEmpty());
    EXPECT_TRUE(parsePortInfo(header.trimmed()).isEmpty());
}

TEST(ParsePortInfo, firstLineIsSkippedWhateverItSays)
{
    EXPECT_TRUE(parse("node 812 alice 23u IPv4 0x1a2b 0t0 TCP *:3000 (LISTEN)\n").isEmpty());
}

TEST(ParsePortInfo, pidIsKeptAsItIsPrinted)
{
    for (const QString &pid : {QStringLiteral("-1"), QStringLiteral("0"), QStringLiteral("1x"),
                               QStringLiteral("١"), QStringLiteral("4294967295")}) {
        const auto records = parsePortInfo(
            header + QStringLiteral("node %1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n").arg(pid));
        ASSERT_EQ(records.size(), 1) << pid.toStdString();
        EXPECT_EQ(records.first().pid(), pid);
    }
}

TEST(ParsePortInfo, lineYieldsARecordWithTheScansFieldsOnly)
{
    const auto records = parsePortInfo(outputWithNames({QStringLiteral("*:3000")}));
    ASSERT_EQ(records.size(), 1);
    const PortInfo &record = records.first();
    EXPECT_EQ(record.port(), 3000);
    EXPECT_EQ(record.pid(), QStringLiteral("812"));
    EXPECT_EQ(record.command(), QStringLiteral("node"));
    EXPECT_EQ(record.user(), QStringLiteral("alice"));
    EXPECT_EQ(record.address(), QStringLiteral("localhost"));
    EXPECT_TRUE(record.fullCommand.isEmpty());
    EXPECT_EQ(record.serviceType, ServiceType::unknown());
}

TEST(ParsePortInfo, sameOutputTwiceYieldsFreshIds)
{
    const QString output = outputWithNames({QStringLiteral("*:3000")});
    EXPECT_NE(parsePortInfo(output).first().id(), parsePortInfo(output).first().id());
}

TEST(ParsePortInfo, samePortOnBothFamiliesYieldsTheFirstLine)
{
    const auto records = parse("header\n"
                               "node 1 first 23u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n"
                               "node 1 second 24u IPv6 0x2 0t0 TCP [::1]:3000 (LISTEN)\n");
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records.first().user(), QStringLiteral("first"));
}

TEST(ParsePortInfo, twoProcessesOnOnePortYieldTheFirstLine)
{
    const auto records = parse("header\n"
                               "node 7 a 23u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n"
                               "node 8 a 23u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n");
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records.first().pid(), QStringLiteral("7"));
}

TEST(ParsePortInfo, lineDroppedForItsHostDoesNotClaimItsPort)
{
    const auto records = parse("header\n"
                               "node 7 a 23u IPv4 0x1 0t0 TCP 192.168.1.5:3000 (LISTEN)\n"
                               "node 8 a 23u IPv4 0x1 0t0 TCP 127.0.0.1:3000 (LISTEN)\n");
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records.first().pid(), QStringLiteral("8"));
}

TEST(ParsePortInfo, recordsComeAscendingByPort)
{
    const QStringList names{QStringLiteral("*:8080"), QStringLiteral("*:3000"),
                            QStringLiteral("*:5432")};
    EXPECT_EQ(ports(parsePortInfo(outputWithNames(names))), QList<qint64>({3000, 5432, 8080}));
}

TEST(ParsePortInfo, lineOfEightColumnsIsDropped)
{
    EXPECT_TRUE(parse("header\nnode 812 alice 23u IPv4 0x1a2b 0t0 *:3000\n").isEmpty());
}

TEST(ParsePortInfo, lineOfNineColumnsIsKept)
{
    EXPECT_EQ(ports(parse("header\nnode 812 alice 23u IPv4 0x1a2b 0t0 TCP *:3000\n")),
              QList<qint64>({3000}));
}

TEST(ParsePortInfo, runsOfSpacesAreOneSeparator)
{
    EXPECT_EQ(
        ports(parse("header\n  node   812 alice 23u IPv4 0x1 0t0 TCP   *:3000   (LISTEN) \n")),
        QList<qint64>({3000}));
}

TEST(ParsePortInfo, tabsAreNoSeparators)
{
    EXPECT_TRUE(
        parse("header\nnode\t812\talice\t23u\tIPv4\t0x1\t0t0\tTCP\t*:3000\t(LISTEN)\n").isEmpty());
}

TEST(ParsePortInfo, everyNewlineCharacterEndsALine)
{
    for (const char16_t newline : {u'\n', u'\v', u'\f', u'\r', u'\u0085', u'\u2028', u'\u2029'}) {
        const QString line = QStringLiteral("node 1 a 2u IPv4 0x1 0t0 TCP *:%1 (LISTEN)");
        const QString output = QStringLiteral("header") + QChar(newline) + line.arg(3000) +
                               QChar(newline) + line.arg(3001);
        EXPECT_EQ(ports(parsePortInfo(output)), QList<qint64>({3000, 3001})) << int(newline);
    }
}

TEST(ParsePortInfo, carriageReturnBeforeLineFeedOnlyAddsAnEmptyLine)
{
    EXPECT_EQ(ports(parsePortInfo(outputWithNames({QStringLiteral("*:3000")})
                                      .replace(QLatin1String("\n"), QLatin1String("\r\n")))),
              QList<qint64>({3000}));
}

struct NameRow
{
    const char *name;
    const char *column; // lsof's NAME column
    std::optional<qint64> port;
};

class NameColumn : public testing::TestWithParam<NameRow>
{
};

TEST_P(NameColumn, isKeptOrDropped)
{
    const auto found =
        ports(parsePortInfo(outputWithNames({QString::fromUtf8(GetParam().column)})));
    EXPECT_EQ(found, GetParam().port ? QList<qint64>({*GetParam().port}) : QList<qint64>());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NameColumn,
    testing::Values(
        NameRow{"anyAddress", "*:3000", 3000}, NameRow{"anyIPv4", "0.0.0.0:3000", 3000},
        NameRow{"loopbackIPv4", "127.0.0.1:3000", 3000},
        NameRow{"localhost", "localhost:3000", 3000}, NameRow{"loopbackIPv6", "[::1]:5173", 5173},
        NameRow{"anyIPv6", "[::]:8080", 8080}, NameRow{"bracketedStar", "[*]:8080", 8080},
        NameRow{"lanAddress", "192.168.1.5:8080", std::nullopt},
        NameRow{"otherLoopback", "127.0.0.2:8080", std::nullopt},
        NameRow{"linkLocalWithZone", "[fe80::1%lo0]:8080", std::nullopt},
        NameRow{"otherIPv6", "[2001:db8::1]:8080", std::nullopt},
        NameRow{"upperCaseHost", "LOCALHOST:3000", std::nullopt},
        NameRow{"emptyHost", ":3000", std::nullopt},
        NameRow{"unbracketedIPv6", "::1:3000", std::nullopt},
        NameRow{"firstAndLastPieceCount", "*:x:3000", 3000},
        NameRow{"noColon", "3000", std::nullopt}, NameRow{"emptyPort", "*:", std::nullopt},
        NameRow{"emptyBracketedPort", "[::1]:", std::nullopt},
        NameRow{"twoBracketedPieces", "[::1]:[::1]:3000", std::nullopt},
        NameRow{"threeBracketedPieces", "[::1]:80]:x", std::nullopt},
        NameRow{"serviceName", "*:http", std::nullopt}, NameRow{"starPort", "*:*", std::nullopt},
        NameRow{"hexadecimal", "*:0x50", std::nullopt},
        NameRow{"digitsThenText", "*:3000a", std::nullopt}, NameRow{"plus", "*:+3000", 3000},
        NameRow{"minus", "*:-1", -1}, NameRow{"zero", "*:0", 0},
        NameRow{"leadingZeros", "*:0080", 80}, NameRow{"signAlone", "*:-", std::nullopt},
        NameRow{"twoSigns", "*:+-1", std::nullopt}, NameRow{"arabicDigits", "*:٣٠٠٠", std::nullopt},
        NameRow{"tabBeforePort", "*:\t3000", std::nullopt},
        NameRow{"noRangeCheck", "*:70000", 70000},
        NameRow{"largest", "*:9223372036854775807", 9223372036854775807},
        NameRow{"beyondLargest", "*:9223372036854775808", std::nullopt},
        NameRow{"smallest", "*:-9223372036854775808", std::numeric_limits<qint64>::min()},
        NameRow{"beyondSmallest", "*:-9223372036854775809", std::nullopt}),
    rowName);

TEST(ParsePortInfo, readsRealOutput)
{
    QFile file(QStringLiteral(TEST_DATA "/lsof-4.95.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto records = parsePortInfo(QString::fromUtf8(file.readAll()));
    EXPECT_EQ(ports(records), QList<qint64>({18001, 18002, 18003, 18004}));
    EXPECT_EQ(records.first().command(), QStringLiteral("python3"));
    EXPECT_EQ(records.last().command(), QStringLiteral("node"));
}

TEST(ParsePortInfo, survivesTenThousandLines)
{
    QStringList names;
    for (int port = 10000; port < 20000; ++port)
        names.append(QStringLiteral("*:%1").arg(port));
    EXPECT_EQ(parsePortInfo(outputWithNames(names)).size(), 10000);
}

/// Random lines of lsof's table, most of them rows, the same ones in every run.
class RandomTable
{
public:
    struct Row
    {
        QString command;
        QString pid;
        QString user;
        qint64 port;
    };

    Row row(qint64 port) { return {word(9), QString::number(1 + below(99'999)), word(8), port}; }

    QString lineOf(const Row &row)
    {
        const QStringList addresses = {QStringLiteral("*"), QStringLiteral("127.0.0.1"),
                                       QStringLiteral("[::1]"), QStringLiteral("0.0.0.0")};
        const QStringList columns = {
            row.command,
            row.pid,
            row.user,
            QStringLiteral("%1u").arg(below(9)),
            QStringLiteral("IPv4"),
            word(6),
            QStringLiteral("0t0"),
            QStringLiteral("TCP"),
            QStringLiteral("%1:%2").arg(addresses[below(addresses.size())]).arg(row.port),
            QStringLiteral("(LISTEN)")};
        QString line;
        for (const QString &column : columns)
            line += column + QString(1 + below(3), u' ');
        return line.trimmed();
    }

    /// A row without its name, one of another host, or words without a colon: no record.
    QString otherLine()
    {
        const QString line = lineOf(row(1));
        const QString unnamed = line.first(line.indexOf(QStringLiteral(" TCP ")));
        const auto kind = below(3);
        if (kind < 2)
            return kind == 0 ? unnamed : unnamed + QStringLiteral(" TCP [fe80::1%eth0]:9 (LISTEN)");
        QStringList words;
        for (qsizetype i = below(12); i > 0; --i)
            words.append(word(12));
        return words.join(u' ');
    }

    qsizetype below(qsizetype limit) { return qsizetype(m_random() % quint64(limit)); }

private:
    QString word(qsizetype longest)
    {
        static const QString alphabet = QStringLiteral("node12*[]()\\ü٣-+.%");
        QString text;
        for (qsizetype i = 1 + below(longest); i > 0; --i)
            text += alphabet[below(alphabet.size())];
        return text;
    }

    std::mt19937 m_random{20261121}; // NOLINT(cert-msc51-cpp): the same lines in every run
};

TEST(ParsePortInfo, readsEachRandomRowAmongOtherLines)
{
    RandomTable table;
    int seen = 0;
    for (int round = 0; round < 500; ++round) {
        QString output = header;
        QList<RandomTable::Row> rows;
        for (qint64 port = 1; port <= 20; ++port) {
            if (table.below(4) == 0) {
                output += table.otherLine() + u'\n';
                continue;
            }
            rows.append(table.row(port));
            output += table.lineOf(rows.last()) + u'\n';
        }
        const auto records = parsePortInfo(output);
        ASSERT_EQ(records.size(), rows.size()) << output.toStdString();
        for (qsizetype i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(records[i].port(), rows[i].port);
            EXPECT_EQ(records[i].command(), rows[i].command);
            EXPECT_EQ(records[i].pid(), rows[i].pid);
            EXPECT_EQ(records[i].user(), rows[i].user);
            ++seen;
        }
    }
    EXPECT_GT(seen, 7'000);
    RecordProperty("records", seen);
}

/// Bytes changed at random in a table of rows: most rows stay, and each record is a whole one.
TEST(ParsePortInfo, survivesRandomBytes)
{
    RandomTable table;
    int seen = 0;
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = header.toUtf8();
        for (qint64 port = 3000; port < 3010; ++port)
            bytes += table.lineOf(table.row(port)).toUtf8() + '\n';
        for (int i = 0; i < 4; ++i)
            bytes[header.size() + table.below(bytes.size() - header.size())] =
                static_cast<char>(table.below(256));
        decodeUtf8(bytes);
        for (const PortInfo &record : parsePortInfo(QString::fromUtf8(bytes))) {
            EXPECT_EQ(record.address(), QStringLiteral("localhost"));
            EXPECT_FALSE(record.command().isEmpty() || record.pid().isEmpty());
            ++seen;
        }
    }
    EXPECT_GT(seen, 10'000);
    RecordProperty("records", seen);
}

struct CommandRow
{
    const char *name;
    const char *command;
    bool isKept;
};

class Development : public testing::TestWithParam<CommandRow>
{
};

TEST_P(Development, isToldByTheCommand)
{
    const PortInfo record(3000, QStringLiteral("1"), QString::fromUtf8(GetParam().command),
                          QStringLiteral("alice"), QStringLiteral("localhost"));
    EXPECT_EQ(isDevelopmentProcess(record), GetParam().isKept);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Development,
    testing::Values(
        CommandRow{"node", "node", true}, CommandRow{"nodeInCapitals", "NODE", true},
        CommandRow{"nodemonIsNotNode", "Nodemon", false}, CommandRow{"node22", "node-22", false},
        CommandRow{"python", "Python", true}, CommandRow{"python3", "python3.11", true},
        CommandRow{"ruby", "Ruby", true}, CommandRow{"php", "php-fpm8.2", true},
        CommandRow{"postgres", "postgres", true},
        CommandRow{"postgresWhole", "postgres-exporter", false},
        CommandRow{"mysqld", "mysqld", true}, CommandRow{"mysqldWhole", "mysqld_safe", false},
        CommandRow{"mongod", "mongod", true}, CommandRow{"mongosHoldsGo", "mongos", true},
        CommandRow{"redisServer", "redis-server", true},
        CommandRow{"redisServerTruncated", "redis-ser", false},
        CommandRow{"redisServerWhole", "redis-server-x", false},
        CommandRow{"rubyInside", "ruby3.1", true}, CommandRow{"dotnetInside", "dotnet-watch", true},
        CommandRow{"docker", "com.docker.backend", true},
        CommandRow{"dockerProxy", "docker-proxy", true}, CommandRow{"deno", "deno", true},
        CommandRow{"denoWhole", "deno2", false}, CommandRow{"bun", "bun", true},
        CommandRow{"bunWhole", "bundle", false}, CommandRow{"java", "java", true},
        CommandRow{"javaInside", "openjdk-java17", true}, CommandRow{"dotnet", "dotnet", true},
        CommandRow{"go", "go", true}, CommandRow{"goInside", "Google-Chrome", true},
        CommandRow{"argo", "argocd", true}, CommandRow{"nginx", "nginx", false},
        CommandRow{"sshd", "sshd", false}, CommandRow{"empty", "", false},
        CommandRow{"fullUnicodeLowerCasing", "DOC\u212AER", true}), // U+212A, the Kelvin sign
    rowName);

TEST(FetchRunningPorts, runsLsofOnceWithItsFiveArguments)
{
    const auto tools = lsofPrinting({});
    fetchRunningPorts(systemWith(tools), {});
    ASSERT_EQ(tools->calls().size(), 1U);
    EXPECT_TRUE(tools->calls()[0].program.endsWith(QStringLiteral("/lsof")));
    EXPECT_EQ(tools->calls()[0].arguments.join(u' '), QStringLiteral("-i TCP -P -n -sTCP:LISTEN"));
}

TEST(FetchRunningPorts, keepsDevelopmentProcessesInOrder)
{
    const auto tools = lsofPrinting("header\n"
                                    "python3 3 a 3u IPv4 0x1 0t0 TCP *:8000 (LISTEN)\n"
                                    "nginx 2 a 3u IPv4 0x1 0t0 TCP *:8080 (LISTEN)\n"
                                    "node 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n");
    EXPECT_EQ(ports(fetchRunningPorts(systemWith(tools), {})), QList<qint64>({3000, 8000}));
}

TEST(FetchRunningPorts, enrichesOneRecordAfterTheOther)
{
    const auto tools = lsofPrinting("header\n"
                                    "python3 3 a 3u IPv4 0x1 0t0 TCP *:8000 (LISTEN)\n"
                                    "nginx 2 a 3u IPv4 0x1 0t0 TCP *:8080 (LISTEN)\n"
                                    "node 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n");
    const auto records = fetchRunningPorts(systemWith(tools), {});
    QStringList pids;
    for (const auto &call : tools->calls()) {
        if (call.arguments.first() == QStringLiteral("-p"))
            pids.append(call.arguments[1]);
    }
    EXPECT_EQ(pids.join(u' '), QStringLiteral("1 1 1 1 3 3 3 3"));
    EXPECT_TRUE(records.last().fullCommand.contains(QStringLiteral("python3")));
}

TEST(FetchRunningPorts, rowsWithTheSameTextsHoldThemOnce)
{
    const auto tools = std::make_shared<RecordingToolRunner>(
        [](const RecordingToolRunner::Call &call, const auto &) -> ToolResult {
            if (call.arguments.first() == QStringLiteral("-i"))
                return {"h\nnode 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n"
                        "node 2 a 3u IPv4 0x1 0t0 TCP *:3001 (LISTEN)\n",
                        0};
            return {call.program.endsWith(QStringLiteral("lsof")) ? "n/a\n" : "node server.js", 0};
        });
    const auto records = fetchRunningPorts(systemWith(tools), {});
    ASSERT_EQ(records.size(), 2);
    EXPECT_EQ(records[0].fullCommand, QStringLiteral("node server.js"));
    EXPECT_EQ(records[0].fullCommand.constData(), records[1].fullCommand.constData());
    EXPECT_EQ(records[0].workingDirectory.constData(), records[1].workingDirectory.constData());
    const QString script = QStringLiteral("script");
    EXPECT_EQ(records[0].metadata[script].constData(), records[1].metadata[script].constData());
}

TEST(FetchRunningPorts, stopEndsItAfterTheSocketList)
{
    const auto tools = lsofPrinting("h\nnode 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n");
    std::stop_source stopped;
    stopped.request_stop();
    fetchRunningPorts(systemWith(tools), stopped.get_token());
    EXPECT_EQ(tools->calls().size(), 1U);
}

TEST(FetchRunningPorts, truncatedListIsAFailure)
{
    const auto tools = std::make_shared<RecordingToolRunner>([](const auto &, const auto &) {
        return ToolResult{"header\nnode 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n", -1, true};
    });
    std::string failure;
    try {
        fetchRunningPorts(systemWith(tools), {});
    } catch (const std::length_error &error) {
        failure = error.what();
    }
    EXPECT_EQ(failure, "lsof: the list of listeners is too long");
    EXPECT_EQ(tools->calls().size(), 1U);
}

TEST(FetchRunningPorts, exitStatusDoesNotCount)
{
    const auto tools = lsofPrinting("h\nnode 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n", 1);
    EXPECT_EQ(fetchRunningPorts(systemWith(tools), {}).size(), 1);
    EXPECT_TRUE(fetchRunningPorts(systemWith(lsofPrinting({}, 1)), {}).isEmpty());
}

TEST(FetchRunningPorts, outputThatIsNotUtf8IsAnEmptyList)
{
    const auto tools = lsofPrinting("h\nnode 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n\xff");
    EXPECT_TRUE(fetchRunningPorts(systemWith(tools), {}).isEmpty());
}

TEST(FetchRunningPorts, failsWithTheLaunchErrorOnly)
{
    const auto tools =
        std::make_shared<RecordingToolRunner>([](const auto &, const auto &) -> ToolResult {
            throw ToolStartError(QStringLiteral("no"));
        });
    EXPECT_THROW(fetchRunningPorts(systemWith(tools), {}), ToolStartError);
}
