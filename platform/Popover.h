#pragma once

#include <QSize>
#include <QUrl>
#include <QVariantMap>

namespace tidewick
{

/// The window that drops down from the status item. Main thread only.
class Popover
{
public:
    virtual ~Popover() = default;

    virtual void setContentSize(QSize points) = 0;
    /// Loads the QML file `view` with these initial properties of its root.
    virtual void setContentView(const QUrl &view, const QVariantMap &properties) = 0;
    /// Shows it beside the status item, or hides it.
    virtual void toggle() = 0;
};

} // namespace tidewick
