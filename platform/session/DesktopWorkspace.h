#pragma once

#include "platform/Workspace.h"
#include "platform/session/DirectoryCheck.h"

#include <QDBusConnection>

#include <functional>

namespace tidewick
{

/// The desktop the program runs on.
class DesktopWorkspace : public Workspace
{
public:
    using Opener = std::function<void(const QUrl &)>;

    /// The desktop opens with `open` whatever it has a default program for; the file manager is
    /// asked over `bus`.
    explicit DesktopWorkspace(Opener open = openWithDefault,
                              QDBusConnection bus = QDBusConnection::sessionBus());

    void openUrl(const QUrl &url) override;
    /// Opens the directory like any other thing where no file manager answers on the bus. Returns
    /// at once; nothing is shown where the file system has not answered in time.
    void revealDirectory(const QString &path) override;

private:
    static void openWithDefault(const QUrl &url);

    Opener m_open;
    QDBusConnection m_bus;
    DirectoryCheck m_check;
};

} // namespace tidewick
