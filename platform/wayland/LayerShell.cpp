#include "platform/wayland/LayerShell.h"

#include "platform/wayland/Compositor.h"
#include "platform/wayland/LayerSeat.h"

#include <QGuiApplication>
#include <QQuickWindow>

using namespace std::chrono_literals;

namespace tidewick
{

bool isLayerShellOffered()
{
    return compositorOffers("zwlr_layer_shell_v1", 1s);
}

std::unique_ptr<PopoverSeat> layerSeat(QQuickWindow &window)
{
    const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return isWayland && isLayerShellOffered() ? std::make_unique<LayerSeat>(window) : nullptr;
}

} // namespace tidewick
