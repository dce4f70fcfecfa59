#include "views/card/PressSequence.h"

#include <QGuiApplication>
#include <QInputEvent>
#include <QKeyEvent>
#include <QStyleHints>

#include <algorithm>

namespace tidewick
{
namespace
{

bool isPressingKey(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Space || event.key() == Qt::Key_Return ||
           event.key() == Qt::Key_Enter;
}

} // namespace

bool PressSequence::begins()
{
    if (!m_isUnasked)
        add(std::nullopt);
    m_isUnasked = false;
    return m_isFirst;
}

bool PressSequence::eventFilter(QObject * /*watched*/, QEvent *event)
{
    const auto type = event->type();
    const bool isKey = type == QEvent::KeyPress || type == QEvent::KeyRelease;
    if (isKey && !isPressingKey(static_cast<QKeyEvent &>(*event)))
        return false;
    if (isKey && static_cast<QKeyEvent &>(*event).isAutoRepeat()) {
        m_isFirst = false;
        m_isUnasked = true;
    } else if (type == QEvent::KeyPress || type == QEvent::MouseButtonPress ||
               type == QEvent::TouchBegin) {
        // What has no time of its own carries 0.
        const auto timestamp = static_cast<quint32>(static_cast<QInputEvent &>(*event).timestamp());
        add(timestamp == 0 ? std::nullopt : std::optional(timestamp));
        m_isUnasked = true;
    }
    return false;
}

void PressSequence::add(std::optional<quint32> timestamp)
{
    const Press press{timestamp, std::chrono::steady_clock::now()};
    m_isFirst = !m_latest || !follow(*m_latest, press);
    m_latest = press;
}

bool PressSequence::follow(const Press &before, const Press &press) const
{
    const auto interval = QGuiApplication::styleHints()->mouseDoubleClickInterval();
    if (!before.timestamp || !press.timestamp)
        return press.arrival - before.arrival <= std::chrono::milliseconds(interval);
    // X servers count in 32 bits, and begin again at 0.
    const quint32 distance = *press.timestamp - *before.timestamp;
    return std::min(distance, 0 - distance) <= static_cast<quint32>(interval);
}

} // namespace tidewick
