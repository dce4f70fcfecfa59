#pragma once

#include "platform/StatusItem.h"

#include <QSize>
#include <QUrl>
#include <QVariantMap>

namespace tidewick
{

/// How a popover closes: transient ones on any click outside them.
enum class PopoverBehavior { applicationDefined, transient };

/// The window that drops down from the status item. Main thread only.
class Popover
{
public:
    virtual ~Popover() = default;

    virtual void setContentSize(QSize points) = 0;
    virtual void setBehavior(PopoverBehavior behavior) = 0;
    /// Loads the QML file `view` with these initial properties of its root.
    virtual void setContentView(const QUrl &view, const QVariantMap &properties) = 0;
    virtual bool isShown() const = 0;
    /// Shows it beside the status item, where `event` clicked it; without an event where the item
    /// was last seen.
    virtual void show(const std::optional<ClickEvent> &event) = 0;
    virtual void performClose() = 0;
    /// Takes the keyboard.
    virtual void becomeKey() = 0;
};

} // namespace tidewick
