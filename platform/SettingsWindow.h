#pragma once

#include <QSize>
#include <QUrl>
#include <QVariantMap>

namespace tidewick
{

/// What a window's frame offers, as bits.
enum class WindowStyle { titled = 1, closable = 2, titledAndClosable = 3 };

/// The window of the settings. Closing it only hides it. Main thread only.
class SettingsWindow
{
public:
    virtual ~SettingsWindow() = default;

    /// Loads the QML file `view` with these initial properties of its root.
    virtual void setContentView(const QUrl &view, const QVariantMap &properties) = 0;
    virtual void setTitle(const QString &title) = 0;
    virtual void setStyleMask(WindowStyle style) = 0;
    /// The window keeps this size.
    virtual void setContentSize(QSize points) = 0;
    /// Moves it to the middle of the screen.
    virtual void center() = 0;
    virtual void makeKeyAndOrderFront() = 0;
    /// Raises it above the application that has the focus.
    virtual void activateIgnoringOtherApps() = 0;
};

} // namespace tidewick
