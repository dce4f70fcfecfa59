#pragma once

#include "platform/StatusItem.h"
#include "platform/tray/DBusStructure.h"

#include <QDBusAbstractAdaptor>
#include <QDBusContext>
#include <QDBusVariant>
#include <QMap>
#include <QObject>

namespace tidewick
{

/// `(ia{sv})`: the properties of one entry.
struct DBusMenuProperties
{
    int id = 0;
    QVariantMap properties;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuProperties &entry)
    {
        return writeStructure(argument, entry.id, entry.properties);
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuProperties &entry)
    {
        return readStructure(argument, entry.id, entry.properties);
    }
};

/// `(ias)`: names of properties that an entry has lost.
struct DBusMenuRemovedProperties
{
    int id = 0;
    QStringList names;

    friend QDBusArgument &operator<<(QDBusArgument &argument,
                                     const DBusMenuRemovedProperties &entry)
    {
        return writeStructure(argument, entry.id, entry.names);
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument,
                                           DBusMenuRemovedProperties &entry)
    {
        return readStructure(argument, entry.id, entry.names);
    }
};

/// `(ia{sv}av)`: an entry with its children, each a variant of the same shape.
struct DBusMenuLayout
{
    int id = 0;
    QVariantMap properties;
    QVariantList children;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuLayout &entry)
    {
        return writeStructure(argument, entry.id, entry.properties, entry.children);
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuLayout &entry)
    {
        return readStructure(argument, entry.id, entry.properties, entry.children);
    }
};

/// `(isvu)`: something that happened to an entry.
struct DBusMenuEvent
{
    int id = 0;
    QString type;
    QDBusVariant data;
    uint timestamp = 0;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuEvent &event)
    {
        return writeStructure(argument, event.id, event.type, event.data, event.timestamp);
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuEvent &event)
    {
        return readStructure(argument, event.id, event.type, event.data, event.timestamp);
    }
};

/// How a tray wants a key of a shortcut named: as Qt does ("Ctrl+,") or by its X11 keysym
/// ("comma"). Letters and digits are the same in both.
enum class KeyNames { qt, keysym };

/// An object to register on the bus. Only this object, not its adaptors, can answer the call that
/// is being served.
class DBusObject : public QObject, public QDBusContext
{
    Q_OBJECT
};

/// A flat menu exported as com.canonical.dbusmenu (version 3 of the protocol): id 0 is the root,
/// and the entries count from 1 in order. The action of a chosen entry runs after the call was
/// answered. A call with an unknown entry gets an error. The owner is told when a tray is about to
/// show the menu, or reads it before it was filled.
class DBusMenu : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    /// `object` owns the menu and is what gets registered on the bus.
    explicit DBusMenu(DBusObject *object);

    /// Announces a new layout if the entries look different from before.
    void setItems(const QList<MenuItem> &items);
    void setKeyNames(KeyNames names) { m_keyNames = names; }
    void setWanted(const std::function<void()> &wanted) { m_wanted = wanted; }
    /// What is told, by its name on the bus, of who reads the menu, before the answer.
    void setRead(const std::function<void(const QString &reader)> &read) { m_read = read; }

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the names are the protocol's.
    uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                   tidewick::DBusMenuLayout &layout);
    QList<tidewick::DBusMenuProperties> GetGroupProperties(const QList<int> &ids,
                                                           const QStringList &propertyNames) const;
    QDBusVariant GetProperty(int id, const QString &name) const;
    void Event(int id, const QString &type, const QDBusVariant &data, uint timestamp);
    QList<int> EventGroup(const QList<tidewick::DBusMenuEvent> &events);
    /// True if the layout has changed and must be read again.
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &unknownIds);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<tidewick::DBusMenuProperties> &updated,
                                const QList<tidewick::DBusMenuRemovedProperties> &removed);
    void LayoutUpdated(uint revision, int parentId);
    // NOLINTEND(readability-identifier-naming)

private:
    /// If there is no such entry, answers the call that is being served with an error.
    bool knows(int id) const;
    bool has(int id) const { return id >= 0 && id <= m_items.size(); }
    QVariantMap properties(int id, const QStringList &names) const;

    DBusObject *m_object;
    std::function<void()> m_wanted;
    std::function<void(const QString &reader)> m_read;
    QList<MenuItem> m_items;
    KeyNames m_keyNames = KeyNames::keysym;
    uint m_revision = 1;
};

} // namespace tidewick

Q_DECLARE_METATYPE(tidewick::DBusMenuProperties)
Q_DECLARE_METATYPE(tidewick::DBusMenuRemovedProperties)
Q_DECLARE_METATYPE(tidewick::DBusMenuLayout)
Q_DECLARE_METATYPE(tidewick::DBusMenuEvent)
