#pragma once

#include <QQuickView>

namespace tidewick
{

/// A window that shows one QML view at a fixed size.
class ViewWindow : public QQuickView
{
    Q_OBJECT

public:
    ViewWindow();

protected:
    /// Creates the view from the file at `view`, with these values for its properties.
    void showView(const QUrl &view, const QVariantMap &properties);
    void fixSize(QSize points);
};

} // namespace tidewick
