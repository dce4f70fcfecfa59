#include "platform/tray/StatusNotifierItem.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>

using namespace tidewick;

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
    StatusNotifierItem item([](const ClickEvent & /*event*/) {},
                            QStringLiteral("unix:path=/nonexistent"));
    bool isTold = false;
    QObject::connect(&item, &StatusNotifierItem::shownChanged, &item, [&] { isTold = true; });
    EXPECT_TRUE(waitUntil([&] { return isTold; }));
    EXPECT_EQ(item.isShown(), false);
}
