#include "tests/faults/FaultTest.h"

#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "tests/support/WaitUntil.h"

using namespace tidewick;

namespace
{

constexpr int timeoutMs = 20'000;

} // namespace

FaultTest::FaultTest()
{
    giveToOrdinaryUser(directory.path());
    for (const char *const tool : {"/lsof", "/lsof-complete", "/ps"})
        programs.copy(std::string(SUPPLIED_TOOLS) + tool);
}

FaultTest::~FaultTest()
{
    store.reset();
    workers.waitForDone();
    QCoreApplication::processEvents(); // lets the awaiting coroutines end
}

void FaultTest::allIsWellWith(ServerProgram &server)
{
    EXPECT_TRUE(server.isRunning());
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(server));
    EXPECT_TRUE(killEnds(server));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(rowsOf(server).isEmpty());
}

SystemInterfaces FaultTest::realSystem() const
{
    return {std::make_shared<ProcessToolRunner>(), realTools(), std::make_shared<CurlHttpClient>()};
}

ToolTable FaultTest::realTools() const
{
    return ToolTable::suppliedOverStock(QString::fromStdString(programs.path()));
}

void FaultTest::start(std::optional<SystemInterfaces> system)
{
    store = std::make_unique<AppState>(system ? *std::move(system) : realSystem(), workers);
    const_cast<QTimer *>(store->refreshTimer())->stop();
    ASSERT_TRUE(waitUntil([this] { return store->isLoading(); }, timeoutMs));
    ASSERT_TRUE(waitUntil([this] { return !store->isLoading(); }, timeoutMs));
}

bool FaultTest::refresh()
{
    bool hasEnded = false;
    const QObject context;
    QObject::connect(store.get(), &AppState::isLoadingChanged, &context,
                     [&hasEnded](bool isLoading) { hasEnded = !isLoading; });
    store->loadRunningPorts();
    return waitUntil([&hasEnded] { return hasEnded; }, timeoutMs);
}

void FaultTest::endEveryScan()
{
    ASSERT_TRUE(waitUntil([this] { return workers.scans.activeThreadCount() == 0; }, timeoutMs));
    QCoreApplication::processEvents();
}

std::shared_ptr<const std::optional<bool>> FaultTest::startKill(qint64 pid)
{
    const auto answer = std::make_shared<std::optional<bool>>();
    const auto await = [](AppState &state, QString pid, auto result) -> QCoro::Task<> {
        auto killing = state.killProcess(pid);
        *result = co_await killing;
    };
    await(*store, QString::number(pid), answer);
    return answer;
}

std::optional<bool> FaultTest::kill(qint64 pid)
{
    const auto answer = startKill(pid);
    waitUntil([&answer] { return answer->has_value(); }, timeoutMs);
    return *answer;
}

bool FaultTest::killEnds(ServerProgram &server)
{
    return kill(server) == true && waitUntil([&server] { return !server.isRunning(); }, timeoutMs);
}

std::unique_ptr<ServerProgram> FaultTest::serve(int port)
{
    if (port == 0)
        port = freePort();
    auto server = std::make_unique<ServerProgram>(
        QStringLiteral("/usr/bin/python3"),
        QStringList{QStringLiteral("-m"), QStringLiteral("http.server"), QStringLiteral("--bind"),
                    QStringLiteral("127.0.0.1"), QString::number(port)},
        directory.path(), port);
    EXPECT_TRUE(server->isUp());
    return server;
}

QList<PortInfo> FaultTest::rowsOf(const ServerProgram &server) const
{
    QList<PortInfo> rows;
    const QString pid = QString::number(server.processId());
    for (const PortInfo &record : store->runningPorts()) {
        if (record.pid() == pid)
            rows.append(record);
    }
    return rows;
}

testing::AssertionResult FaultTest::tellsTheTruthAbout(const ServerProgram &server) const
{
    if (store->lastError())
        return testing::AssertionFailure() << store->lastError()->toStdString();
    const QList<PortInfo> rows = rowsOf(server);
    if (rows.size() != 1)
        return testing::AssertionFailure() << rows.size() << " rows";
    const PortInfo &record = rows.first();
    if (!record.fullCommand.contains(QStringLiteral("http.server")))
        return testing::AssertionFailure() << "command " << record.fullCommand.toStdString();
    if (record.memoryUsage <= 0)
        return testing::AssertionFailure() << "no memory";
    if (record.workingDirectory != directory.path())
        return testing::AssertionFailure() << "directory " << record.workingDirectory.toStdString();
    if (!record.isHttpAccessible)
        return testing::AssertionFailure() << "no answer";
    return testing::AssertionSuccess();
}
