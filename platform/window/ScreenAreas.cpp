#include "platform/window/ScreenAreas.h"

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
    QList<ScreenArea> areas;
    for (const QScreen *const screen : screensInOrder())
        areas.append({screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()});
    return areas;
}

} // namespace tidewick
