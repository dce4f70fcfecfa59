#pragma once

#include "platform/StatusItem.h"
#include "state/AppState.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

class QThreadPool;

namespace tidewick
{

/// The application's delegate: creates the status item and the store when launching has finished,
/// and keeps the number in the status bar equal to the number of listeners. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    using MakeStatusItem = std::function<std::unique_ptr<StatusItem>()>;

    /// Creates nothing yet. `pool` must outlive the delegate.
    AppDelegate(SystemInterfaces system, QThreadPool &pool, MakeStatusItem makeStatusItem);
    ~AppDelegate() override;
    Q_DISABLE_COPY_MOVE(AppDelegate)

    /// Builds the status item, then the store, then ties the one to the other.
    void applicationDidFinishLaunching();

    /// Draws the icon with `count` beside it, or the icon alone at 0.
    void updateStatusIcon(qint64 count);

    /// Ends the application; nothing is saved or asked.
    void quitApp();

private:
    SystemInterfaces m_system;
    QThreadPool &m_pool;
    MakeStatusItem m_makeStatusItem;

    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<AppState> m_appState;
};

/// The picture in `iconFile`, else the symbol "network". Throws nothing: without the symbol the
/// program ends.
QImage statusImage(const QString &iconFile);

/// What the status item's tooltip says of `runningPorts`.
QString statusSummary(const QList<PortInfo> &runningPorts);

} // namespace tidewick
