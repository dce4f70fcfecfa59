#include "platform/session/DesktopWorkspace.h"

#include <QCoroDBusPendingReply>
#include <QCoroTask>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDesktopServices>

#include <utility>

namespace tidewick
{
namespace
{

/// Shows the directory in the file manager, or opens it like any other URL where none answers.
QCoro::Task<> show(QUrl directory, DesktopWorkspace::Opener open, QDBusConnection bus)
{
    // https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("/org/freedesktop/FileManager1"),
                                               QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("ShowFolders"));
    call << QStringList(directory.toString(QUrl::FullyEncoded)) << QString();
    const QDBusPendingReply<> reply = bus.asyncCall(call);
    co_await reply;
    if (reply.isError())
        open(directory);
}

} // namespace

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
    m_check.start(path, [this, path](bool isDirectory) {
        if (isDirectory)
            show(QUrl::fromLocalFile(path), m_open, m_bus);
    });
}

} // namespace tidewick
