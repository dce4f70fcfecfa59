// load_program CASE SCANS SUPPLIED-TOOLS [LISTENERS] - holds a store against so many real listeners
// (1,000, a multiple of 4), prints what that takes, and exits 1 where a row is missing, wrong or
// too many, or where anything is left behind. The cases:
//   usual    a few processes with many listeners each
//   crowded  a process for each listener
//   hostile  the same, with names of 200 characters and command lines of 100,000 bytes
//   foreign  the same as another user's, which the list leaves out, beside one server of one's own;
//            needs root, to start them: else the status is 77
//   silent   listeners that take connections and never answer: no scan comes to an end
//
// Runs in a network of its own: any other development server counts as a row too many.

#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "state/AppState.h"
#include "state/Workers.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/system/Holdings.h"
#include "tests/support/system/SharedDirectory.h"
#include "tests/support/system/Users.h"

#include <QCoroTask>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tidewick;

namespace
{

constexpr int timeoutMs = 60'000;
constexpr uid_t ownUser = 54321;
constexpr uid_t foreignUser = 54398;
constexpr int skipped = 77;
constexpr double residentRoom = 64.0 * 1024; // KiB for 1,000 rows and overlapping scans

struct Case
{
    const char *name;
    int processes;
    int listeners; ///< of each
    const char *manner;
    QString program;
    QByteArray argument;
    std::optional<uid_t> user = {}; ///< whose they are, if not ours
};

Case ownServer()
{
    return {"own", 1, 1, "answer", QStringLiteral("node"), {}, ownUser};
}

QList<Case> allCases(int listeners)
{
    const QByteArray nasty = "<b>\x1b[31m\\ \"'\xf0\x9f\x92\xa9";
    return {{"usual", 4, listeners / 4, "answer", QStringLiteral("node"), {}},
            {"crowded", listeners, 1, "answer", QStringLiteral("node"), {}},
            {"hostile", listeners, 1, "answer", QStringLiteral("python").leftJustified(200, u'x'),
             nasty.repeated(100'000 / int(nasty.size()))},
            {"foreign", listeners, 1, "answer", QStringLiteral("python"), QByteArray(100'000, '4'),
             foreignUser},
            {"silent", 4, listeners / 4, "silent", QStringLiteral("node"), {}}};
}

/// tests/load/crowd.c, running under a name of the case's choice.
class Crowd
{
public:
    explicit Crowd(const Case &which)
    {
        const QString program = m_directory.filePath(which.program);
        QFile::copy(QStringLiteral(CROWD), program);
        if (which.user) {
            chmod(QFile::encodeName(m_directory.path()).constData(), 0755);
            m_process.setChildProcessModifier([user = *which.user] {
                if (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0)
                    _exit(1);
            });
        }
        m_process.start(program,
                        {QString::number(which.processes), QString::number(which.listeners),
                         QString::fromLatin1(which.manner), QString::fromUtf8(which.argument)});
        while (m_process.waitForReadyRead(timeoutMs)) {
            while (m_process.canReadLine()) {
                const QList<QByteArray> words = m_process.readLine().trimmed().split(' ');
                if (words.size() < 2)
                    return;
                m_listeners[words[0].toInt()] = QString::fromLatin1(words[1]);
            }
        }
    }
    ~Crowd()
    {
        m_process.kill();
        m_process.waitForFinished(-1);
    }
    Q_DISABLE_COPY_MOVE(Crowd)

    size_t size() const { return m_listeners.size(); }
    QString anyPid() const { return m_listeners.begin()->second; }

    /// Listeners without their row, and rows without their listener.
    int mistakes(const QList<PortInfo> &list) const
    {
        std::map<qint64, QString> rows;
        int wrong = 0;
        for (const PortInfo &record : list) {
            const auto listener = m_listeners.find(record.port());
            const bool isRight = listener != m_listeners.end() &&
                                 listener->second == record.pid() && record.httpStatus == 200;
            wrong += isRight ? 0 : 1;
            rows[record.port()] = record.pid();
        }
        return wrong + static_cast<int>(list.size() - qsizetype(rows.size())) +
               static_cast<int>(m_listeners.size() - std::min(rows.size(), m_listeners.size()));
    }

private:
    QTemporaryDir m_directory;
    QProcess m_process;
    std::map<qint64, QString> m_listeners;
};

/// A store with threads of its own. What both held is given back at the end, or `isClean` tells.
class Store
{
public:
    explicit Store(const ToolTable &tools)
    {
        m_state.emplace(SystemInterfaces{std::make_shared<ProcessToolRunner>(), tools,
                                         std::make_shared<CurlHttpClient>()},
                        m_workers);
    }

    AppState &state() { return *m_state; }
    int scansUnderWay() const { return m_workers.scans.activeThreadCount(); }
    int scansAtOnce() const { return m_workers.scans.maxThreadCount(); }

    /// Milliseconds from the end of the store to that of its last thread.
    double end()
    {
        QElapsedTimer timer;
        timer.start();
        m_state.reset();
        m_workers.waitForDone();
        return double(timer.nsecsElapsed()) / 1e6;
    }

private:
    Workers m_workers;
    std::optional<AppState> m_state;
};

/// Prints what is held now; false where more is left than there was, `children` apart.
bool leavesNothing(const Holdings &before)
{
    Holdings now;
    waitUntil([&] {
        now = holdings();
        return now.threads <= before.threads; // the system sees a thread a little longer
    });
    std::printf("afterwards: %d descriptors more, %d threads more, %d children more\n",
                now.descriptors - before.descriptors, now.threads - before.threads,
                now.children - before.children);
    return now.descriptors <= before.descriptors && now.threads <= before.threads &&
           now.children <= before.children;
}

bool fits(const Holdings &before, const Holdings &now)
{
    std::printf("resident memory %.1f MiB, %.1f more than before; %d threads\n",
                now.resident / 1024, (now.resident - before.resident) / 1024, now.threads);
    return now.resident - before.resident < residentRoom;
}

bool scanAll(const Crowd &crowd, const ToolTable &tools, int scans)
{
    const Holdings before = holdings();
    bool isGood = true;
    {
        Store store(tools);
        for (int scan = 0; scan < scans; ++scan) {
            QElapsedTimer timer;
            timer.start();
            auto load = store.state().loadRunningPorts();
            QCoro::waitFor(load);
            const auto &list = store.state().runningPorts();
            const int mistakes = crowd.mistakes(list);
            std::printf("scan %d: %.1f s, %d rows, %d missing or wrong; ", scan + 1,
                        double(timer.elapsed()) / 1000, int(list.size()), mistakes);
            isGood = fits(before, holdings()) && mistakes == 0 && isGood;
        }
        std::printf("the end took %.0f ms; ", store.end());
    }
    return leavesNothing(before) && isGood;
}

/// Another user's crowd changes nothing in the list.
bool overlookOthers(const QString &tools, int scans)
{
    const SharedDirectory shared;
    for (const char *const tool : {"/lsof", "/lsof-complete", "/ps"})
        shared.copy(tools.toStdString() + tool);
    const ToolTable table = ToolTable::suppliedOverStock(QString::fromStdString(shared.path()));
    const Crowd own(ownServer());
    const OrdinaryUser user(ownUser);
    return own.size() == 1 && scanAll(own, table, scans);
}

/// No scan ends. Requests go on, and a process is killed, and then it is all over at once.
bool endureSilence(const Crowd &crowd, const ToolTable &tools)
{
    constexpr int requests = 200;
    const Holdings before = holdings();
    bool isGood = true;
    {
        Store store(tools);
        for (int request = 0; request < requests; ++request) {
            store.state().refreshPorts();
            QCoreApplication::processEvents();
        }
        isGood = waitUntil([&store] { return store.scansUnderWay() == store.scansAtOnce(); });
        std::printf("%d requests: %d scans under way; ", requests, store.scansUnderWay());
        isGood = fits(before, holdings()) && isGood;

        QElapsedTimer timer;
        timer.start();
        auto kill = store.state().killProcess(crowd.anyPid());
        const bool isKilled = QCoro::waitFor(kill);
        std::printf("a kill: %s after %lld ms\n", isKilled ? "done" : "FAILED", timer.elapsed());
        isGood = isKilled && isGood;
        const double end = store.end();
        std::printf("the end took %.0f ms; ", end);
        isGood = end < timeoutMs && isGood;
    }
    return leavesNothing(before) && isGood;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const int listeners = argc > 4 ? QByteArray(argv[4]).toInt() : 1000;
    const QList<Case> cases = allCases(listeners);
    const auto which = std::find_if(cases.begin(), cases.end(), [argc, argv](const Case &each) {
        return argc > 3 && QByteArray(argv[1]) == each.name;
    });
    if (which == cases.end())
        return EXIT_FAILURE;
    if (which->user && !isRealRoot()) {
        std::printf("SKIPPED: only root can start a server as another user\n");
        return skipped;
    }
    const QString directory = QString::fromLocal8Bit(argv[3]);
    const ToolTable tools = ToolTable::suppliedOverStock(directory);
    const int scans = QByteArray(argv[2]).toInt();
    const Crowd crowd(*which);
    std::printf("%s: %zu listeners\n", which->name, crowd.size());
    const bool isGood = which->user                             ? overlookOthers(directory, scans)
                        : QByteArray(which->manner) == "silent" ? endureSilence(crowd, tools)
                                                                : scanAll(crowd, tools, scans);
    return isGood && crowd.size() == size_t(listeners) ? EXIT_SUCCESS : EXIT_FAILURE;
}
