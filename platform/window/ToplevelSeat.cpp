#include "platform/window/ToplevelSeat.h"

#include "platform/Logging.h"
#include "platform/window/ScreenAreas.h"
#include "platform/window/TaskbarEntry.h"

#include <QMoveEvent>
#include <QWindow>

#include <cstdlib>

namespace tidewick
{
namespace
{

/// A window manager moves a window for this long after it was shown, and the user does not.
constexpr int mappingMs = 1000;

/// A window manager that insists on its own place has its way.
constexpr int mostCorrections = 5;

} // namespace

ToplevelSeat::ToplevelSeat(QWindow &window) : m_window(window)
{
    window.installEventFilter(this);
}

void ToplevelSeat::place(std::optional<QPoint> anchor)
{
    m_place = popoverPosition(m_window.size(), anchor, screenAreas());
    m_corrections = 0;
    m_mappingEnd.setRemainingTime(mappingMs);
    qCDebug(platformLog) << "panel at" << m_place << "beside" << anchor.value_or(QPoint());
    if (!m_window.isVisible())
        hideFromTaskbars(m_window);
    m_window.setPosition(m_place);
}

void ToplevelSeat::takeKeyboard()
{
    m_window.requestActivate();
}

bool ToplevelSeat::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Move)
        correct(*static_cast<QMoveEvent *>(event));
    return QObject::eventFilter(watched, event);
}

void ToplevelSeat::correct(const QMoveEvent &event)
{
    const QPoint offset = event.pos() - m_place;
    const bool isOff = std::abs(offset.x()) > 1 || std::abs(offset.y()) > 1; // but for rounding
    const bool isFramed = !m_window.flags().testFlag(Qt::FramelessWindowHint);
    if (!isOff || !m_window.isVisible() || isFramed || m_mappingEnd.hasExpired() ||
        m_corrections == mostCorrections)
        return;
    ++m_corrections;
    m_window.setPosition(m_place);
}

} // namespace tidewick
