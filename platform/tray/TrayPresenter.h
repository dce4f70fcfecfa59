#pragma once

#include "platform/StatusItem.h"

namespace tidewick
{

/// What a tray shows of the status item.
struct StatusItemState
{
    QImage image;
    QSize points;
    StatusTitle title;
    QString toolTipTitle;
    QString toolTipText;

    friend bool operator==(const StatusItemState &, const StatusItemState &) = default;
};

/// Shows the status item in one kind of tray and reports the clicks there.
class TrayPresenter
{
public:
    using ClickHandler = std::function<void(const ClickEvent &)>;

    virtual ~TrayPresenter() = default;

    /// Replaces what is shown. Until the state has an image nothing is shown.
    virtual void show(const StatusItemState &state) = 0;
    /// Opens a menu in answer to a right click.
    virtual void openMenu(const QList<MenuItem> &items) = 0;
};

} // namespace tidewick
