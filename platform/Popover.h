#pragma once

#include "platform/StatusItem.h"

#include <QSize>
#include <QUrl>
#include <QVariantMap>

namespace tidewick
{

/// When a popover closes by itself: a transient one closes on any click outside it.
enum class PopoverBehavior { transient = 1 };

/// The window that drops down from the status item. Main thread only.
class Popover
{
public:
    virtual ~Popover() = default;

    virtual void setContentSize(QSize points) = 0;
    /// Before the first call, only the program and the Escape key close the popover.
    virtual void setBehavior(PopoverBehavior behavior) = 0;
    /// The QML file `view`, with these initial properties of its root. It is loaded when the
    /// popover is shown or made ready.
    virtual void setContentView(const QUrl &view, const QVariantMap &properties) = 0;
    /// A moment after the last call, loads the content and draws it once, unseen, so that the first
    /// opening need not. Call it again when there is more to draw.
    virtual void makeReady() = 0;
    virtual bool isShown() const = 0;
    /// Shows it beside the status item: at the place of the click `event`, or where the item was
    /// last seen if there was no click.
    virtual void show(const std::optional<ClickEvent> &event) = 0;
    virtual void performClose() = 0;
    /// Takes the keyboard.
    virtual void becomeKey() = 0;
};

} // namespace tidewick
