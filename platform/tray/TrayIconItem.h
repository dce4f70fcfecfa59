#pragma once

#include "platform/tray/TrayIconWindow.h"
#include "platform/tray/TrayPresenter.h"

#include <QMenu>
#include <QTimer>

#include <memory>

namespace tidewick
{

/// A menu that takes the first click on an entry. Qt 6.8 closes it at a press if it has not seen
/// the pointer move some times, because it does not know where the pointer was over the icon.
class TrayIconMenu : public QMenu
{
protected:
    void mousePressEvent(QMouseEvent *event) override;
};

/// An icon in a tray of the old X11 kind, with a menu and a tooltip that this program draws.
class TrayIconItem : public QObject, public TrayPresenter
{
    Q_OBJECT

public:
    /// `tray` is the owner of the tray's selection.
    TrayIconItem(ClickHandler clicked, xcb_window_t tray);
    ~TrayIconItem() override;
    Q_DISABLE_COPY_MOVE(TrayIconItem)

    /// The number is inside the picture.
    void show(const StatusItemState &state) override;
    /// The menu opens at the pointer, a moment later.
    void openMenu(const QList<MenuItem> &items) override;

private:
    QImage picture(int side) const;
    void send(int button, QPoint place);
    void hideToolTip();

    ClickHandler m_clicked;
    const xcb_window_t m_tray;
    StatusItemState m_state;
    QTimer m_toolTipDelay;
    TrayIconMenu m_menu;
    std::unique_ptr<TrayIconWindow> m_window;
};

} // namespace tidewick
