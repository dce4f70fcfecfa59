#include "app/ApplicationPalette.h"
#include "scan/ToolTable.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "views/panel/Panel.h"
#include "views/settings/Settings.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QFontInfo>
#include <QJSValue>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlAbstractUrlInterceptor>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QTcpServer>
#include <QtQuickTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

using namespace tidewick;

/// A panel over a machine that the test makes up, and what the panel asked for.
class Machine : public QObject
{
    Q_OBJECT
    Q_PROPERTY(tidewick::Panel *panel READ panel CONSTANT)
    Q_PROPERTY(tidewick::Settings *settings READ settings CONSTANT)
    /// A port on loopback that nobody is to connect to, and how many did.
    Q_PROPERTY(int trapPort READ trapPort CONSTANT)
    Q_PROPERTY(int trapped READ trapped)
    Q_PROPERTY(QStringList log READ log NOTIFY logChanged)

public:
    Machine()
    {
        // The panel is refreshed only when the test or the panel asks for it.
        const_cast<QTimer *>(m_state.refreshTimer())->stop();
        m_trap.listen(QHostAddress::LocalHost);
        connect(&m_trap, &QTcpServer::newConnection, this, [this] { ++m_trapped; });
        connect(&m_panel, &Panel::openRequested, this,
                [this](const QUrl &url) { write(QStringLiteral("open ") + url.toString()); });
        connect(&m_panel, &Panel::revealRequested, this,
                [this](const QString &path) { write(QStringLiteral("reveal ") + path); });
        connect(&m_panel, &Panel::quitRequested, this, [this] { write(QStringLiteral("quit")); });
    }

    Panel *panel() { return &m_panel; }
    Settings *settings() { return &m_settings; }
    int trapPort() const { return m_trap.serverPort(); }
    int trapped() const { return m_trapped; }
    QStringList log() const { return m_log; }

    /// Lets the next scans find these listeners, each with port, pid and what ps and lsof print:
    /// command, figures, elapsed, directory; `live` ones answer HTTP.
    Q_INVOKABLE void listen(const QVariantList &listeners)
    {
        const std::lock_guard lock(m_mutex);
        m_listeners = listeners;
    }

    /// How /bin/kill ends from now on, one that runs too, and after how long, unless it is ended
    /// before.
    Q_INVOKABLE void setKill(int status, int milliseconds)
    {
        m_killStatus = status;
        m_killMilliseconds = milliseconds;
    }
    /// Holds back every scan, or lets them go on.
    Q_INVOKABLE void setSlow(bool isSlow) { m_isSlow = isSlow; }
    /// Fails each registration as a login item from now on, with `error`; none when it is empty.
    Q_INVOKABLE void failRegistration(const QString &error) { m_registrationError = error; }
    Q_INVOKABLE void reduceMotion(bool isReduced) { m_panel.setReducesMotion(isReduced); }
    /// What lies behind the panel's window, a Panel::Backdrop.
    Q_INVOKABLE void setBackdrop(int backdrop)
    {
        m_panel.setBackdrop(static_cast<Panel::Backdrop>(backdrop));
    }
    /// Lets the desktop ask for dark or light windows.
    Q_INVOKABLE static void useScheme(bool isDark)
    {
        followColorScheme(isDark ? ColorScheme::dark : ColorScheme::light);
    }
    Q_INVOKABLE static void useDesktopsScheme() { followColorScheme(ColorScheme::any); }
    /// Gives marked text that colour until a scheme is asked for.
    Q_INVOKABLE static void useMarkedText(const QColor &color)
    {
        QPalette palette = QGuiApplication::palette();
        palette.setColor(QPalette::HighlightedText, color);
        QGuiApplication::setPalette(palette);
    }
    Q_INVOKABLE static bool hasFont(const QString &family)
    {
        return QFontDatabase::hasFamily(family);
    }
    /// The desktop's font.
    Q_INVOKABLE static QString family() { return QGuiApplication::font().family(); }
    /// The font that the desktop's is drawn with.
    Q_INVOKABLE static QString drawnFamily() { return QFontInfo(QGuiApplication::font()).family(); }
    /// Makes `family` the desktop's font for the views that are made from now on; an empty one ends
    /// that.
    Q_INVOKABLE static void useFont(const QString &family)
    {
        static const QFont desktops = QGuiApplication::font();
        QFont font = desktops;
        if (!family.isEmpty())
            font.setFamily(family);
        QGuiApplication::setFont(font);
    }
    Q_INVOKABLE void clearLog() { m_log.clear(); }
    /// What the keyboard sends to `item`'s window for a key that stays down.
    Q_INVOKABLE static void repeatKey(QQuickItem *item, int key)
    {
        for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress}) {
            QKeyEvent event(type, key, Qt::NoModifier, {}, true);
            QCoreApplication::sendEvent(item->window(), &event);
        }
    }
    /// Moves `item`'s window to a screen of tests/views/screens.json.
    Q_INVOKABLE static void moveToScreen(QQuickItem *item, int number)
    {
        item->window()->setScreen(QGuiApplication::screens().at(number));
    }
    /// What changes of the picture of `item` is told from then on.
    Q_INVOKABLE void rememberPicture(QQuickItem *item) { m_picture = pictureOf(item); }
    /// The places in `item` that look otherwise than in the picture.
    Q_INVOKABLE QVariantList changedPlaces(QQuickItem *item) const
    {
        const QImage picture = pictureOf(item);
        QVariantList places;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (!m_picture.valid(x, y) || picture.pixel(x, y) != m_picture.pixel(x, y))
                    places.append(QPoint(x, y));
        return places;
    }
    Q_INVOKABLE bool hasChanged(QQuickItem *item) const { return pictureOf(item) != m_picture; }
    Q_INVOKABLE static QColor cornerOf(QQuickItem *item)
    {
        return pictureOf(item).pixelColor(0, 0);
    }
    /// What is drawn at (`x`, `y`) in `item`, in points.
    Q_INVOKABLE static QColor pixelOf(QQuickItem *item, double x, double y)
    {
        const QImage picture = pictureOf(item);
        const double pixelsPerPoint = picture.width() / item->width();
        return picture.pixelColor((QPointF(x, y) * pixelsPerPoint).toPoint());
    }
    /// The shape of the pointer over `item`'s window.
    Q_INVOKABLE static int pointerShape(QQuickItem *item)
    {
        return item->window()->cursor().shape();
    }
    /// The colour in the picture of `item` that differs most from that of its corner.
    Q_INVOKABLE static QColor strongestPixelOf(QQuickItem *item)
    {
        const QImage picture = pictureOf(item);
        const QColor ground = picture.pixelColor(0, 0);
        const auto distance = [&ground](const QColor &color) {
            return std::hypot(color.redF() - ground.redF(), color.greenF() - ground.greenF(),
                              color.blueF() - ground.blueF());
        };
        QColor strongest = ground;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (distance(picture.pixelColor(x, y)) > distance(strongest))
                    strongest = picture.pixelColor(x, y);
        return strongest;
    }
    /// The smallest rectangle, in pixels of the window, with all that differs from the corner of
    /// `item` by that share of its strongest pixel.
    Q_INVOKABLE static QRect inkOf(QQuickItem *item, double share = 0.5)
    {
        return inkIn(item->window()->grabWindow(), placeOf(item), share);
    }
    /// How much is drawn in `item` and that share of its width around it.
    Q_INVOKABLE static double weightOf(QQuickItem *item, double share)
    {
        const QRect place = placeOf(item);
        const int margin = qRound(place.width() * share);
        const QImage part =
            item->window()->grabWindow().copy(place.adjusted(-margin, -margin, margin, margin));
        double weight = 0;
        for (int y = 0; y < part.height(); ++y)
            for (int x = 0; x < part.width(); ++x)
                weight += distance(part.pixel(x, y), part.pixel(0, 0));
        return weight;
    }
    /// How far the picture of the ink of `item` is from its mirror images, left to right and top to
    /// bottom: the largest difference of a pixel, as a share of the strongest one.
    Q_INVOKABLE static QPointF asymmetryOf(QQuickItem *item, double share = 0.05)
    {
        const QImage picture = item->window()->grabWindow();
        const QRect place = placeOf(item);
        const QImage part = picture.copy(inkIn(picture, place, share));
        const int strongest = strengthIn(picture, place);
        return {double(largestDifference(part, part.mirrored(true, false))) / strongest,
                double(largestDifference(part, part.mirrored(false, true))) / strongest};
    }
    /// The same for a square of `points` in each corner of the ink.
    Q_INVOKABLE static QPointF cornerAsymmetryOf(QQuickItem *item, double points)
    {
        const QImage picture = item->window()->grabWindow();
        const QRect ink = inkIn(picture, placeOf(item), 0.05);
        const int side = qRound(points * item->window()->effectiveDevicePixelRatio());
        const QImage left = picture.copy(QRect(ink.left(), ink.top(), side, side));
        const QImage right = picture.copy(QRect(ink.right() + 1 - side, ink.top(), side, side));
        const QImage below = picture.copy(QRect(ink.left(), ink.bottom() + 1 - side, side, side));
        const int strongest = strengthIn(picture, QRect(ink.topLeft(), left.size()));
        return {double(largestDifference(left, right.mirrored(true, false))) / strongest,
                double(largestDifference(left, below.mirrored(false, true))) / strongest};
    }
    Q_INVOKABLE static void save(QQuickItem *item, const QString &file)
    {
        pictureOf(item).save(file);
    }
    /// Why the pictures that were kept mean nothing here; empty if they do.
    Q_INVOKABLE static QString reasonNotToCompare()
    {
        if (!QString::fromLatin1(qVersion()).startsWith(QLatin1String("6.4.")))
            return QStringLiteral("the pictures were made with Qt 6.4, and this is ") +
                   QLatin1String(qVersion());
        const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1"));
        if (scale != QLatin1String("1") && scale != QLatin1String("2"))
            return QStringLiteral("no pictures are kept at scale ") + scale;
        return {};
    }
    /// How the picture of `item` differs from the kept one; empty if it does not. Antialiasing may
    /// differ a little. Pictures that differ are saved beside the expected ones and the difference.
    Q_INVOKABLE static QString differenceFromKept(QQuickItem *item, const QString &name)
    {
        for (const char *family : {"Inter", "Fira Code"})
            if (!QFontDatabase::hasFamily(QLatin1String(family)))
                return QStringLiteral("a font is missing: ") + QLatin1String(family);
        const QImage picture = pictureOf(item).convertToFormat(QImage::Format_RGB32);
        const QString file =
            name + (picture.width() > item->width() ? QStringLiteral("@2x") : QString());
        const QString keptFile =
            qEnvironmentVariable("TIDEWICK_PICTURES") + QStringLiteral("/%1.png").arg(file);
        if (qEnvironmentVariableIsSet("TIDEWICK_KEEP_PICTURES"))
            return picture.save(keptFile) ? QString() : QStringLiteral("not saved: ") + keptFile;
        const QImage kept = QImage(keptFile).convertToFormat(QImage::Format_RGB32);
        if (kept.size() != picture.size())
            return QStringLiteral("no picture of that size: ") + keptFile;
        constexpr int tolerance = 12; // of 255
        QImage difference(picture.size(), QImage::Format_RGB32);
        int different = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const int apart = distance(picture.pixel(x, y), kept.pixel(x, y));
                different += apart > tolerance ? 1 : 0;
                difference.setPixel(x, y, qRgb(apart, apart, apart));
            }
        }
        if (different == 0)
            return {};
        const QString results = qEnvironmentVariable("TIDEWICK_PICTURE_RESULTS");
        picture.save(QStringLiteral("%1/%2.png").arg(results, file));
        kept.save(QStringLiteral("%1/%2-expected.png").arg(results, file));
        difference.save(QStringLiteral("%1/%2-difference.png").arg(results, file));
        return QStringLiteral("%1 pixels differ, see %2/%3.png").arg(different).arg(results, file);
    }
    /// A click on the middle of `item`, `timestamp` milliseconds after the pointer's first event.
    Q_INVOKABLE static void click(QQuickItem *item, int timestamp)
    {
        const QPointF place = item->mapToScene({item->width() / 2, item->height() / 2});
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const bool isPress = type == QEvent::MouseButtonPress;
            QMouseEvent event(type, place, item->window()->mapToGlobal(place), Qt::LeftButton,
                              isPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            event.setTimestamp(static_cast<quint64>(timestamp));
            QCoreApplication::sendEvent(item->window(), &event);
        }
    }

Q_SIGNALS:
    void logChanged();

private:
    static int distance(QRgb a, QRgb b)
    {
        return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                         std::abs(qBlue(a) - qBlue(b))});
    }

    /// Where `item` is drawn, in pixels of its window.
    static QRect placeOf(QQuickItem *item)
    {
        const double pixelsPerPoint = item->window()->effectiveDevicePixelRatio();
        const QRectF place = item->mapRectToScene(QRectF({}, item->size()));
        return QRectF(place.topLeft() * pixelsPerPoint, place.size() * pixelsPerPoint)
            .toAlignedRect();
    }

    static int largestDifference(const QImage &a, const QImage &b)
    {
        int largest = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                largest = std::max(largest, distance(a.pixel(x, y), b.pixel(x, y)));
        return largest;
    }

    /// How far the strongest pixel is from that in the corner.
    static int strengthIn(const QImage &picture, const QRect &place)
    {
        const QImage part = picture.copy(place);
        QImage ground(part.size(), part.format());
        ground.fill(part.pixel(0, 0));
        return largestDifference(part, ground);
    }

    static QRect inkIn(const QImage &picture, const QRect &place, double share)
    {
        const double least = std::max(1.0, share * strengthIn(picture, place));
        const QRgb ground = picture.pixel(place.topLeft());
        QRect ink;
        for (int y = place.top(); y <= place.bottom(); ++y)
            for (int x = place.left(); x <= place.right(); ++x)
                if (distance(picture.pixel(x, y), ground) > least)
                    ink |= QRect(x, y, 1, 1);
        return ink;
    }

    static QImage pictureOf(QQuickItem *item)
    {
        const QImage picture = item->window()->grabWindow();
        const double pixelsPerPoint = double(picture.width()) / item->window()->width();
        const QPointF corner = item->mapToScene({}) * pixelsPerPoint;
        return picture.copy({corner.toPoint(), (item->size() * pixelsPerPoint).toSize()});
    }

    void write(const QString &line)
    {
        m_log.append(line);
        Q_EMIT logChanged();
    }

    std::optional<QString> registration(const QString &line)
    {
        write(line);
        return m_registrationError.isEmpty() ? std::nullopt : std::optional(m_registrationError);
    }

    ToolResult run(const RecordingToolRunner::Call &call, const std::stop_token &stop)
    {
        const QString first = call.arguments.first();
        if (first == QStringLiteral("-9")) {
            QElapsedTimer time;
            time.start();
            while (!time.hasExpired(m_killMilliseconds) && !stop.stop_requested())
                QThread::msleep(1);
            QMetaObject::invokeMethod(
                this, [this, call] { write(QStringLiteral("kill ") + call.arguments.last()); });
            return {{}, m_killStatus};
        }
        while (m_isSlow && !stop.stop_requested())
            QThread::msleep(1);
        const std::lock_guard lock(m_mutex);
        return {first == QStringLiteral("-i") ? sockets() : answer(call), 0};
    }

    QByteArray sockets() const
    {
        QString lines = QStringLiteral("header\n");
        for (const QVariant &listener : m_listeners) {
            const QVariantMap map = listener.toMap();
            lines += QStringLiteral("node %1 a 3u IPv4 0x1 0t0 TCP *:%2 (LISTEN)\n")
                         .arg(map.value(QStringLiteral("pid")).toString())
                         .arg(map.value(QStringLiteral("port")).toInt());
        }
        return lines.toUtf8();
    }

    QByteArray answer(const RecordingToolRunner::Call &call) const
    {
        static const QHash<QString, QString> keys{
            {QStringLiteral("command="), QStringLiteral("command")},
            {QStringLiteral("rss=,%cpu="), QStringLiteral("figures")},
            {QStringLiteral("etime="), QStringLiteral("elapsed")}};
        for (const QVariant &listener : m_listeners) {
            const QVariantMap map = listener.toMap();
            if (map.value(QStringLiteral("pid")).toString() != call.arguments[1])
                continue;
            if (keys.contains(call.arguments.last()))
                return map.value(keys.value(call.arguments.last())).toByteArray();
            const QByteArray directory = map.value(QStringLiteral("directory")).toByteArray();
            return directory.isEmpty() ? QByteArray() : "p1\nfcwd\nn" + directory + '\n';
        }
        return {};
    }

    HttpOutcome answerHttp(const HttpRequest &request)
    {
        const std::lock_guard lock(m_mutex);
        for (const QVariant &listener : m_listeners) {
            const QVariantMap map = listener.toMap();
            if (request.url.endsWith(map.value(QStringLiteral("port")).toString()) &&
                map.value(QStringLiteral("live")).toBool()) {
                HttpResponse response;
                response.status = 200;
                return response;
            }
        }
        return HttpError{HttpError::cannotConnect};
    }

    std::mutex m_mutex;
    QVariantList m_listeners;
    std::atomic<int> m_killStatus = 0;
    std::atomic<int> m_killMilliseconds = 0;
    std::atomic<bool> m_isSlow = false;
    QStringList m_log;
    Workers m_workers;
    AppState m_state{{std::make_shared<RecordingToolRunner>(
                          [this](const auto &call, const auto &stop) { return run(call, stop); }),
                      ToolTable::stock(),
                      std::make_shared<RecordingHttpClient>(
                          [this](const auto &request) { return answerHttp(request); })},
                     m_workers};
    Panel m_panel{m_state};
    QString m_registrationError;
    QImage m_picture;
    QTcpServer m_trap;
    int m_trapped = 0;
    Settings m_settings{[this] { return registration(QStringLiteral("register")); },
                        [this] {
                            return registration(QStringLiteral("unregister"));
                        }};
};

/// Takes the views from a directory, so that a change in one needs no build.
class ViewsFromDirectory : public QQmlAbstractUrlInterceptor
{
public:
    explicit ViewsFromDirectory(QString directory) : m_directory(std::move(directory)) {}

    QUrl intercept(const QUrl &url, DataType type) override
    {
        const QString place = QStringLiteral("/qt/qml/Tidewick/");
        if (type != QmlFile || url.scheme() != QLatin1String("qrc") ||
            !url.path().startsWith(place))
            return url;
        return QUrl::fromLocalFile(m_directory + u'/' + url.path().mid(place.size()));
    }

private:
    const QString m_directory;
};

class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        // No view counts on the size of the desktop's font.
        QFont font = QGuiApplication::font();
        font.setPixelSize(23);
        QGuiApplication::setFont(font);
    }
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        // The views come from the program's own resources.
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        if (const QString directory = qEnvironmentVariable("TIDEWICK_VIEWS"); !directory.isEmpty())
            engine->addUrlInterceptor(&m_elsewhere.emplace(directory));
        qmlRegisterType<Machine>("TidewickTest", 1, 0, "Machine");
    }

private:
    std::optional<ViewsFromDirectory> m_elsewhere;
};

QUICK_TEST_MAIN_WITH_SETUP(views, Setup)

#include "main.moc"
