#include "platform/window/ScreenAreas.h"

#include "platform/wayland/LayerShell.h"

#include <QGuiApplication>
#include <QScreen>

namespace tidewick
{

QList<QScreen *> screensInOrder()
{
    QList<QScreen *> screens = QGuiApplication::screens();
    const auto primary = screens.indexOf(QGuiApplication::primaryScreen());
    if (primary > 0)
        screens.swapItemsAt(0, primary);
    return screens;
}

QList<ScreenArea> screenAreas()
{
    const auto pixels = layerScreenPixels();
    QList<ScreenArea> areas;
    for (const QScreen *const screen : screensInOrder()) {
        const QSize size = pixels.value(screen->name());
        const qreal scale = size.isEmpty() ? screen->devicePixelRatio()
                                           : qreal(size.width()) / screen->geometry().width();
        areas.append({screen->geometry(), screen->availableGeometry(), scale});
    }
    return areas;
}

} // namespace tidewick
