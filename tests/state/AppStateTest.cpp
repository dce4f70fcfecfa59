#include "state/AppState.h"
#include "scan/ProcessToolRunner.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <array>
#include <condition_variable>
#include <map>

using namespace tidewick;
using namespace std::chrono_literals;

namespace
{

QByteArray lsofOutput(const QList<int> &ports)
{
    QByteArray output = "header\n";
    for (const int port : ports)
        output += "node 1 a 3u IPv4 0x1 0t0 TCP *:" + QByteArray::number(port) + " (LISTEN)\n";
    return output;
}

QList<qint64> ports(const QList<PortInfo> &records)
{
    QList<qint64> result;
    for (const PortInfo &record : records)
        result.append(record.port());
    return result;
}

/// A tool whose runs end when the test says so, each by its number; a stop request ends them too.
class HeldTool
{
public:
    void finish(int run, const ToolResult &result)
    {
        end(run, [result] { return result; });
    }
    void fail(int run, const QString &description)
    {
        end(run, [description]() -> ToolResult { throw ToolStartError(description); });
    }
    int started() const
    {
        const std::lock_guard lock(m_mutex);
        return m_started;
    }
    int stopped() const
    {
        const std::lock_guard lock(m_mutex);
        return m_stopped;
    }

    ToolResult run(const std::stop_token &stop)
    {
        std::unique_lock lock(m_mutex);
        const int number = ++m_started;
        if (!m_changed.wait(lock, stop, [&] { return m_endings.contains(number); })) {
            ++m_stopped;
            return {{}, -1};
        }
        const Ending ending = m_endings.at(number);
        lock.unlock();
        return ending();
    }

    using Ending = std::function<ToolResult()>;

    void end(int run, Ending ending)
    {
        const std::lock_guard lock(m_mutex);
        m_endings[run] = std::move(ending);
        m_changed.notify_all();
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::map<int, Ending> m_endings;
    int m_started = 0;
    int m_stopped = 0;
};

class HeldLsof : public HeldTool
{
public:
    using HeldTool::finish;
    void finish(int run, const QList<int> &ports) { finish(run, {lsofOutput(ports), 0}); }
};

class HeldKill : public HeldTool
{
public:
    using HeldTool::finish;
    void finish(int run, int exitStatus) { finish(run, ToolResult{{}, exitStatus}); }
};

/// A store over held tools. The store goes first, then its threads, then the tools.
class AppStateTest : public testing::Test
{
protected:
    static constexpr int poolWidth = 4;

    ~AppStateTest() override
    {
        store.reset();
        m_workers.waitForDone();
        QCoreApplication::processEvents(); // lets the awaiting coroutines end
    }

    bool waitForStart(int run)
    {
        return waitUntil([&] { return lsof.started() >= run; });
    }
    bool waitForEnd()
    {
        return waitUntil([&] { return !store->isLoading(); });
    }
    void tick()
    {
        QMetaObject::invokeMethod(const_cast<QTimer *>(store->refreshTimer()), "timeout");
    }

    /// From now on, no scan starts that the test has not asked for.
    void stopTicks() { const_cast<QTimer *>(store->refreshTimer())->stop(); }

    bool waitForKill(int run)
    {
        return waitUntil([&] { return kill.started() >= run; });
    }
    /// Publishes a list of these ports by the first scan.
    void publish(const QList<int> &ports)
    {
        lsof.finish(1, ports);
        ASSERT_TRUE(waitForStart(1));
        ASSERT_TRUE(waitForEnd());
    }
    /// Starts a kill; `killed` holds its result once it has one.
    void startKill(const QString &pid)
    {
        auto await = [](AppStateTest &test, QString pid) -> QCoro::Task<> {
            auto killing = test.store->killProcess(pid);
            test.killed = co_await killing;
        };
        await(*this, pid);
    }
    bool waitForResult()
    {
        return waitUntil([&] { return killed.has_value(); });
    }

    HeldLsof lsof;
    HeldKill kill;
    std::optional<bool> killed;

private:
    ToolResult run(const RecordingToolRunner::Call &call, const std::stop_token &stop)
    {
        const QString what = call.arguments.first();
        if (what == QStringLiteral("-i"))
            return lsof.run(stop);
        return what == QStringLiteral("-9") ? kill.run(stop) : ToolResult();
    }

    Workers m_workers{poolWidth};

protected:
    std::shared_ptr<RecordingToolRunner> tools = std::make_shared<RecordingToolRunner>(
        [this](const auto &call, const auto &stop) { return run(call, stop); });
    const QDateTime created = QDateTime::currentDateTime();
    std::unique_ptr<AppState> store = std::make_unique<AppState>(
        SystemInterfaces{tools, ToolTable::stock(), RecordingHttpClient::refusing()}, m_workers);
};

} // namespace

TEST_F(AppStateTest, startsEmptyIdleAndWithoutError)
{
    EXPECT_TRUE(store->runningPorts().isEmpty());
    EXPECT_FALSE(store->isLoading());
    EXPECT_FALSE(store->lastError());
    EXPECT_FALSE(store->isKillingProcess());
    EXPECT_GE(store->lastRefresh(), created);
    EXPECT_LE(store->lastRefresh(), QDateTime::currentDateTime());
}

TEST_F(AppStateTest, publishesTheFirstListWithoutWaitingForATick)
{
    const QDateTime first = store->lastRefresh();
    ASSERT_TRUE(waitForStart(1));
    EXPECT_TRUE(store->isLoading());
    lsof.finish(1, {8000, 3000});
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000, 8000}));
    EXPECT_GE(store->lastRefresh(), first);
    EXPECT_EQ(lsof.started(), 1);
}

TEST_F(AppStateTest, publishesAnEmptyListToo)
{
    lsof.finish(1, {3000});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    const QDateTime first = store->lastRefresh();
    QThread::msleep(2);
    lsof.finish(2, QList<int>());
    store->refreshPorts();
    ASSERT_TRUE(waitForStart(2));
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(store->runningPorts().isEmpty());
    EXPECT_GT(store->lastRefresh(), first);
}

TEST_F(AppStateTest, failedScanKeepsTheListAndTheNextStartClearsItsError)
{
    lsof.finish(1, {3000});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    const QDateTime lastGood = store->lastRefresh();

    lsof.fail(2, QStringLiteral("No such file or directory"));
    store->refreshPorts();
    ASSERT_TRUE(waitForStart(2));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(store->lastError(), QStringLiteral("No such file or directory"));
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000}));
    EXPECT_EQ(store->lastRefresh(), lastGood);

    store->refreshPorts();
    ASSERT_TRUE(waitForStart(3));
    EXPECT_FALSE(store->lastError());
    lsof.finish(3, {3000, 3001});
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(store->lastError());
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000, 3001}));
}

TEST_F(AppStateTest, overlappingRefreshesBothRunAndTheLastToEndIsPublished)
{
    ASSERT_TRUE(waitForStart(1));
    store->refreshPorts();
    ASSERT_TRUE(waitForStart(2));
    lsof.finish(2, {2000});
    ASSERT_TRUE(waitUntil([&] { return store->runningPorts().size() == 1; }));
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({2000}));
    lsof.finish(1, {1000, 1001});
    ASSERT_TRUE(waitUntil([&] { return store->runningPorts().size() == 2; }));
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({1000, 1001}));
}

TEST_F(AppStateTest, refreshesStartedCloseTogetherAllRun)
{
    store->refreshPorts();
    store->refreshPorts(); // with the one of the construction, three, in a pool of four
    ASSERT_TRUE(waitForStart(3));
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > 3; }, 100));
}

TEST_F(AppStateTest, destructionBeforeACallFromAnotherThreadArrivesIsSafe)
{
    publish({3000});
    QThread *other = QThread::create([this] { store->loadRunningPorts(); });
    other->start();
    other->wait(); // its call now waits for the main thread
    delete other;
    store.reset();
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > 1; }, 100));
}

TEST_F(AppStateTest, anyOtherFailureIsAnErrorToo)
{
    lsof.end(1, []() -> ToolResult { throw std::runtime_error("out of everything"); });
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(store->lastError(), QStringLiteral("out of everything"));
}

TEST_F(AppStateTest, fullPoolKeepsOneScanWaitingForAllRequests)
{
    for (int run = 2; run <= poolWidth; ++run) {
        ASSERT_TRUE(waitForStart(run - 1));
        store->refreshPorts();
    }
    ASSERT_TRUE(waitForStart(poolWidth));
    stopTicks();
    for (int request = 0; request < 20; ++request)
        store->refreshPorts();
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > poolWidth; }, 100));

    for (int run = 1; run <= poolWidth + 1; ++run) {
        lsof.finish(run, {run});
        ASSERT_TRUE(
            waitUntil([&] { return ports(store->runningPorts()) == QList<qint64>({run}); }));
    }
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > poolWidth + 1; }, 100));
    EXPECT_FALSE(store->isLoading());
}

TEST_F(AppStateTest, tickStartsARefresh)
{
    ASSERT_TRUE(waitForStart(1));
    tick();
    EXPECT_TRUE(waitForStart(2));
}

TEST_F(AppStateTest, timerTicksEveryFiveSecondsForEver)
{
    ASSERT_NE(store->refreshTimer(), nullptr);
    EXPECT_TRUE(store->refreshTimer()->isActive());
    EXPECT_EQ(store->refreshTimer()->intervalAsDuration(), 5s);
    EXPECT_EQ(store->refreshTimer()->timerType(), Qt::PreciseTimer);
    EXPECT_FALSE(store->refreshTimer()->isSingleShot());
    EXPECT_GT(store->refreshTimer()->remainingTimeAsDuration(), 4s);
}

TEST_F(AppStateTest, restartingAutoRefreshReplacesTheTimer)
{
    const QPointer<const QTimer> old = store->refreshTimer();
    store->startAutoRefresh();
    EXPECT_TRUE(old.isNull());
    ASSERT_NE(store->refreshTimer(), nullptr);
    EXPECT_TRUE(store->refreshTimer()->isActive());
    EXPECT_TRUE(store->findChildren<QTimer *>().isEmpty());
}

TEST_F(AppStateTest, eachChangeIsAnnouncedBeforeIt)
{
    QStringList log;
    const auto describe = [&] {
        return QStringLiteral("%1 loading, %2 ports, %3")
            .arg(store->isLoading() ? QStringLiteral("is") : QStringLiteral("not"))
            .arg(store->runningPorts().size())
            .arg(store->lastError().value_or(QStringLiteral("good")));
    };
    QObject::connect(store.get(), &AppState::objectWillChange, store.get(),
                     [&] { log += QStringLiteral("before: ") + describe(); });
    QObject::connect(store.get(), &AppState::isLoadingChanged, store.get(),
                     [&] { log += QStringLiteral("isLoading: ") + describe(); });
    QObject::connect(store.get(), &AppState::lastErrorChanged, store.get(),
                     [&] { log += QStringLiteral("lastError: ") + describe(); });
    QObject::connect(store.get(), &AppState::runningPortsChanged, store.get(),
                     [&] { log += QStringLiteral("runningPorts: ") + describe(); });
    QObject::connect(store.get(), &AppState::lastRefreshChanged, store.get(),
                     [&] { log += QStringLiteral("lastRefresh: ") + describe(); });
    lsof.finish(1, {3000});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    lsof.fail(2, QStringLiteral("bad"));
    store->refreshPorts();
    ASSERT_TRUE(waitForStart(2));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(log, QStringList({
                       QStringLiteral("before: not loading, 0 ports, good"),
                       QStringLiteral("isLoading: is loading, 0 ports, good"),
                       QStringLiteral("before: is loading, 0 ports, good"),
                       QStringLiteral("lastError: is loading, 0 ports, good"),
                       QStringLiteral("before: is loading, 0 ports, good"),
                       QStringLiteral("runningPorts: is loading, 1 ports, good"),
                       QStringLiteral("before: is loading, 1 ports, good"),
                       QStringLiteral("lastRefresh: is loading, 1 ports, good"),
                       QStringLiteral("before: is loading, 1 ports, good"),
                       QStringLiteral("isLoading: not loading, 1 ports, good"),
                       QStringLiteral("before: not loading, 1 ports, good"),
                       QStringLiteral("isLoading: is loading, 1 ports, good"),
                       QStringLiteral("before: is loading, 1 ports, good"),
                       QStringLiteral("lastError: is loading, 1 ports, good"),
                       QStringLiteral("before: is loading, 1 ports, good"),
                       QStringLiteral("lastError: is loading, 1 ports, bad"),
                       QStringLiteral("before: is loading, 1 ports, bad"),
                       QStringLiteral("isLoading: not loading, 1 ports, bad"),
                   }))
        << log.join(u'\n').toStdString();
}

TEST_F(AppStateTest, streamGivesTheCurrentListAtOnceThenEachNewOne)
{
    QList<QList<qint64>> received;
    QObject listener;
    store->stream(&AppState::runningPorts, &AppState::runningPortsChanged, &listener,
                  [&](const QList<PortInfo> &list) { received.append(ports(list)); });
    EXPECT_EQ(received, QList<QList<qint64>>({{}}));
    lsof.finish(1, {3000});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(received, QList<QList<qint64>>({{}, {3000}}));
}

TEST_F(AppStateTest, streamEndsWithItsListener)
{
    int received = 0;
    auto listener = std::make_unique<QObject>();
    store->stream(&AppState::runningPorts, &AppState::runningPortsChanged, listener.get(),
                  [&](const QList<PortInfo> &) { ++received; });
    listener.reset();
    lsof.finish(1, {3000});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(received, 1);
}

TEST_F(AppStateTest, everyPublishedPropertyHasAStream)
{
    QList<bool> loading;
    QList<std::optional<QString>> errors;
    int refreshes = 0;
    store->stream(&AppState::isLoading, &AppState::isLoadingChanged, store.get(),
                  [&](bool value) { loading.append(value); });
    store->stream(&AppState::lastError, &AppState::lastErrorChanged, store.get(),
                  [&](const std::optional<QString> &value) { errors.append(value); });
    store->stream(&AppState::lastRefresh, &AppState::lastRefreshChanged, store.get(),
                  [&](const QDateTime &) { ++refreshes; });
    lsof.fail(1, QStringLiteral("bad"));
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(loading, QList<bool>({false, true, false}));
    EXPECT_EQ(errors,
              QList<std::optional<QString>>({std::nullopt, std::nullopt, QStringLiteral("bad")}));
    EXPECT_EQ(refreshes, 1);
}

TEST_F(AppStateTest, everyChangeHappensOnTheMainThread)
{
    QList<QThread *> threads;
    QObject::connect(
        store.get(), &AppState::objectWillChange, store.get(),
        [&] { threads.append(QThread::currentThread()); }, Qt::DirectConnection);
    lsof.finish(1, {3000});
    lsof.finish(2, {3000});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    threads.clear();
    QThread *other = QThread::create([this] { store->loadRunningPorts(); });
    other->start();
    ASSERT_TRUE(waitForStart(2));
    ASSERT_TRUE(waitForEnd());
    other->wait();
    delete other;
    EXPECT_EQ(threads, QList<QThread *>(5, QThread::currentThread()));
}

TEST_F(AppStateTest, destructionDuringAScanStopsItWithoutWaiting)
{
    ASSERT_TRUE(waitForStart(1));
    store->refreshPorts();
    ASSERT_TRUE(waitForStart(2));
    store.reset();
    EXPECT_TRUE(waitUntil([&] { return lsof.stopped() == 2; }));
}

TEST_F(AppStateTest, destructionBeforeTheFirstScanStartsNone)
{
    store.reset();
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > 0; }, 100));
}

TEST_F(AppStateTest, killTakesAllRowsOfThePidInOneChangeBeforeTheToolEnds)
{
    lsof.finish(1, {lsofOutput({3000, 3001}) + "node 2 a 3u IPv4 0x1 0t0 TCP *:2000 (LISTEN)\n"
                                               "node 12 a 3u IPv4 0x1 0t0 TCP *:4000 (LISTEN)\n",
                    0});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    QList<QList<qint64>> published;
    QObject::connect(store.get(), &AppState::runningPortsChanged, store.get(),
                     [&](const QList<PortInfo> &list) { published.append(ports(list)); });
    startKill(QStringLiteral("1"));
    ASSERT_TRUE(waitForKill(1));
    EXPECT_EQ(published, QList<QList<qint64>>({{2000, 4000}}));
    EXPECT_TRUE(store->isKillingProcess());
    kill.finish(1, 0);
    EXPECT_TRUE(waitForResult());
    EXPECT_EQ(published.size(), 1);
}

TEST_F(AppStateTest, killThatSucceedsIsTrueAndStartsNoScanByItself)
{
    publish({3000});
    startKill(QStringLiteral("1"));
    kill.finish(1, 0);
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(killed, true);
    EXPECT_FALSE(store->isKillingProcess());
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > 1; }, 200));
    tick();
    EXPECT_TRUE(waitForStart(2));
}

TEST_F(AppStateTest, killRunsTheToolWithSignalNineAndThePidAsItIs)
{
    publish({});
    startKill(QStringLiteral("4711"));
    ASSERT_TRUE(waitForKill(1));
    const RecordingToolRunner::Call call = tools->calls().back();
    EXPECT_EQ(call.program, QStringLiteral("/bin/kill"));
    EXPECT_EQ(call.arguments, QStringList({QStringLiteral("-9"), QStringLiteral("4711")}));
}

TEST_F(AppStateTest, killOfWhatIsNoProcessIdIsFalseAfterARescanAndRunsNoTool)
{
    publish({3000});
    int scans = 1;
    for (const QString &pid :
         {QStringLiteral("-1"), QStringLiteral("0"), QStringLiteral("00"), QStringLiteral("1x"),
          QStringLiteral("١"), QStringLiteral("1 2"), QStringLiteral("-"), QString(),
          QStringLiteral("2147483648"), QStringLiteral("4294967295")}) {
        killed.reset();
        lsof.finish(++scans, {3000});
        startKill(pid);
        ASSERT_TRUE(waitForResult()) << pid.toStdString();
        EXPECT_EQ(killed, false) << pid.toStdString();
        EXPECT_EQ(lsof.started(), scans);
        EXPECT_FALSE(store->isKillingProcess());
    }
    EXPECT_EQ(kill.started(), 0);
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000}));

    startKill(QStringLiteral("2147483647"));
    EXPECT_TRUE(waitForKill(1));
}

TEST_F(AppStateTest, killOfAnUnlistedPidRunsTheToolAndLeavesTheList)
{
    publish({3000});
    startKill(QStringLiteral("4711"));
    ASSERT_TRUE(waitForKill(1));
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000}));
    kill.finish(1, 0);
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(killed, true);
}

TEST_F(AppStateTest, killThatFailsIsFalseAfterARescanThatBringsTheRowsBack)
{
    publish({3000});
    startKill(QStringLiteral("1"));
    kill.finish(1, 1);
    ASSERT_TRUE(waitForStart(2));
    EXPECT_TRUE(store->runningPorts().isEmpty());
    EXPECT_TRUE(store->isKillingProcess());
    EXPECT_FALSE(killed.has_value());
    lsof.finish(2, {3000});
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(killed, false);
    EXPECT_FALSE(store->isKillingProcess());
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000}));
}

TEST_F(AppStateTest, killThatCannotBeStartedIsOneLineAndARescan)
{
    publish({3000});
    lsof.finish(2, {3000});
    testing::internal::CaptureStdout();
    startKill(QStringLiteral("1"));
    kill.fail(1, QStringLiteral("no such tool"));
    const bool ended = waitForResult();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error killing process: no such tool\n");
    ASSERT_TRUE(ended);
    EXPECT_EQ(killed, false);
    EXPECT_EQ(lsof.started(), 2);
    EXPECT_FALSE(store->isKillingProcess());
}

TEST_F(AppStateTest, killUnderWayHoldsBackTicksAndRequestsButNotADirectLoad)
{
    publish({3000});
    startKill(QStringLiteral("1"));
    ASSERT_TRUE(waitForKill(1));
    store->refreshPorts();
    tick();
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > 1; }, 200));

    store->loadRunningPorts();
    ASSERT_TRUE(waitForStart(2));
    lsof.finish(2, {5000});
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({5000}));

    kill.finish(1, 0);
    ASSERT_TRUE(waitForResult());
    tick();
    EXPECT_TRUE(waitForStart(3));
}

TEST_F(AppStateTest, firstOfTwoKillsToEndClearsTheFlag)
{
    startKill(QStringLiteral("1"));
    startKill(QStringLiteral("2"));
    ASSERT_TRUE(waitForKill(2));
    kill.finish(1, 0);
    ASSERT_TRUE(waitForResult());
    EXPECT_FALSE(store->isKillingProcess());
    EXPECT_EQ(kill.stopped(), 0);
}

TEST_F(AppStateTest, anyOtherFailureOfAKillIsFalseAfterARescanToo)
{
    publish({3000});
    struct Failure
    {
        HeldTool::Ending ending;
        std::string printed;
    };
    const std::array failures{
        Failure{[]() -> ToolResult { throw std::runtime_error("out of everything"); },
                "Error killing process: out of everything\n"},
        Failure{[]() -> ToolResult { throw 1; }, ""},
    };
    int scans = 1;
    for (const Failure &failure : failures) {
        killed.reset();
        lsof.finish(++scans, {3000});
        kill.end(scans - 1, failure.ending);
        testing::internal::CaptureStdout();
        startKill(QStringLiteral("1"));
        const bool ended = waitForResult();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), failure.printed);
        ASSERT_TRUE(ended);
        EXPECT_EQ(killed, false);
        EXPECT_FALSE(store->isKillingProcess());
        EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000}));
    }
    tick();
    EXPECT_TRUE(waitForStart(scans + 1));
}

TEST_F(AppStateTest, rowsLeaveAtOnceHoweverManyKillsHang)
{
    lsof.finish(1, {"header\n"
                    "node 1 a 3u IPv4 0x1 0t0 TCP *:1000 (LISTEN)\n"
                    "node 2 a 3u IPv4 0x1 0t0 TCP *:2000 (LISTEN)\n"
                    "node 3 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n"
                    "node 4 a 3u IPv4 0x1 0t0 TCP *:4000 (LISTEN)\n",
                    0});
    ASSERT_TRUE(waitForStart(1));
    ASSERT_TRUE(waitForEnd());
    startKill(QStringLiteral("1"));
    startKill(QStringLiteral("2"));
    ASSERT_TRUE(waitForKill(2));
    startKill(QStringLiteral("3"));
    EXPECT_TRUE(waitUntil([&] { return ports(store->runningPorts()) == QList<qint64>({4000}); }));
    EXPECT_EQ(kill.started(), 2);
    kill.finish(1, 0);
    EXPECT_TRUE(waitForKill(3));
}

TEST_F(AppStateTest, killFromAnotherThreadChangesTheListOnTheMainThread)
{
    publish({3000});
    QList<QThread *> threads;
    QObject::connect(
        store.get(), &AppState::objectWillChange, store.get(),
        [&] { threads.append(QThread::currentThread()); }, Qt::DirectConnection);
    QThread *other = QThread::create([this] { startKill(QStringLiteral("1")); });
    other->start();
    ASSERT_TRUE(waitForKill(1));
    other->wait();
    delete other;
    EXPECT_EQ(threads, QList<QThread *>({QThread::currentThread()}));
    EXPECT_TRUE(store->runningPorts().isEmpty());
    kill.finish(1, 0);
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(killed, true);
}

TEST_F(AppStateTest, killIsStartedAtOnceWhileThePoolIsFullOfScans)
{
    for (int run = 1; run <= poolWidth; ++run) {
        ASSERT_TRUE(waitForStart(run));
        store->refreshPorts();
    }
    EXPECT_FALSE(waitUntil([&] { return lsof.started() > poolWidth; }, 100));
    startKill(QStringLiteral("1"));
    ASSERT_TRUE(waitForKill(1));
    kill.finish(1, 0);
    EXPECT_TRUE(waitForResult());
}

TEST_F(AppStateTest, killThatHangsIsEndedAfterFiveSecondsAndHasFailed)
{
    publish({3000});
    lsof.finish(2, {3000});
    QElapsedTimer timer;
    timer.start();
    startKill(QStringLiteral("1"));
    ASSERT_TRUE(waitUntil([&] { return killed.has_value(); }, 60'000));
    EXPECT_GE(timer.elapsed(), 4'500); // a coarse timer may be early by a twentieth
    EXPECT_EQ(killed, false);
    EXPECT_EQ(kill.stopped(), 1);
    EXPECT_EQ(ports(store->runningPorts()), QList<qint64>({3000}));
}

TEST_F(AppStateTest, destructionDuringAKillStopsItAndAnswersFalse)
{
    startKill(QStringLiteral("1"));
    ASSERT_TRUE(waitForKill(1));
    store.reset();
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(killed, false);
    EXPECT_EQ(kill.stopped(), 1);
}

TEST(AppStateWithRealTools, missingLsofIsAnErrorUntilItIsThereAgain)
{
    const QTemporaryDir directory;
    const QString lsof = directory.filePath(QStringLiteral("lsof"));
    const auto writeLsof = [&lsof](const QByteArray &port) {
        QFile file(lsof);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\necho header\n"
                   "echo 'node 1 a 3u IPv4 0x1 0t0 TCP *:" +
                   port + " (LISTEN)'\n");
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    };
    ToolTable table;
    table.lsof = QStringList(lsof);
    table.ps = QStringList(QStringLiteral("/bin/true"));
    Workers workers;
    AppState store({std::make_shared<ProcessToolRunner>(), table, RecordingHttpClient::refusing()},
                   workers);
    const auto refresh = [&store] {
        const QTimer *const timer = store.refreshTimer();
        bool ended = false;
        const auto connection = QObject::connect(&store, &AppState::isLoadingChanged, timer,
                                                 [&ended](bool loading) { ended = !loading; });
        store.refreshPorts();
        const bool inTime = waitUntil([&ended] { return ended; });
        QObject::disconnect(connection);
        return inTime;
    };
    writeLsof("3000");
    ASSERT_TRUE(waitUntil([&store] { return !store.runningPorts().isEmpty(); }));

    ASSERT_TRUE(QFile::remove(lsof));
    ASSERT_TRUE(refresh());
    ASSERT_TRUE(store.lastError());
    EXPECT_TRUE(store.lastError()->contains(QStringLiteral("No such file or directory")));
    EXPECT_EQ(ports(store.runningPorts()), QList<qint64>({3000}));

    writeLsof("3001");
    ASSERT_TRUE(refresh());
    EXPECT_FALSE(store.lastError());
    EXPECT_EQ(ports(store.runningPorts()), QList<qint64>({3001}));
}
