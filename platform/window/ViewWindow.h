#pragma once

#include <QQuickView>
#include <QUrl>
#include <QVariantMap>

namespace tidewick
{

/// A window that shows one QML view at a fixed size.
class ViewWindow : public QQuickView
{
    Q_OBJECT

public:
    ViewWindow();

protected:
    /// Sets the file of the view, and values for its properties. Nothing is loaded yet.
    void setView(const QUrl &view, const QVariantMap &properties);
    /// Creates the view, unless it is there. What fails is logged, and the next call tries again:
    /// the system may have had no memory or no descriptor left.
    void load();
    void fixSize(QSize points);

private:
    QUrl m_view;
    QVariantMap m_properties;
};

} // namespace tidewick
