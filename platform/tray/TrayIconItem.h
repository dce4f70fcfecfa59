#pragma once

#include "platform/tray/TrayPresenter.h"

#include <QMenu>
#include <QSystemTrayIcon>

namespace tidewick
{

/// An icon in a tray of the old X11 kind. The toolkit draws the icon, and this program draws the
/// menu. Make one only while there is such a tray and nothing keeps a list of status notifier
/// items: the toolkit decides once, at its first use, which of the two it serves.
class TrayIconItem : public QObject, public TrayPresenter
{
    Q_OBJECT

public:
    explicit TrayIconItem(ClickHandler clicked);

    /// The number is inside the picture.
    void show(const StatusItemState &state) override;
    /// The menu opens at the pointer, a moment later.
    void openMenu(const QList<MenuItem> &items) override;

private:
    void send(QSystemTrayIcon::ActivationReason reason);

    ClickHandler m_clicked;
    QSystemTrayIcon m_icon;
    QMenu m_menu;
};

} // namespace tidewick
