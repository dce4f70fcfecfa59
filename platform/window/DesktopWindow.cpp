#include "platform/window/DesktopWindow.h"

#include <QScreen>

namespace tidewick
{

void DesktopWindow::setStyleMask(WindowStyle style)
{
    const auto has = [style](WindowStyle bit) {
        return (static_cast<int>(style) & static_cast<int>(bit)) != 0;
    };
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint;
    flags.setFlag(Qt::WindowTitleHint, has(WindowStyle::titled));
    flags.setFlag(Qt::WindowSystemMenuHint, has(WindowStyle::titled));
    flags.setFlag(Qt::WindowCloseButtonHint, has(WindowStyle::closable));
    setFlags(flags);
}

void DesktopWindow::center()
{
    const QRect room = screen()->availableGeometry();
    setPosition(room.center() - QPoint(width() / 2, height() / 2));
}

void DesktopWindow::makeKeyAndOrderFront()
{
    load();
    show();
    raise();
}

} // namespace tidewick
