#include "platform/wayland/LayerSeat.h"

#include "platform/Logging.h"
#include "platform/window/LayerPlacement.h"
#include "platform/window/ScreenAreas.h"

#include <QEvent>
#include <QQuickWindow>

#include <utility>

namespace tidewick
{
namespace
{

using Layer = LayerShellQt::Window;

/// The pointer on its way from the item passes over other windows for less.
constexpr int pointerTimeoutMs = 150;

bool isSway()
{
    return qEnvironmentVariableIsSet("SWAYSOCK");
}

Layer::Anchors anchorsAt(Qt::Edges sides)
{
    Layer::Anchors anchors;
    anchors.setFlag(Layer::AnchorTop, sides.testFlag(Qt::TopEdge));
    anchors.setFlag(Layer::AnchorBottom, sides.testFlag(Qt::BottomEdge));
    anchors.setFlag(Layer::AnchorLeft, sides.testFlag(Qt::LeftEdge));
    anchors.setFlag(Layer::AnchorRight, sides.testFlag(Qt::RightEdge));
    return anchors;
}

} // namespace

LayerSeat::LayerSeat(QQuickWindow &window, std::function<void()> lost)
    : m_window(window), m_lost(std::move(lost)), m_layer(Layer::get(&window))
{
    m_layer->setLayer(Layer::LayerTop);
    m_layer->setScope(QStringLiteral("tidewick"));
    m_layer->setExclusiveZone(0); // takes no room, and keeps clear of those that do
    m_layer->setKeyboardInteractivity(isSway() ? Layer::KeyboardInteractivityExclusive
                                               : Layer::KeyboardInteractivityOnDemand);
    if (!isSway())
        return;
    window.installEventFilter(this);
    m_closing.setSingleShot(true);
    m_closing.setInterval(pointerTimeoutMs);
    connect(&m_closing, &QTimer::timeout, this, &LayerSeat::closeWithoutPointer);
    connect(&window, &QWindow::visibleChanged, this, &LayerSeat::watchKeyboard);
}

void LayerSeat::place(std::optional<QPoint> anchor)
{
    const LayerPlace place = layerPlace(m_window.size(), anchor, screenAreas());
    qCDebug(platformLog) << "panel at" << place.sides << place.distances << "of screen"
                         << place.screen.value_or(-1) << "beside" << anchor.value_or(QPoint());
    m_layer->setScreenConfiguration(place.screen ? Layer::ScreenFromQWindow
                                                 : Layer::ScreenFromCompositor);
    if (place.screen)
        m_window.setScreen(screensInOrder().value(*place.screen));
    m_layer->setAnchors(anchorsAt(place.sides));
    m_layer->setMargins(place.distances);
}

void LayerSeat::takeKeyboard()
{
    m_window.requestActivate();
}

bool LayerSeat::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Enter)
        m_hasPointer = true;
    else if (event->type() == QEvent::Leave)
        m_hasPointer = false;
    return QObject::eventFilter(watched, event);
}

void LayerSeat::watchKeyboard(bool isVisible)
{
    m_closing.stop();
    m_hasPointer = false;
    if (isVisible)
        m_keyboard.emplace([this] { m_closing.start(); });
    else
        m_keyboard.reset();
}

void LayerSeat::closeWithoutPointer()
{
    if (!m_hasPointer)
        m_lost();
}

} // namespace tidewick
