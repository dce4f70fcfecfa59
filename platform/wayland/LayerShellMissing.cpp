#include "platform/wayland/LayerShell.h"

// For a build without LayerShellQt.

namespace tidewick
{

bool isLayerShellOffered()
{
    return false;
}

QHash<QString, QSize> layerScreenPixels()
{
    return {};
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the other implementation keeps `lost`
std::unique_ptr<PopoverSeat> layerSeat(QQuickWindow & /*window*/, std::function<void()> /*lost*/)
{
    return nullptr;
}

} // namespace tidewick
