#include "platform/wayland/LayerShell.h"

#include "platform/wayland/Compositor.h"
#include "platform/wayland/LayerSeat.h"

#include <QGuiApplication>
#include <QQuickWindow>

using namespace std::chrono_literals;

namespace tidewick
{

namespace
{

bool isWayland()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

bool isLayerShellOffered()
{
    return compositorOffers("zwlr_layer_shell_v1", 1s);
}

QHash<QString, QSize> layerScreenPixels()
{
    return isWayland() ? outputPixels(1s) : QHash<QString, QSize>();
}

std::unique_ptr<PopoverSeat> layerSeat(QQuickWindow &window)
{
    return isWayland() && isLayerShellOffered() ? std::make_unique<LayerSeat>(window) : nullptr;
}

} // namespace tidewick
