#pragma once

#include "platform/SettingsWindow.h"
#include "platform/window/ViewWindow.h"

namespace tidewick
{

/// A window with the frame that the desktop's window manager draws.
class DesktopWindow : public ViewWindow, public SettingsWindow
{
    Q_OBJECT

public:
    void setContentView(const QUrl &view, const QVariantMap &properties) override
    {
        setView(view, properties);
        load();
    }
    void setTitle(const QString &title) override { ViewWindow::setTitle(title); }
    void setStyleMask(WindowStyle style) override;
    void setContentSize(QSize points) override { fixSize(points); }
    void center() override;
    void makeKeyAndOrderFront() override;
    void activateIgnoringOtherApps() override { requestActivate(); }
};

} // namespace tidewick
