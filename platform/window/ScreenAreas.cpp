#include "platform/window/ScreenAreas.h"

#include "platform/session/ShellLayout.h"
#include "platform/wayland/LayerShell.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

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
    QList<ScreenArea> areas;
    for (const QScreen *const screen : screensInOrder())
        areas.append({screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()});
    return areas;
}

QList<ScreenArea> screenAreasWithScales()
{
    const auto pixels = layerScreenPixels();
    const QList<QScreen *> screens = screensInOrder();
    QList<ScreenArea> areas = screenAreas();
    for (qsizetype i = 0; i < areas.size(); ++i) {
        const QSize size = pixels.value(screens[i]->name());
        if (!size.isEmpty())
            areas[i].pixelsPerPoint = qreal(size.width()) / areas[i].whole.width();
    }
    const bool isScaled = std::any_of(areas.begin(), areas.end(), [](const ScreenArea &area) {
        return area.pixelsPerPoint != 1;
    });
    if (isScaled && shellCountsPoints(QDBusConnection::sessionBus())) {
        for (ScreenArea &area : areas)
            area.pixelsPerPoint = 1;
    }
    return areas;
}

} // namespace tidewick
