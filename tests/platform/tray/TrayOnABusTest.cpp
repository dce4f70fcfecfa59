#include "tests/platform/tray/TrayOnABus.h"
#include "platform/tray/DBusMenu.h"
#include "platform/tray/StatusItemImage.h"
#include "platform/tray/StatusNotifierItem.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"

#include <QCursor>
#include <QDBusConnectionInterface>
#include <QDBusVariant>

#include <memory>
#include <optional>

using namespace tidewick;

namespace
{

class ItemOnABus : public TrayOnABus
{
protected:
    /// The item in a session whose list the process `host` keeps.
    void start(const char *host)
    {
        startWatcher(host);
        item = std::make_unique<StatusNotifierItem>(
            [this](const ClickEvent &event) {
                clicks.append(event);
                lastToken = qgetenv("XDG_ACTIVATION_TOKEN");
            },
            bus.address());
    }
    /// The same, when it is known if a bar shows it.
    void show(const char *host)
    {
        start(host);
        ASSERT_TRUE(waitUntil([this] { return item->isShown().has_value(); }));
    }

    QVariant property(const char *name)
    {
        const QDBusMessage answer =
            ask(tray, QStringLiteral("/StatusNotifierItem"),
                QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                {QStringLiteral("org.kde.StatusNotifierItem"), QLatin1String(name)});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }
    QVariantMap all(const char *path, const char *interface)
    {
        const QDBusMessage answer =
            ask(tray, QLatin1String(path), QStringLiteral("org.freedesktop.DBus.Properties"),
                QStringLiteral("GetAll"), {QLatin1String(interface)});
        return qdbus_cast<QVariantMap>(answer.arguments().value(0));
    }
    static StatusItemState stateWithNumber(const QString &number)
    {
        StatusItemState state;
        state.image = QImage(36, 36, QImage::Format_ARGB32_Premultiplied);
        state.image.fill(Qt::black);
        state.points = {18, 18};
        state.title.text = number;
        return state;
    }
    void showNumber(const QString &number) { item->show(stateWithNumber(number)); }
    void click(const char *method)
    {
        ask(tray, QStringLiteral("/StatusNotifierItem"),
            QStringLiteral("org.kde.StatusNotifierItem"), QLatin1String(method), {3, 4});
    }
    /// The title of the menu's entry `id`.
    QString title(int id)
    {
        const QDBusMessage answer = askMenu(tray, "GetProperty", {id, QStringLiteral("label")});
        return answer.arguments().value(0).value<QDBusVariant>().variant().toString();
    }
    bool becomesShown(bool isShown)
    {
        return waitUntil([this, isShown] { return item->isShown() == isShown; });
    }

    std::unique_ptr<StatusNotifierItem> item;
    QList<ClickEvent> clicks;
    QByteArray lastToken; // of those
};

} // namespace

TEST_F(ItemOnABus, iconHasANameOnlyWhereNoPixelsAreTaken)
{
    show("ayatana-indicat");
    EXPECT_EQ(property("IconName"), QStringLiteral("org.tidewick.Tidewick-status"));
    const QString theme = property("IconThemePath").toString();
    EXPECT_TRUE(theme.startsWith(QLatin1Char('/')) &&
                theme.endsWith(QLatin1String("/share/icons")) &&
                !theme.contains(QLatin1String("..")))
        << theme.toStdString();
}

TEST_F(ItemOnABus, nameDoesNotWinOverThePixels)
{
    show("panel-2-systray");
    EXPECT_EQ(property("IconName"), QString());
    EXPECT_EQ(property("IconThemePath"), QString());
}

TEST_F(ItemOnABus, iconHasItsPixelsInEachSizeAsTheHostShowsThem)
{
    const StatusItemState state = stateWithNumber(QStringLiteral("7"));
    const auto pictures = [&](const auto &draw) {
        QList<QByteArray> pixels;
        for (const int side : {16, 22, 24, 32, 48, 64})
            pixels.append(DBusPixmap::fromImage(draw(side)).pixels);
        return pixels;
    };
    const auto shown = [&](const char *host, const QString &number) {
        show(host);
        showNumber(number);
        QList<QByteArray> pixels;
        for (const DBusPixmap &pixmap : qdbus_cast<QList<DBusPixmap>>(property("IconPixmap")))
            pixels.append(pixmap.pixels);
        item.reset();
        tray.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        return pixels;
    };
    const auto plain =
        pictures([&](int side) { return plainStatusImage(state.image, state.points, side); });
    EXPECT_EQ(shown("gnome-shell", state.title.text), plain);
    EXPECT_EQ(shown("panel-2-systray", {}), plain);
    EXPECT_EQ(shown("waybar", {}), plain);
    EXPECT_EQ(shown("waybar", state.title.text), pictures([&](int side) {
                  return wideStatusImage(state.image, state.points, state.title, side);
              }));
    EXPECT_EQ(shown("panel-2-systray", state.title.text), pictures([&](int side) {
                  return badgedStatusImage(state.image, state.points, state.title, side);
              }));
}

TEST_F(ItemOnABus, iconAndToolTipStayWhereTheHostChanges)
{
    show("panel-2-systray");
    StatusItemState state = stateWithNumber(QStringLiteral("7"));
    state.toolTipTitle = QStringLiteral("Tidewick");
    item->show(state);
    tray.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    ASSERT_TRUE(becomesShown(false));
    startWatcher("gnome-shell");
    ASSERT_TRUE(becomesShown(true));
    EXPECT_EQ(qdbus_cast<DBusToolTip>(property("ToolTip")).title, QStringLiteral("Tidewick"));
    EXPECT_EQ(qdbus_cast<QList<DBusPixmap>>(property("IconPixmap")).size(), 6);
    EXPECT_EQ(property("XAyatanaLabel"), QStringLiteral("7"));
}

TEST_F(ItemOnABus, menuOpensThePanelWhereNoClickDoes)
{
    show("ayatana-indicat");
    QCursor::setPos(30, 40);
    askMenu(tray, "AboutToShow", {0});
    ASSERT_TRUE(waitUntil([this] { return !clicks.isEmpty(); }));
    clicks.clear();
    QCursor::setPos(50, 60);
    item->openMenu({{QStringLiteral("Quit Tidewick"), {}, {}}});
    EXPECT_EQ(title(1), QStringLiteral("Show Tidewick"));
    EXPECT_EQ(title(2), QStringLiteral("Quit Tidewick"));

    askMenu(tray, "Event",
            {1, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
    EXPECT_TRUE(waitUntil([this] { return !clicks.isEmpty(); }));
    EXPECT_EQ(clicks.value(0).type, ClickType::leftMouseUp);
    EXPECT_TRUE(clicks.value(0).isInMenu);
    EXPECT_EQ(clicks.value(0).position, QPoint(30, 40)) << "where the menu was asked for";
}

TEST_F(ItemOnABus, menuHasNoOtherEntriesElsewhere)
{
    show("panel-2-systray");
    item->openMenu({{QStringLiteral("Quit Tidewick"), {}, {}}});
    EXPECT_EQ(title(1), QStringLiteral("Quit Tidewick"));
}

TEST_F(ItemOnABus, tellsWhatItIs)
{
    show("panel-2-systray");
    const QVariantMap properties = all("/StatusNotifierItem", "org.kde.StatusNotifierItem");
    EXPECT_EQ(properties.value(QStringLiteral("Category")), QStringLiteral("ApplicationStatus"));
    EXPECT_EQ(properties.value(QStringLiteral("Id")), QStringLiteral("tidewick"));
    EXPECT_EQ(properties.value(QStringLiteral("Title")), QStringLiteral("Tidewick"));
    EXPECT_EQ(properties.value(QStringLiteral("Status")), QStringLiteral("Active"));
    EXPECT_EQ(properties.value(QStringLiteral("WindowId")), 0);
    EXPECT_EQ(properties.value(QStringLiteral("ItemIsMenu")), false);
}

TEST_F(ItemOnABus, hasALabelWhereTheHostShowsIt)
{
    show("gnome-shell");
    showNumber(QStringLiteral("7"));
    EXPECT_EQ(property("XAyatanaLabel"), QStringLiteral("7"));
}

TEST_F(ItemOnABus, hasNoLabelElsewhere)
{
    show("panel-2-systray");
    showNumber(QStringLiteral("7"));
    EXPECT_FALSE(property("XAyatanaLabel").isValid());
}

TEST_F(ItemOnABus, tellsOfEachKindOfClick)
{
    show("panel-2-systray");
    click("SecondaryActivate");
    ASSERT_TRUE(waitUntil([this] { return clicks.size() == 1; }));
    EXPECT_EQ(clicks[0].type, ClickType::leftMouseUp);
    EXPECT_EQ(clicks[0].position, QPoint(3, 4));
    askMenu(tray, "AboutToShow", {0});
    ASSERT_TRUE(waitUntil([this] { return clicks.size() == 2; }));
    EXPECT_EQ(clicks[1].type, ClickType::rightMouseUp);
    EXPECT_EQ(clicks[1].position, std::nullopt);
}

TEST_F(ItemOnABus, clickHasTheTokenThatCameBeforeIt)
{
    show("panel-2-systray");
    ask(tray, QStringLiteral("/StatusNotifierItem"), QStringLiteral("org.kde.StatusNotifierItem"),
        QStringLiteral("ProvideXdgActivationToken"), {QStringLiteral("token")});
    click("Activate");
    ASSERT_TRUE(waitUntil([this] { return clicks.size() == 1; }));
    EXPECT_EQ(lastToken, "token");
}

TEST_F(ItemOnABus, menuNamesItsKeysAsTheHostReadsThem)
{
    show("plasmashell");
    item->openMenu({{QStringLiteral("Settings"), QStringLiteral(","), {}}});
    const QDBusMessage answer = askMenu(tray, "GetProperty", {1, QStringLiteral("shortcut")});
    EXPECT_EQ(
        qdbus_cast<QList<QStringList>>(answer.arguments().value(0).value<QDBusVariant>().variant()),
        QList<QStringList>({{QStringLiteral("Control"), QStringLiteral(",")}}));
}

TEST_F(ItemOnABus, menuTellsWhatItIs)
{
    show("panel-2-systray");
    const QVariantMap properties = all("/StatusNotifierItem/Menu", "com.canonical.dbusmenu");
    EXPECT_EQ(properties.value(QStringLiteral("Version")), 3U);
    EXPECT_EQ(properties.value(QStringLiteral("TextDirection")), QStringLiteral("ltr"));
    EXPECT_EQ(properties.value(QStringLiteral("Status")), QStringLiteral("normal"));
}

TEST_F(ItemOnABus, menuAnswersInGroups)
{
    show("panel-2-systray");
    int chosen = 0;
    item->openMenu({{QStringLiteral("Settings"),
                     {},
                     [&chosen] {
                         ++chosen;
                     }},
                    {QStringLiteral("Quit"), {}, {}}});
    const QDBusMessage entries =
        askMenu(tray, "GetGroupProperties",
                {QVariant::fromValue(QList<int>{2}), QStringList(QStringLiteral("label"))});
    const auto told = qdbus_cast<QList<DBusMenuProperties>>(entries.arguments().value(0));
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(told[0].id, 2);
    EXPECT_EQ(told[0].properties.value(QStringLiteral("label")), QStringLiteral("Quit"));

    const QDBusMessage shown =
        askMenu(tray, "AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 9})});
    EXPECT_EQ(qdbus_cast<QList<int>>(shown.arguments().value(1)), QList<int>({9}));

    const DBusMenuEvent clicked{1, QStringLiteral("clicked"), QDBusVariant(QString()), 0};
    const DBusMenuEvent unknown{9, QStringLiteral("clicked"), QDBusVariant(QString()), 0};
    const QDBusMessage events =
        askMenu(tray, "EventGroup", {QVariant::fromValue(QList<DBusMenuEvent>{clicked, unknown})});
    EXPECT_EQ(qdbus_cast<QList<int>>(events.arguments().value(0)), QList<int>({9}));
    EXPECT_TRUE(waitUntil([&chosen] { return chosen == 1; }));
}

TEST_F(ItemOnABus, questionAboutAnUnknownEntryIsAnError)
{
    show("panel-2-systray");
    const QDBusMessage answer = askMenu(tray, "GetProperty", {99, QStringLiteral("label")});
    EXPECT_EQ(answer.type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    EXPECT_EQ(answer.errorMessage(), QStringLiteral("There is no entry 99"));
}

TEST_F(ItemOnABus, isShownByAHostThatTellsOfItself)
{
    show("panel-2-systray");
    EXPECT_EQ(item->isShown(), true);
}

TEST_F(ItemOnABus, isNotShownByAWatcherWithoutAHostUntilOneComes)
{
    watcher.claimsHost = false;
    show("kded5");
    EXPECT_EQ(item->isShown(), false);
    watcher.claimsHost = true;
    Q_EMIT watcher.StatusNotifierHostRegistered();
    EXPECT_TRUE(becomesShown(true));
}

TEST_F(ItemOnABus, isShownByTheIndicatorServiceWhileABarHasReadTheMenu)
{
    show("ayatana-indicat");
    EXPECT_EQ(item->isShown(), false);
    for (int round = 0; round < 2; ++round) {
        {
            const Bar bar(bus);
            readMenu(bar);
            EXPECT_EQ(item->isShown(), true);
            {
                const Bar another(bus);
                readMenu(another);
            }
            EXPECT_FALSE(waitUntil([this] { return item->isShown() == false; }, 800));
        }
        EXPECT_TRUE(becomesShown(false));
    }
}

TEST_F(ItemOnABus, registersWithTheNextProcessInTheQueueForTheList)
{
    show("panel-2-systray");
    const Bar another(bus);
    Watcher next;
    replaceWatcher(another.connection, next);
    EXPECT_TRUE(waitUntil([&] { return next.item == watcher.item; }));
}

TEST_F(ItemOnABus, desktopThatIsTooBusyToAnswerIsAskedAgain)
{
    watcher.answers = false;
    start("panel-2-systray");
    ASSERT_TRUE(waitUntil([this] { return !watcher.item.isEmpty(); }));
    EXPECT_FALSE(item->isShown().has_value());
    endWait();
    EXPECT_TRUE(becomesShown(false));
    watcher.answers = true;
    EXPECT_TRUE(becomesShown(true));
}

TEST_F(ItemOnABus, lateAnswerOfAnEarlierListDoesNotCount)
{
    watcher.answers = false;
    start("panel-2-systray");
    ASSERT_TRUE(waitUntil([this] { return !watcher.item.isEmpty(); }));
    const Bar another(bus);
    Watcher next;
    replaceWatcher(another.connection, next);
    ASSERT_TRUE(becomesShown(true));
    endWait();
    EXPECT_FALSE(waitUntil([this] { return item->isShown() == false; }, 500));
}

TEST_F(ItemOnABus, readerThatLeavesAtOnceIsNoBar)
{
    show("ayatana-indicat");
    QString reader;
    {
        const Bar bar(bus);
        reader = bar.connection.baseService();
        auto read = QDBusMessage::createMethodCall(
            watcher.item, QStringLiteral("/StatusNotifierItem/Menu"),
            QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("GetLayout"));
        read.setArguments({0, -1, QStringList()});
        bar.connection.send(read);
        bar.connection.interface()->isServiceRegistered(reader); // the bus has it when it answers
    }
    while (tray.interface()->isServiceRegistered(reader)) {
    }
    EXPECT_TRUE(becomesShown(true));
    EXPECT_TRUE(becomesShown(false));
}

TEST_F(ItemOnABus, readerThatAnEarlierListHadIsNoBar)
{
    show("panel-2-systray");
    const Bar bar(bus);
    readMenu(bar);
    tray.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    ASSERT_TRUE(becomesShown(false));
    watcher.item.clear();
    startWatcher("ayatana-indicat");
    EXPECT_FALSE(waitUntil([this] { return item->isShown() == true; }, 800));
    readMenu(bar);
    EXPECT_EQ(item->isShown(), true);
}
