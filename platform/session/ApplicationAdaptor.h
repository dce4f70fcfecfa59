#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace tidewick
{

/// org.freedesktop.Application. This program opens no files and has no actions of its own, so
/// every method shows the panel.
class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(QObject *parent) : QDBusAbstractAdaptor(parent) {}

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the names are the interface's.
    void Activate(const QVariantMap &platformData) { Q_EMIT activated(platformData); }
    void Open(const QStringList & /*uris*/, const QVariantMap &platformData)
    {
        Q_EMIT activated(platformData);
    }
    void ActivateAction(const QString & /*name*/, const QVariantList & /*parameter*/,
                        const QVariantMap &platformData)
    {
        Q_EMIT activated(platformData);
    }
    // NOLINTEND(readability-identifier-naming)

Q_SIGNALS:
    void activated(const QVariantMap &platformData);
};

} // namespace tidewick
