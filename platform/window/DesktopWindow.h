#pragma once

#include "platform/SettingsWindow.h"

#include <QQuickView>

namespace tidewick
{

/// A window with the frame that the desktop's window manager draws.
class DesktopWindow : public QQuickView, public SettingsWindow
{
    Q_OBJECT

public:
    DesktopWindow();

    void setContentView(const QUrl &view, const QVariantMap &properties) override;
    void setTitle(const QString &title) override { QQuickView::setTitle(title); }
    void setStyleMask(WindowStyle style) override;
    void setContentSize(QSize points) override;
    void center() override;
    void makeKeyAndOrderFront() override;
    void activateIgnoringOtherApps() override { requestActivate(); }
};

} // namespace tidewick
