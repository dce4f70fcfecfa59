#include "platform/tray/StatusNotifierItem.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>

using namespace tidewick;

struct HostRow
{
    const char *name;
    const char *process;
    NumberStyle style;
};

class NumberStyleOfHost : public testing::TestWithParam<HostRow>
{
};

TEST_P(NumberStyleOfHost, followsWhatTheHostCanShow)
{
    EXPECT_EQ(numberStyle(QString::fromUtf8(GetParam().process)), GetParam().style);
}

INSTANTIATE_TEST_SUITE_P(Rows, NumberStyleOfHost,
                         testing::Values(HostRow{"gnome", "gnome-shell", NumberStyle::label},
                                         HostRow{"ayatana", "ayatana-indicat", NumberStyle::label},
                                         HostRow{"mate", "mate-panel", NumberStyle::wide},
                                         HostRow{"mateApplet", "notification-ar",
                                                 NumberStyle::wide},
                                         HostRow{"waybar", "waybar", NumberStyle::wide},
                                         HostRow{"xfce", "panel-2-systray", NumberStyle::square},
                                         HostRow{"lxqt", "lxqt-panel", NumberStyle::square},
                                         HostRow{"plasma", "kded5", NumberStyle::square},
                                         HostRow{"unknown", "", NumberStyle::square}),
                         rowName);

TEST(KeyNamesOfHost, areThoseOfItsToolkit)
{
    for (const char *const host : {"lxqt-panel", "plasmashell", "kded5", "kded6"})
        EXPECT_EQ(keyNames(QLatin1String(host)), KeyNames::qt) << host;
    for (const char *const host : {"panel-2-systray", "gnome-shell", "waybar", ""})
        EXPECT_EQ(keyNames(QLatin1String(host)), KeyNames::keysym) << host;
}

TEST(DBusPixmap, holdsArgbInNetworkByteOrder)
{
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixelColor(0, 0, QColor(0x11, 0x22, 0x33, 0x80));
    image.setPixelColor(1, 0, Qt::white);
    const DBusPixmap pixmap = DBusPixmap::fromImage(image);
    EXPECT_EQ(pixmap.width, 2);
    EXPECT_EQ(pixmap.height, 1);
    EXPECT_EQ(pixmap.pixels.toHex(), "80112233ffffffff");
}

TEST(DBusPixmap, undoesPremultipliedAlpha)
{
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(255, 0, 0, 128));
    EXPECT_EQ(DBusPixmap::fromImage(image).pixels.toHex(), "80ff0000");
}

TEST(StatusNotifierItemAdaptor, clickThatIsToldTwiceCountsOnce)
{
    QObject object;
    StatusNotifierItemAdaptor item(&object, QDBusObjectPath(QStringLiteral("/Menu")));
    QList<QPoint> clicks;
    item.setClicked([&](QPoint place) { clicks += place; });
    item.Activate(3, 4);
    item.Activate(3, 4);
    EXPECT_TRUE(clicks.isEmpty()); // the tray has its answer first
    EXPECT_TRUE(waitUntil([&] { return !clicks.isEmpty(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(clicks, QList<QPoint>({{3, 4}}));

    const QDeadlineTimer soon(50);
    EXPECT_TRUE(waitUntil([&] { return soon.hasExpired(); }));
    item.Activate(5, 6);
    EXPECT_TRUE(waitUntil([&] { return clicks.size() == 2; }));
}

TEST(StatusNotifierItemAdaptor, signalsOnlyWhatChanged)
{
    QObject object;
    StatusNotifierItemAdaptor item(&object, QDBusObjectPath(QStringLiteral("/Menu")));
    QStringList sent;
    QObject::connect(&item, &StatusNotifierItemAdaptor::NewIcon, &object,
                     [&] { sent += QStringLiteral("icon"); });
    QObject::connect(&item, &StatusNotifierItemAdaptor::NewToolTip, &object,
                     [&] { sent += QStringLiteral("tooltip"); });
    QObject::connect(&item, &StatusNotifierItemAdaptor::XAyatanaNewLabel, &object,
                     [&](const QString &label) { sent += label; });
    for (int round = 0; round < 2; ++round) {
        item.setIcon({DBusPixmap{1, 1, "abcd"}});
        item.setToolTip(QStringLiteral("Tidewick"), QStringLiteral("3 running"));
        item.setLabel(QStringLiteral("3"));
    }
    EXPECT_EQ(sent, QStringList(
                        {QStringLiteral("icon"), QStringLiteral("tooltip"), QStringLiteral("3")}));
}

TEST(StatusNotifierItem, tellsOfTheHostWhenItsMakerListens)
{
    // Without a bus the answer is there at once.
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    StatusNotifierItem item([](const ClickEvent & /*event*/) {});
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    bool isTold = false;
    QObject::connect(&item, &StatusNotifierItem::hostChanged, &item, [&] { isTold = true; });
    EXPECT_TRUE(waitUntil([&] { return isTold; }));
    EXPECT_FALSE(item.hasWatcher());
    EXPECT_FALSE(item.hasHost());
}
