#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QtQmlIntegration>

namespace tidewick
{

/// The base of what filters the events of one window. What inherits it writes its name with the
/// namespace: that is how Qt 6.4 finds it for QML.
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
