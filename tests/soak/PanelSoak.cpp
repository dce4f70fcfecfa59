// panel_soak_program REFRESHES - refreshes the panel so often, while it is shown, with cards that
// come, go and change, over a machine that is made up. Prints what the process held at the
// beginning and at the end, when there was no card; exits 1 where something grew, and aborts where
// no card is shown in between.

#include "state/Workers.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/system/Holdings.h"
#include "views/panel/Panel.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickView>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

using namespace tidewick;

namespace
{

constexpr int slots = 12;        // cards at a time, at most
constexpr int warmUp = 300;      // refreshes until everything was allocated once
constexpr int milliseconds = 25; // from one refresh to the next, for a frame or two
constexpr double heapRoom = 64;  // KiB: by so much two equal moments differ

/// Each scan finds other processes on other ports, with other figures; none while it is empty.
class Machine : public ToolRunner
{
public:
    ToolResult run(const QString & /*program*/, const QStringList &arguments,
                   const std::stop_token & /*stop*/) const override
    {
        const int scan = m_scan;
        if (arguments.first() == QStringLiteral("-i"))
            return {sockets(++m_scan), 0};
        const QByteArray pid = arguments[1].toUtf8();
        if (arguments.last() == QStringLiteral("command="))
            return {"node /home/a/shop/server" + pid + ".js\n", 0};
        if (arguments.last() == QStringLiteral("rss=,%cpu="))
            return {QByteArray::number(20000 + 100 * (scan % 1000)) + ' ' +
                        QByteArray::number(scan % 90) + ".0\n",
                    0};
        if (arguments.last() == QStringLiteral("etime="))
            return {"01:02:03\n", 0};
        return {"p1\nfcwd\nn/home/a/shop" + pid + '\n', 0};
    }

    void setEmpty(bool isEmpty) { m_isEmpty = isEmpty; }

private:
    QByteArray sockets(int scan) const
    {
        QByteArray lines = "header\n";
        for (int slot = 0; slot < slots && !m_isEmpty; ++slot) {
            const int life = scan / (slot + 1); // some stay longer than others
            if ((scan + slot) % 4 != 0)
                lines += "node " + QByteArray::number(1000 + slots * life + slot) +
                         " a 3u IPv4 0x1 0t0 TCP *:" +
                         QByteArray::number(3000 + (slots * life + slot) % 20000) + " (LISTEN)\n";
        }
        return lines;
    }

    mutable std::atomic<int> m_scan = 0;
    std::atomic<bool> m_isEmpty = false;
};

/// Most of its ports answer.
class Servers : public HttpClient
{
public:
    HttpOutcome send(const HttpRequest &request, TlsEvidence & /*evidence*/,
                     const std::stop_token & /*stop*/) const override
    {
        if (request.url.endsWith(QLatin1Char('7')))
            return HttpError{HttpError::cannotConnect};
        HttpResponse response;
        response.status = 200;
        return response;
    }
};

/// Refreshes until the panel has shown so many lists.
void refresh(AppState &state, int times)
{
    for (int i = 0; i < times; ++i) {
        bool hasEnded = false;
        const QObject context;
        QObject::connect(&state, &AppState::isLoadingChanged, &context,
                         [&hasEnded](bool isLoading) { hasEnded = !isLoading; });
        state.loadRunningPorts();
        waitUntil([&hasEnded] { return hasEnded; });
        waitUntil([] { return false; }, milliseconds);
    }
}

/// What is held while the panel shows no card and nothing moves.
Holdings quietHoldings(AppState &state, Machine &machine, QQuickView &view)
{
    machine.setEmpty(true);
    refresh(state, 1);
    waitUntil([] { return false; }, 3000);
    view.engine()->collectGarbage();
    waitUntil([] { return false; }, 100); // deletes what was collected
    machine.setEmpty(false);
    return holdings();
}

bool report(const Holdings &first, const Holdings &last)
{
    std::printf("%-24s %10s %10s\n", "the panel", "at first", "at last");
    std::printf("%-24s %10d %10d\n", "file descriptors", first.descriptors, last.descriptors);
    std::printf("%-24s %10d %10d\n", "threads", first.threads, last.threads);
    std::printf("%-24s %10.0f %10.0f\n", "heap, KiB", first.heap, last.heap);
    std::printf("%-24s %10.0f %10.0f\n", "resident memory, KiB", first.resident, last.resident);
    return last.descriptors <= first.descriptors && last.threads <= first.threads &&
           last.heap <= first.heap + heapRoom;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication application(argc, argv);
    const int refreshes = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 300;

    const auto machine = std::make_shared<Machine>();
    Workers workers;
    AppState state({machine, ToolTable::stock(), std::make_shared<Servers>()}, workers);
    const_cast<QTimer *>(state.refreshTimer())->stop();
    Panel panel(state);
    QQuickView view;
    view.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    view.setInitialProperties({{QStringLiteral("panel"), QVariant::fromValue(&panel)}});
    view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Tidewick/panel/ContentView.qml")));
    if (view.rootObject() == nullptr)
        qFatal("panel_soak_program: the panel has an error");
    view.resize(480, 540);
    view.show();

    refresh(state, warmUp);
    const auto *const cards = view.rootObject()->findChild<QQuickItem *>(QStringLiteral("cards"));
    if (cards == nullptr || cards->property("count").toInt() == 0)
        qFatal("panel_soak_program: the panel shows no card");
    const Holdings first = quietHoldings(state, *machine, view);
    refresh(state, refreshes);
    return report(first, quietHoldings(state, *machine, view)) ? EXIT_SUCCESS : EXIT_FAILURE;
}
