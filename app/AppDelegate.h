#pragma once

#include "platform/Popover.h"
#include "platform/StatusItem.h"
#include "platform/Workspace.h"
#include "state/AppState.h"
#include "views/Panel.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

class QThreadPool;

namespace tidewick
{

/// What the delegate needs of the desktop, made when launching has finished.
struct Desktop
{
    std::function<std::unique_ptr<StatusItem>()> makeStatusItem;
    std::function<std::unique_ptr<Popover>()> makePopover;
    std::function<std::unique_ptr<Workspace>()> makeWorkspace;
};

/// The application's delegate: creates the status item, the popover with the panel, and the store
/// when launching has finished, and keeps the number in the status bar equal to the number of
/// listeners. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Creates nothing yet. `pool` must outlive the delegate.
    AppDelegate(SystemInterfaces system, QThreadPool &pool, Desktop desktop);
    ~AppDelegate() override;
    Q_DISABLE_COPY_MOVE(AppDelegate)

    /// Builds everything, in this order: the status item, the popover, the store, what ties the
    /// number to the store, and the panel in the popover.
    void applicationDidFinishLaunching();

    /// Draws the icon with `count` beside it, or the icon alone at 0.
    void updateStatusIcon(qint64 count);

    /// Opens or closes the panel. Opening it starts no refresh.
    void togglePopover();

    /// Ends the application; nothing is saved or asked.
    void quitApp();

private:
    void showPanel();

    SystemInterfaces m_system;
    QThreadPool &m_pool;
    Desktop m_desktop;

    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<AppState> m_appState;
    std::unique_ptr<Panel> m_panel;
    std::unique_ptr<Popover> m_popover; // goes before the panel that its content shows
};

/// The picture in `iconFile`, else the symbol "network". Throws nothing: without the symbol the
/// program ends.
QImage statusImage(const QString &iconFile);

/// What the status item's tooltip says of `runningPorts`.
QString statusSummary(const QList<PortInfo> &runningPorts);

} // namespace tidewick
