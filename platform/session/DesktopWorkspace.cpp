#include "platform/session/DesktopWorkspace.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>

#include <utility>

namespace tidewick
{

DesktopWorkspace::DesktopWorkspace(Opener open, QDBusConnection bus)
    : m_open(std::move(open)), m_bus(std::move(bus))
{
}

void DesktopWorkspace::openWithDefault(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

void DesktopWorkspace::openUrl(const QUrl &url)
{
    m_open(url);
}

void DesktopWorkspace::revealDirectory(const QString &path)
{
    if (!QFileInfo(path).isDir())
        return;
    const QUrl directory = QUrl::fromLocalFile(path);
    // https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("/org/freedesktop/FileManager1"),
                                               QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("ShowFolders"));
    call << QStringList(directory.toString(QUrl::FullyEncoded)) << QString();
    auto *reply = new QDBusPendingCallWatcher(m_bus.asyncCall(call));
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply,
                     [reply, directory, open = m_open] {
                         if (reply->isError())
                             open(directory);
                         reply->deleteLater();
                     });
}

} // namespace tidewick
