// panel_bench [CARDS] [hostile] - what the panel costs with 200 cards, or so many: how soon it
// opens, how smoothly it scrolls, for how long a refresh keeps the main thread, how much memory
// there is in all, and what it uses while it is hidden. Hostile ones have command lines of 100,000
// characters, which the cards show as titles. The window, the views and the store are the program's
// own; the tools' and the servers' answers are made up. scripts/bench runs it on a virtual desktop,
// drawn without OpenGL like the program.
#include "platform/window/PopoverWindow.h"
#include "scan/ToolTable.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "views/panel/Panel.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QSemaphore>
#include <QTimer>

#include <sys/times.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

using namespace tidewick;

namespace
{

constexpr int repetitions = 25;
constexpr int timeoutMs = 20000;

/// A machine with listeners, most of which answer HTTP. Each refresh finds other figures.
class Machine
{
public:
    Machine(int cards, bool isHostile) : m_cards(cards), m_isHostile(isHostile) {}

    SystemInterfaces interfaces()
    {
        return {std::make_shared<RecordingToolRunner>(
                    [this](const auto &call, const auto & /*stop*/) { return run(call); }),
                ToolTable::stock(),
                std::make_shared<RecordingHttpClient>([](const HttpRequest &request) {
                    HttpResponse response;
                    response.status = 200;
                    return request.url.endsWith(QLatin1Char('7'))
                               ? HttpOutcome(HttpError{HttpError::cannotConnect})
                               : HttpOutcome(response);
                })};
    }

    /// Scans hang in lsof between these two.
    void hang() { m_isHanging = true; }
    void goOn()
    {
        m_isHanging = false;
        m_door.release(m_cards);
    }

private:
    ToolResult run(const RecordingToolRunner::Call &call)
    {
        const QString what = call.arguments.last();
        if (call.arguments.first() == QStringLiteral("-i")) {
            if (m_isHanging)
                m_door.acquire();
            ++m_scan;
            return {sockets(), 0};
        }
        if (what == QStringLiteral("command="))
            return {m_isHostile
                        ? "node " + QByteArray(100'000, 'x') + call.arguments[1].toUtf8() + ".js\n"
                        : "node /home/a/shop/server.js\n",
                    0};
        if (what == QStringLiteral("rss=,%cpu="))
            return {QByteArray::number(20000 + 1024 * m_scan) + ' ' +
                        QByteArray::number(m_scan % 90) + ".0\n",
                    0};
        if (what == QStringLiteral("etime="))
            return {"01:02:03\n", 0};
        return {m_isHostile ? "p1\nfcwd\n" : "p1\nfcwd\nn/home/a/shop\n", 0};
    }

    QByteArray sockets() const
    {
        QByteArray lines = "header\n";
        for (int card = 0; card < m_cards; ++card)
            lines += "node " + QByteArray::number(1000 + card) +
                     " a 3u IPv4 0x1 0t0 TCP *:" + QByteArray::number(3000 + card) + " (LISTEN)\n";
        return lines;
    }

    const int m_cards;
    const bool m_isHostile;
    std::atomic<bool> m_isHanging = false;
    std::atomic<int> m_scan = 0;
    QSemaphore m_door;
};

/// Runs the event loop until the signal comes, or gives up.
template <class Sender, class Signal>
void await(Sender *sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(timeoutMs, &loop, [] { qFatal("panel_bench: nothing happens"); });
    loop.exec();
}

void idle(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The longest time, in milliseconds, for which the main thread kept its event loop waiting:
/// between two beats of a timer that is always due.
class Heartbeat : public QObject
{
    Q_OBJECT

public:
    Heartbeat() { connect(&m_beats, &QTimer::timeout, this, &Heartbeat::beat); }

    void start()
    {
        m_longest = 0;
        m_sinceLast.start();
        m_beats.start(0);
    }
    double stop()
    {
        m_beats.stop();
        return m_longest;
    }

private:
    void beat()
    {
        m_longest = std::max(m_longest, double(m_sinceLast.nsecsElapsed()) / 1e6);
        m_sinceLast.start();
    }

    QTimer m_beats;
    QElapsedTimer m_sinceLast;
    double m_longest = 0;
};

void print(const char *what, std::vector<double> values, const char *unit)
{
    std::sort(values.begin(), values.end());
    std::printf("%-52s %8.2f %8.2f %s\n", what, values[values.size() / 2], values.back(), unit);
}

void show(PopoverWindow &window)
{
    window.show({});
    await(&window, &QQuickWindow::frameSwapped);
}

std::vector<double> openings(PopoverWindow &window)
{
    std::vector<double> times;
    for (int time = 0; time < repetitions; ++time) {
        window.performClose();
        idle(200);
        QElapsedTimer timer;
        timer.start();
        show(window);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return times;
}

/// The times between the frames while the list scrolls as fast as it is drawn.
std::vector<double> scrolling(PopoverWindow &window)
{
    constexpr double pointsAFrame = 40;
    constexpr int frames = 600;
    auto *const list = window.rootObject()->findChild<QQuickItem *>(QStringLiteral("cards"));
    std::vector<double> gaps;
    QElapsedTimer timer;
    double y = 0;
    double step = pointsAFrame;
    for (int frame = 0; frame < frames; ++frame) {
        const double bottom = list->property("contentHeight").toDouble() - list->height();
        if (y + step < 0 || y + step > bottom)
            step = -step;
        y += step;
        list->setProperty("contentY", y);
        timer.start();
        await(&window, &QQuickWindow::frameSwapped);
        gaps.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    list->setProperty("contentY", 0);
    return gaps;
}

/// The longest block in each of many stretches of time, in all of which `work` is done.
template <class Work>
std::vector<double> blocks(Work work)
{
    std::vector<double> longest;
    Heartbeat heart;
    for (int time = 0; time < repetitions; ++time) {
        idle(100);
        heart.start();
        work();
        idle(50); // the frames that show it
        longest.push_back(heart.stop());
    }
    return longest;
}

/// What the whole process uses in ten seconds, in ticks of the kernel's clock.
double ticksInTenSeconds()
{
    const auto used = [] {
        tms now{};
        times(&now);
        return now.tms_utime + now.tms_stime;
    };
    const auto before = used();
    idle(10000);
    return double(used() - before);
}

double residentMegabytes()
{
    std::ifstream file("/proc/self/statm"); // pages: all, resident, ...
    double all = 0;
    double resident = 0;
    file >> all >> resident;
    return resident * double(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

} // namespace

int main(int argc, char *argv[])
{
    const int cards = argc > 1 ? std::max(1, std::atoi(argv[1])) : 200;
    const bool isHostile = argc > 2;
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);

    Machine machine(cards, isHostile);
    Workers workers;
    AppState state(machine.interfaces(), workers);
    Panel panel(state);
    QElapsedTimer creation;
    creation.start();
    PopoverWindow window([] { return true; });
    window.setContentSize({480, 540});
    window.setContentView(QUrl(QStringLiteral("qrc:/qt/qml/Tidewick/panel/ContentView.qml")),
                          {{QStringLiteral("panel"), QVariant::fromValue(&panel)}});
    const double created = double(creation.nsecsElapsed()) / 1e6;
    await(&state, &AppState::runningPortsChanged);
    creation.start();
    show(window);
    const double firstOpening = double(creation.nsecsElapsed()) / 1e6;

    std::printf("the panel with %d cards\n%-52s %8s %8s\n", panel.runningCount(), "", "median",
                "worst");
    print("created, once", {created}, "ms");
    print("opened for the first time, to its first frame", {firstOpening}, "ms");
    print("opened again, to its first frame", openings(window), "ms");

    const std::vector<double> gaps = scrolling(window);
    double sum = 0;
    for (const double gap : gaps)
        sum += gap;
    print("scrolled by 40 points, from frame to frame", gaps, "ms");
    std::printf("%-52s %8.1f %8s frames/s\n", "scrolling", 1000 * double(gaps.size()) / sum, "");

    print("left alone: the longest block of the main thread", blocks([] { idle(50); }), "ms");
    print("a refresh: the longest block of the main thread", blocks([&state] {
              state.refreshPorts();
              await(&state, &AppState::runningPortsChanged);
          }),
          "ms");

    print("resident memory of the whole process", {residentMegabytes()}, "MiB");

    int frames = 0;
    window.performClose();
    machine.hang(); // no refresh has a part in this, and the panel believes that one is under way
    idle(5500);
    QObject::connect(&window, &QQuickWindow::frameSwapped, [&frames] { ++frames; });
    const double ticks = ticksInTenSeconds();
    std::printf("%-52s %8.0f %8s of %ld\n", "hidden: ticks of the clock in 10 s", ticks, "",
                10 * sysconf(_SC_CLK_TCK));
    std::printf("%-52s %8d\n", "hidden: frames in 10 s", frames);
    machine.goOn();
    return EXIT_SUCCESS;
}

#include "PanelBench.moc"
