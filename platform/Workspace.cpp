#include "platform/Workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>

namespace tidewick
{

void DesktopWorkspace::openUrl(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

void DesktopWorkspace::revealFolder(const QString &path)
{
    if (!QFileInfo(path).isDir())
        return;
    const QUrl folder = QUrl::fromLocalFile(path);
    // https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("/org/freedesktop/FileManager1"),
                                               QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("ShowFolders"));
    call << QStringList(folder.toString(QUrl::FullyEncoded)) << QString();
    auto *reply = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply, [reply, folder] {
        if (reply->isError())
            QDesktopServices::openUrl(folder);
        reply->deleteLater();
    });
}

} // namespace tidewick
