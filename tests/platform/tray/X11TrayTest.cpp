#include "platform/tray/X11Tray.h"
#include "platform/tray/DesktopStatusItem.h"
#include "platform/tray/StatusItemImage.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"
#include "platform/tray/TrayIconItem.h"
#include "tests/platform/tray/FakeTray.h"
#include "tests/platform/tray/TrayOnABus.h"

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>

using namespace tidewick;

namespace
{

constexpr QRgb trayColor = 0xff204060;

QImage blackIcon()
{
    QImage icon(36, 36, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::black);
    return icon;
}

StatusItemState stateWithNumber(const QString &number)
{
    return {.image = blackIcon(),
            .points = {18, 18},
            .title = {.text = number},
            .toolTipTitle = QStringLiteral("Tidewick"),
            .toolTipText = QStringLiteral("some servers")};
}

QImage expected(const QString &number, int side)
{
    const StatusItemState state = stateWithNumber(number);
    return number.isEmpty() ? plainStatusImage(state.image, state.points, side)
                            : badgedStatusImage(state.image, state.points, state.title, side);
}

QImage onTray(const QImage &picture, QSize size, QPoint at)
{
    QImage whole(size, QImage::Format_RGB32);
    whole.fill(trayColor);
    QPainter(&whole).drawImage(at, picture);
    return whole;
}

/// An icon in a tray on a real X server.
class IconInTray : public testing::Test
{
protected:
    void show(FakeTray::Visual visual)
    {
        tray.emplace(visual, trayColor);
        ASSERT_TRUE(waitUntil([this] { return x11.isPresent(); }));
        item = std::make_unique<TrayIconItem>(
            [this](const ClickEvent &event) { clicks.append(event); }, x11.window());
        item->show(stateWithNumber({}));
        ASSERT_TRUE(waitUntil([this] { return tray->hasIcon(); }));
    }

    bool looksLike(const QImage &picture)
    {
        return waitUntil([&] { return tray->picture() == picture; });
    }

    X11Tray x11;
    std::optional<FakeTray> tray;
    std::unique_ptr<TrayIconItem> item;
    QList<ClickEvent> clicks;
};

/// The whole status item in a session with both kinds of tray.
class ChoiceOfTray : public TrayOnABus
{
protected:
    void startItem(std::chrono::milliseconds patience = std::chrono::seconds(5))
    {
        item.emplace(bus.address(), patience);
        item->setImage(blackIcon(), {18, 18});
    }
    bool getsIcon(bool isInTray)
    {
        return waitUntil([this, isInTray] { return x11->hasIcon() == isInTray; });
    }

    template <class Click>
    bool hasEventOnlyDuringItsAction(Click click)
    {
        std::optional<ClickEvent> event;
        item->setAction([&] { event = item->currentEvent(); });
        click();
        return waitUntil([&] { return event.has_value(); }) &&
               event->type == ClickType::leftMouseUp && !item->currentEvent();
    }

    std::optional<FakeTray> x11{std::in_place};
    std::optional<DesktopStatusItem> item;
};

} // namespace

TEST_F(IconInTray, isTransparentWhereTheTrayHasAnAlphaChannel)
{
    show(FakeTray::Visual::withAlpha);
    EXPECT_TRUE(looksLike(expected({}, FakeTray::side)));
}

TEST_F(IconInTray, standsOnTheTraysBackgroundElsewhere)
{
    show(FakeTray::Visual::ofTheScreen);
    EXPECT_TRUE(
        looksLike(onTray(expected({}, FakeTray::side), {FakeTray::side, FakeTray::side}, {0, 0})));
}

TEST_F(IconInTray, followsTheNumber)
{
    for (const auto visual : {FakeTray::Visual::withAlpha, FakeTray::Visual::ofTheScreen}) {
        item.reset();
        show(visual);
        for (const QString &number : {QStringLiteral("3"), QStringLiteral("12"), QString()}) {
            item->show(stateWithNumber(number));
            const QImage picture = expected(number, FakeTray::side);
            EXPECT_TRUE(looksLike(visual == FakeTray::Visual::withAlpha
                                      ? picture
                                      : onTray(picture, picture.size(), {0, 0})));
        }
    }
}

TEST_F(IconInTray, isDrawnInTheSizeOfItsWindow)
{
    show(FakeTray::Visual::ofTheScreen);
    tray->resizeIcon(48, 48);
    EXPECT_TRUE(looksLike(onTray(expected({}, 48), {48, 48}, {0, 0})));
    tray->resizeIcon(40, 24);
    EXPECT_TRUE(looksLike(onTray(expected({}, 24), {40, 24}, {8, 0})));
}

TEST_F(IconInTray, isDrawnAnewWhenItWasCovered)
{
    show(FakeTray::Visual::withAlpha);
    const QImage picture = expected({}, FakeTray::side);
    ASSERT_TRUE(looksLike(picture));
    tray->uncover();
    EXPECT_TRUE(looksLike(picture));
}

TEST_F(IconInTray, hasTheScreensColoursWhereTheTraysAreUnknown)
{
    show(FakeTray::Visual::unknown);
    EXPECT_TRUE(
        looksLike(onTray(expected({}, FakeTray::side), {FakeTray::side, FakeTray::side}, {0, 0})));
}

TEST_F(IconInTray, tellsTheTrayWhatItIs)
{
    show(FakeTray::Visual::ofTheScreen);
    const auto numbers = [this](const char *property) {
        const QByteArray bytes = tray->property(property);
        QList<uint32_t> values(bytes.size() / 4);
        std::copy_n(bytes.data(), values.size() * 4, reinterpret_cast<char *>(values.data()));
        return values;
    };
    EXPECT_EQ(tray->property("WM_CLASS"), QByteArray("tidewick\0tidewick\0", 18));
    EXPECT_EQ(numbers("_XEMBED_INFO"), QList<uint32_t>({0, 1})) << "version 0, to be shown";
    QList<uint32_t> hints(18);
    hints[0] = 1 << 4; // the smallest size follows
    hints[5] = hints[6] = 22;
    EXPECT_EQ(numbers("WM_NORMAL_HINTS"), hints);
    EXPECT_EQ(tray->border(), 0);
}

TEST_F(IconInTray, staysAliveWhenThePointerLeaves)
{
    show(FakeTray::Visual::withAlpha);
    tray->movePointer(XCB_ENTER_NOTIFY);
    tray->movePointer(XCB_LEAVE_NOTIFY);
    tray->press(1, {5, 7});
    ASSERT_TRUE(waitUntil([this] { return !clicks.isEmpty(); }));
    item->show(stateWithNumber(QStringLiteral("5")));
    EXPECT_TRUE(looksLike(expected(QStringLiteral("5"), FakeTray::side)));
}

TEST_F(IconInTray, showsNoToolTipOnceItIsPressed)
{
    show(FakeTray::Visual::ofTheScreen);
    tray->movePointer(XCB_ENTER_NOTIFY);
    tray->press(1, {5, 7});
    EXPECT_FALSE(waitUntil([] { return QToolTip::isVisible(); }, 1500));
}

TEST_F(IconInTray, tellsOfClicksWithThePlaceOfItsMiddle)
{
    show(FakeTray::Visual::ofTheScreen);
    ASSERT_TRUE(looksLike(onTray(expected({}, 30), {30, 30}, {0, 0}))); // its size is known
    for (const uint8_t button : std::initializer_list<uint8_t>{1, 4, 2, 5, 3})
        tray->press(button, {5, 7});
    ASSERT_TRUE(waitUntil([this] { return clicks.size() == 3; }));
    EXPECT_EQ(clicks[0].type, ClickType::leftMouseUp);
    EXPECT_EQ(clicks[1].type, ClickType::leftMouseUp);
    EXPECT_EQ(clicks[2].type, ClickType::rightMouseUp);
    for (const ClickEvent &click : clicks) {
        EXPECT_EQ(click.position, FakeTray::place + QPoint(14, 14));
        EXPECT_TRUE(click.isInPixels);
    }
}

TEST_F(IconInTray, opensAMenuWithItsEntries)
{
    show(FakeTray::Visual::ofTheScreen);
    bool isChosen = false;
    item->openMenu({{QStringLiteral("Settings..."), QStringLiteral(","), {}, false},
                    {},
                    {QStringLiteral("Quit Tidewick"), {}, [&isChosen] {
                         isChosen = true;
                     }}});
    const auto menu = [] {
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    };
    ASSERT_TRUE(waitUntil([&] { return menu() != nullptr; }));
    ASSERT_EQ(menu()->actions().size(), 3);
    const QAction *const settings = menu()->actions()[0];
    EXPECT_EQ(settings->text(), QStringLiteral("Settings..."));
    EXPECT_EQ(settings->shortcut(), QKeySequence(QStringLiteral("Ctrl+,")));
    EXPECT_TRUE(settings->isShortcutVisibleInContextMenu());
    EXPECT_FALSE(settings->isEnabled());
    EXPECT_TRUE(menu()->actions()[1]->isSeparator());
    EXPECT_TRUE(menu()->actions()[2]->isEnabled());
    EXPECT_TRUE(menu()->actions()[2]->shortcut().isEmpty());
    menu()->actions()[2]->trigger();
    EXPECT_TRUE(waitUntil([&] { return isChosen; }));

    menu()->close();
    item->openMenu({{QStringLiteral("Quit Tidewick"), {}, {}}});
    ASSERT_TRUE(waitUntil([&] { return menu() != nullptr; }));
    EXPECT_EQ(menu()->actions().size(), 1);
}

TEST_F(IconInTray, menuTakesThePressOnAnEntry)
{
    show(FakeTray::Visual::ofTheScreen);
    bool isChosen = false;
    item->openMenu({{QStringLiteral("Quit Tidewick"), {}, [&isChosen] {
                         isChosen = true;
                     }}});
    QWidget *menu = nullptr;
    ASSERT_TRUE(waitUntil([&] { return (menu = QApplication::activePopupWidget()) != nullptr; }));
    const QPoint entry = menu->rect().center();
    const auto send = [&](QEvent::Type type, Qt::MouseButtons buttons) {
        QMouseEvent event(type, entry, menu->mapToGlobal(entry), Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(menu, &event);
    };
    send(QEvent::MouseButtonPress, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, Qt::NoButton);
    EXPECT_TRUE(waitUntil([&] { return isChosen; }));
}

TEST_F(ChoiceOfTray, iconIsInTheX11TrayWithoutAWatcher)
{
    startItem();
    EXPECT_TRUE(getsIcon(true));
    EXPECT_TRUE(item->isInTray());
}

TEST_F(ChoiceOfTray, iconFollowsToANewTray)
{
    startItem();
    ASSERT_TRUE(getsIcon(true));
    x11.reset();
    EXPECT_TRUE(waitUntil([this] { return !item->isInTray(); }));
    x11.emplace(FakeTray::Visual::withAlpha);
    EXPECT_TRUE(getsIcon(true));
    EXPECT_TRUE(waitUntil([this] { return x11->picture().hasAlphaChannel(); }));
    // Another takes its place while it is still there.
    FakeTray another;
    EXPECT_TRUE(waitUntil([&] { return another.hasIcon(); }));
    EXPECT_TRUE(getsIcon(false));
}

TEST_F(ChoiceOfTray, iconShowsItsTitleAndTellsOfClicks)
{
    x11.emplace(FakeTray::Visual::withAlpha);
    startItem();
    ASSERT_TRUE(getsIcon(true));
    item->setAttributedTitle({.text = QStringLiteral("7")});
    EXPECT_TRUE(waitUntil(
        [this] { return x11->picture() == expected(QStringLiteral("7"), FakeTray::side); }));
    EXPECT_TRUE(hasEventOnlyDuringItsAction([this] { x11->press(1, {5, 7}); }));
}

TEST_F(ChoiceOfTray, hostIsToldTheToolTipAndTellsOfClicks)
{
    startWatcher("panel-2-systray");
    startItem();
    ASSERT_TRUE(waitUntil([this] { return item->isInTray(); }));
    item->setToolTip(QStringLiteral("Tidewick"), QStringLiteral("6 services"));
    item->setToolTip(QStringLiteral("Tidewick"), QStringLiteral("7 services"));
    const QDBusMessage answer =
        ask(tray, QStringLiteral("/StatusNotifierItem"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
            {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("ToolTip")});
    const auto toolTip =
        qdbus_cast<DBusToolTip>(answer.arguments().value(0).value<QDBusVariant>().variant());
    EXPECT_EQ(toolTip.title, QStringLiteral("Tidewick"));
    EXPECT_EQ(toolTip.text, QStringLiteral("7 services"));
    EXPECT_TRUE(hasEventOnlyDuringItsAction([this] {
        ask(tray, QStringLiteral("/StatusNotifierItem"),
            QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Activate"), {1, 2});
    }));
}

TEST_F(ChoiceOfTray, menuOpensInTheTrayThatHasTheIcon)
{
    startItem();
    item->setMenu({{QStringLiteral("Quit Tidewick"), {}, {}}});
    ASSERT_TRUE(getsIcon(true));
    item->performClick();
    const auto menu = [] {
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    };
    ASSERT_TRUE(waitUntil([&] { return menu() != nullptr; }));
    EXPECT_EQ(menu()->actions()[0]->text(), QStringLiteral("Quit Tidewick"));
    menu()->close();

    startWatcher("panel-2-systray");
    ASSERT_TRUE(getsIcon(false));
    item->performClick();
    const QDBusMessage answer = askMenu(tray, "GetProperty", {1, QStringLiteral("label")});
    EXPECT_EQ(answer.arguments().value(0).value<QDBusVariant>().variant(),
              QStringLiteral("Quit Tidewick"));
    EXPECT_FALSE(waitUntil([&] { return menu() != nullptr; }, 500));
}

TEST_F(ChoiceOfTray, hostThatShowsTheItemTakesItFromTheX11Tray)
{
    startItem();
    ASSERT_TRUE(getsIcon(true));
    startWatcher("panel-2-systray");
    EXPECT_TRUE(getsIcon(false));
    tray.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    EXPECT_TRUE(getsIcon(true));
}

TEST_F(ChoiceOfTray, indicatorServiceTakesItOnlyWhileABarShowsIt)
{
    startWatcher("ayatana-indicat");
    startItem();
    EXPECT_TRUE(getsIcon(true));
    for (int round = 0; round < 2; ++round) {
        {
            const Bar bar(bus);
            readMenu(bar);
            EXPECT_TRUE(getsIcon(false));
            EXPECT_TRUE(item->isInTray());
        }
        EXPECT_TRUE(getsIcon(true));
    }
}

TEST_F(ChoiceOfTray, trayThatComesSoonIsNotCalledMissing)
{
    x11.reset();
    startWatcher("ayatana-indicat");
    testing::internal::CaptureStderr();
    startItem(std::chrono::seconds(3));
    // The item counts as unseen after half a second, and the line is due three later.
    EXPECT_FALSE(waitUntil([this] { return item->isInTray(); }, 1000));
    const Bar bar(bus);
    readMenu(bar);
    EXPECT_TRUE(waitUntil([this] { return item->isInTray(); }));
    EXPECT_FALSE(waitUntil([this] { return !item->isInTray(); }, 3500));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ChoiceOfTray, missingTrayIsReportedOnce)
{
    x11.reset();
    testing::internal::CaptureStderr();
    startItem(std::chrono::milliseconds(50));
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(waitUntil([this] { return item->isInTray(); }, 500));
        x11.emplace();
        EXPECT_TRUE(waitUntil([this] { return item->isInTray(); }));
        x11.reset();
        EXPECT_TRUE(waitUntil([this] { return !item->isInTray(); }));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "tidewick: this desktop shows no status items; waiting for a tray\n");
}

TEST_F(IconInTray, showsItsToolTipUnderTheRestingPointer)
{
    show(FakeTray::Visual::ofTheScreen);
    tray->movePointer(XCB_ENTER_NOTIFY);
    EXPECT_TRUE(waitUntil([] { return QToolTip::isVisible(); }));
    EXPECT_EQ(QToolTip::text(), QStringLiteral("Tidewick\nsome servers"));
    tray->movePointer(XCB_LEAVE_NOTIFY);
    EXPECT_TRUE(waitUntil([] { return !QToolTip::isVisible(); }, 5000)); // else after ten seconds
}

TEST_F(IconInTray, takesItsToolTipAlong)
{
    show(FakeTray::Visual::ofTheScreen);
    tray->movePointer(XCB_ENTER_NOTIFY);
    ASSERT_TRUE(waitUntil([] { return QToolTip::isVisible(); }));
    item.reset();
    EXPECT_TRUE(waitUntil([] { return !QToolTip::isVisible(); }, 5000)); // else after ten seconds
}

TEST_F(IconInTray, onlyTheOwnerOfTheSelectionIsATray)
{
    show(FakeTray::Visual::ofTheScreen);
    const xcb_window_t window = x11.window();
    bool isTold = false;
    QObject::connect(&x11, &X11Tray::changed, &x11, [&] { isTold = true; });
    tray->announce(window + 1);
    ASSERT_TRUE(waitUntil([&] { return isTold; }));
    EXPECT_EQ(x11.window(), window);
}
