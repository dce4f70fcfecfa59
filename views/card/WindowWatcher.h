#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QtQmlIntegration>

namespace tidewick
{

/// What sees the events of one window before that does, in its event filter.
class WindowWatcher : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QQuickWindow *window READ window WRITE setWindow NOTIFY windowChanged)

public:
    using QObject::QObject;

    QQuickWindow *window() const { return m_window; }
    void setWindow(QQuickWindow *window);

Q_SIGNALS:
    void windowChanged();

private:
    QPointer<QQuickWindow> m_window;
};

} // namespace tidewick
