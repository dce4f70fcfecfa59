// panel_bench [CARDS] [hostile|first|rings] - what the panel costs with 200 cards, or so many: how
// soon it opens, how smoothly it scrolls, for how long a refresh keeps the main thread, how much
// memory there is in all, and what it uses while it is hidden. Hostile ones have command lines of
// 100,000 characters, which the cards show as titles. "first" measures the first opening alone, and
// "rings" what the open panel uses while it is left alone. The window, the views and the
// store are the program's own; the tools' and the servers' answers are made up. scripts/bench runs
// it on a virtual desktop, drawn without OpenGL like the program.
#include "platform/window/PopoverWindow.h"
#include "scan/ToolTable.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "views/panel/Panel.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QRasterWindow>
#include <QSemaphore>
#include <QTimer>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <vector>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

using namespace tidewick;

namespace
{

constexpr int repetitions = 25;
constexpr int timeoutMs = 20000;
constexpr int settlingMs = 2000; // nobody opens the panel sooner than that

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
        m_door.release(1000); // more than can hang
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

/// What the whole process uses in ten seconds, in milliseconds of processor time.
double usedInTenSeconds()
{
    const auto used = [] {
        timespec now{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
    };
    const auto before = used();
    idle(10000);
    return used() - before;
}

/// The least that rings can cost with this toolkit: a window without a scene that draws as many,
/// as often, and nothing else.
class BareRings : public QRasterWindow
{
    Q_OBJECT

public:
    explicit BareRings(int count) : m_count(count)
    {
        resize(480, 540);
        m_ticks.setInterval(50);
        connect(&m_ticks, &QTimer::timeout, this, [this] {
            m_phase = std::fmod(m_phase + 0.03, 1);
            QRegion region;
            for (int i = 0; i < m_count; ++i)
                region += place(i);
            update(region);
        });
        m_ticks.start();
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setClipRegion(event->region());
        for (int i = 0; i < m_count; ++i) {
            painter.fillRect(place(i), Qt::black);
            painter.setPen(QPen(Qt::green, 1.5 * (1 + 0.2 * m_phase)));
            painter.drawEllipse(QRectF(place(i)).center(), 21 + 4 * m_phase, 21 + 4 * m_phase);
        }
    }

private:
    static QRect place(int row) { return {20, 20 + 80 * row, 54, 54}; }

    const int m_count;
    QTimer m_ticks;
    double m_phase = 0;
};

/// The open panel, which refreshes every 5 seconds, beside a window that draws the same rings and
/// has no scene, in turns.
void measureRings(PopoverWindow &window, int cards)
{
    constexpr int turns = 3;
    constexpr int mostInView = 5;
    std::vector<double> panel;
    std::vector<double> bare;
    for (int turn = 0; turn < turns; ++turn) {
        show(window);
        idle(1000);
        panel.push_back(usedInTenSeconds());
        window.performClose();
        BareRings rings(std::min(cards, mostInView));
        rings.show();
        idle(1000);
        bare.push_back(usedInTenSeconds());
    }
    print("the open panel, 2 refreshes: processor time in 10 s", panel, "ms");
    print("the same rings in a bare window", bare, "ms");
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
    const QByteArray mode = argc > 2 ? argv[2] : "";
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);

    Machine machine(cards, mode == "hostile");
    Workers workers;
    AppState state(machine.interfaces(), workers);
    Panel panel(state);
    PopoverWindow window([] { return true; });
    window.setContentSize({480, 540});
    window.setContentView(QUrl(QStringLiteral("qrc:/qt/qml/Tidewick/panel/ContentView.qml")),
                          {{QStringLiteral("panel"), QVariant::fromValue(&panel)}});
    window.makeReady();
    await(&state, &AppState::runningPortsChanged);
    window.makeReady();
    Heartbeat heart;
    heart.start();
    idle(settlingMs);
    const double preparation = heart.stop();
    QElapsedTimer opening;
    opening.start();
    show(window);
    const double firstOpening = double(opening.nsecsElapsed()) / 1e6;
    if (mode == "first") {
        std::printf("%.2f\n", firstOpening);
        return EXIT_SUCCESS;
    }
    if (mode == "rings") {
        measureRings(window, cards);
        return EXIT_SUCCESS;
    }

    std::printf("the panel with %d cards\n%-52s %8s %8s\n", panel.runningCount(), "", "median",
                "worst");
    print("made ready, once", {preparation}, "ms");
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
    const double used = usedInTenSeconds();
    print("hidden: processor time in 10 s", {used}, "ms");
    std::printf("%-52s %8d\n", "hidden: frames in 10 s", frames);
    machine.goOn();
    return EXIT_SUCCESS;
}

#include "PanelBench.moc"
