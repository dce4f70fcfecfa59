#include "platform/wayland/LayerShell.h"

#include "platform/wayland/Compositor.h"
#include "platform/wayland/LayerSeat.h"

#include <QGuiApplication>
#include <QQuickWindow>

#include <utility>

using namespace std::chrono_literals;

namespace tidewick
{

namespace
{

constexpr auto layerShell = "zwlr_layer_shell_v1";

bool isWayland()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

bool isLayerShellOffered()
{
    return compositorOffers(layerShell, 1s);
}

QHash<QString, QSize> layerScreenPixels()
{
    return isWayland() ? outputPixels(1s) : QHash<QString, QSize>();
}

std::unique_ptr<PopoverSeat> layerSeat(QQuickWindow &window, std::function<void()> lost)
{
    // The toolkit is connected to the compositor already, which may be busy in a session's start.
    return isWayland() && compositorOffers(layerShell, 20s)
               ? std::make_unique<LayerSeat>(window, std::move(lost))
               : nullptr;
}

} // namespace tidewick
