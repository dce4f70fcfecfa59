#include "platform/window/ViewWindow.h"

#include <QQmlEngine>

namespace tidewick
{

ViewWindow::ViewWindow()
{
    setResizeMode(QQuickView::SizeRootObjectToView);
    engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
}

void ViewWindow::showView(const QUrl &view, const QVariantMap &properties)
{
    setInitialProperties(properties);
    setSource(view);
}

void ViewWindow::fixSize(QSize points)
{
    setMinimumSize(points);
    setMaximumSize(points);
    resize(points);
}

} // namespace tidewick
