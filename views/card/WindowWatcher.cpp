#include "views/card/WindowWatcher.h"

namespace tidewick
{

void WindowWatcher::setWindow(QQuickWindow *window)
{
    if (window == m_window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (m_window)
        m_window->installEventFilter(this);
    Q_EMIT windowChanged();
}

} // namespace tidewick
