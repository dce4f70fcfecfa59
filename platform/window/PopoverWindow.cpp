#include "platform/window/PopoverWindow.h"

#include "platform/wayland/LayerShell.h"
#include "platform/window/ScreenAreas.h"
#include "platform/window/ToplevelSeat.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QStyleHints>

#include <algorithm>
#include <utility>

namespace tidewick
{
namespace
{

/// How long the pointer must rest before a lost focus closes the popover. If the focus follows the
/// pointer, it passes over other windows on the way from the item to the popover.
constexpr int focusTimeoutMs = 150;

/// A click on the item counts as the cause of a loss of focus for this long.
constexpr qint64 sameClickMs = 400;

/// The icon is in the tray by then. Loading the content earlier would keep it from there.
constexpr int readyingMs = 300;

constexpr Qt::WindowFlags besideFlags =
    Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;

/// A press at most this many points from the place of the item counts as a press on it.
constexpr int itemReach = 48;

/// Whether a bar may be at `point`.
bool isOutsideFreeArea(QPoint point)
{
    const QScreen *const screen = QGuiApplication::screenAt(point);
    return screen == nullptr || !screen->availableGeometry().contains(point);
}

bool isOnOwnWindow(QPoint point)
{
    const auto windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(), [point](const QWindow *window) {
        return window->isVisible() && window->frameGeometry().contains(point);
    });
}

/// The pointer's place, if the desktop tells it. Under Wayland, X11 programs know it only over
/// their own windows.
std::optional<QPoint> pointerPlace(const PointerButtons &buttons)
{
    return buttons.canHear() ? std::optional(QCursor::pos()) : std::nullopt;
}

} // namespace

PopoverWindow::PopoverWindow(std::function<bool()> hasItem)
    : m_hasItem(std::move(hasItem)), m_seat(layerSeat(*this, [this] { closeWithoutKeyboard(); }))
{
    if (!m_seat)
        m_seat = std::make_unique<ToplevelSeat>(*this);
    setTitle(QStringLiteral("Tidewick"));
    setFlags(besideFlags);
    m_readying.setSingleShot(true);
    m_readying.setInterval(readyingMs);
    connect(&m_readying, &QTimer::timeout, this, &PopoverWindow::drawUnseen);
    m_focusTimeout.setInterval(focusTimeoutMs);
    connect(&m_focusTimeout, &QTimer::timeout, this, &PopoverWindow::closeWithoutFocus);
    connect(&m_buttons, &PointerButtons::pressed, this, &PopoverWindow::closeOnPress);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &PopoverWindow::watchFocus);
    for (const QScreen *const screen : QGuiApplication::screens())
        watchScreen(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &PopoverWindow::watchScreen);
}

PopoverWindow::~PopoverWindow()
{
    // A window that is destroyed with the focus would report that to an object half destroyed.
    disconnect(qGuiApp, nullptr, this, nullptr);
}

void PopoverWindow::setBehavior(PopoverBehavior behavior)
{
    m_behavior = behavior;
}

void PopoverWindow::drawUnseen()
{
    if (isVisible())
        return;
    load();
    // Creates the cards, and fills the caches of glyphs and pictures. OpenGL would take 35 MB for
    // it.
    if (sceneGraphBackend() == QLatin1String("software"))
        grabWindow();
}

void PopoverWindow::show(const std::optional<ClickEvent> &event)
{
    m_buttons.sync(); // an earlier press must not close it
    if (event && hasJustClosed()) {
        m_isPressOnItem = false;
        return;
    }
    m_readying.stop();
    load();
    if (!isVisible())
        prepare(event);
    ViewWindow::show();
    raise();
}

void PopoverWindow::prepare(const std::optional<ClickEvent> &event)
{
    const bool isBeside = event || m_hasItem() || !m_seat->allowsFrame();
    setFlags(isBeside ? besideFlags
                      : Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                            Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    if (event)
        m_anchor = itemAnchor({.screens = event->position ? screenAreasWithScales() : screenAreas(),
                               .pointer = event->isInMenu ? std::nullopt : pointerPlace(m_buttons),
                               .isClick = m_buttons.isClicking(),
                               .told = event->position,
                               .last = m_anchor,
                               .isToldInPixels = event->isInPixels});
    if (isBeside)
        m_seat->place(m_anchor);
    else
        setFramePosition(popoverPosition(size(), std::nullopt, screenAreas()));
}

/// An open popover stays beside its item when a screen or a bar changes.
void PopoverWindow::watchScreen(const QScreen *screen)
{
    const auto placeAgain = [this] {
        if (isVisible() && isFrameless())
            m_seat->place(m_anchor);
    };
    connect(screen, &QScreen::availableGeometryChanged, this, placeAgain, Qt::QueuedConnection);
    connect(screen, &QObject::destroyed, this, placeAgain, Qt::QueuedConnection);
}

void PopoverWindow::becomeKey()
{
    if (isVisible())
        m_seat->takeKeyboard();
}

void PopoverWindow::keyPressEvent(QKeyEvent *event)
{
    ViewWindow::keyPressEvent(event);
    if (!event->isAccepted() && event->key() == Qt::Key_Escape)
        hide();
}

bool PopoverWindow::isTransient() const
{
    return isVisible() && m_behavior == PopoverBehavior::transient && isFrameless();
}

bool PopoverWindow::isFrameless() const
{
    return flags().testFlag(Qt::FramelessWindowHint);
}

void PopoverWindow::closeOnPress()
{
    const QPoint pointer = QCursor::pos();
    if (!isTransient() || isOnOwnWindow(pointer)) {
        // Where only a double click reaches the item, its second press follows the one that closed.
        const int interval = QGuiApplication::styleHints()->mouseDoubleClickInterval();
        m_isPressOnItem = m_isPressOnItem && !m_sinceClosing.hasExpired(interval);
        return;
    }
    hide();
    m_isPressOnItem = isOutsideFreeArea(pointer) ||
                      (m_anchor && (pointer - *m_anchor).manhattanLength() <= itemReach);
    m_sinceClosing.start();
}

void PopoverWindow::watchFocus(const QWindow *focused)
{
    if (focused != nullptr || !isTransient()) {
        m_focusTimeout.stop();
        return;
    }
    m_pointer = QCursor::pos();
    m_focusTimeout.start();
}

void PopoverWindow::closeWithoutFocus()
{
    const QPoint pointer = QCursor::pos();
    if (std::exchange(m_pointer, pointer) != pointer)
        return;
    m_focusTimeout.stop();
    closeWithoutKeyboard();
}

void PopoverWindow::closeWithoutKeyboard()
{
    if (!isTransient())
        return;
    hide();
    m_sinceLostFocus.start();
}

/// Whether the click that is being answered has already closed the popover.
bool PopoverWindow::hasJustClosed() const
{
    if (m_buttons.canHear())
        return m_isPressOnItem && m_buttons.isClicking();
    return m_sinceLostFocus.isValid() && !m_sinceLostFocus.hasExpired(sameClickMs);
}

} // namespace tidewick
