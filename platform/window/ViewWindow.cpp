#include "platform/window/ViewWindow.h"

#include <QQmlEngine>

namespace tidewick
{

ViewWindow::ViewWindow()
{
    setResizeMode(QQuickView::SizeRootObjectToView);
    engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
}

void ViewWindow::setView(const QUrl &view, const QVariantMap &properties)
{
    m_view = view;
    m_properties = properties;
}

void ViewWindow::load()
{
    if (rootObject() != nullptr || m_view.isEmpty())
        return;
    if (status() == Error)
        engine()->clearComponentCache(); // it remembers what failed
    setInitialProperties(m_properties);
    setSource(m_view);
}

void ViewWindow::fixSize(QSize points)
{
    setMinimumSize(points);
    setMaximumSize(points);
    resize(points);
}

} // namespace tidewick
