#include "platform/tray/DBusMenu.h"

#include <QDBusMessage>
#include <QDBusMetaType>

#include <algorithm>

namespace tidewick
{
namespace
{

void registerTypes()
{
    qDBusRegisterMetaType<QList<QStringList>>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuRemovedProperties>();
    qDBusRegisterMetaType<QList<DBusMenuRemovedProperties>>();
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
}

QVariantMap rootProperties()
{
    return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
}

QString keyName(const QString &key, KeyNames names)
{
    return names == KeyNames::keysym && key == QLatin1String(",") ? QStringLiteral("comma") : key;
}

QVariantMap itemProperties(const MenuItem &item, KeyNames names)
{
    if (item.title.isEmpty())
        return {{QStringLiteral("type"), QStringLiteral("separator")}};
    // A single underscore would make the next letter the access key.
    QVariantMap properties{{QStringLiteral("label"),
                            QString(item.title).replace(QLatin1Char('_'), QLatin1String("__"))}};
    if (!item.keyEquivalent.isEmpty()) {
        const QList<QStringList> keys{
            {QStringLiteral("Control"), keyName(item.keyEquivalent, names)}};
        properties.insert(QStringLiteral("shortcut"), QVariant::fromValue(keys));
    }
    if (!item.isEnabled)
        properties.insert(QStringLiteral("enabled"), false);
    return properties;
}

bool looksLike(const MenuItem &item, const MenuItem &other)
{
    return itemProperties(item, KeyNames::qt) == itemProperties(other, KeyNames::qt);
}

} // namespace

DBusMenu::DBusMenu(DBusObject *object) : QDBusAbstractAdaptor(object), m_object(object)
{
    static const bool registered = (registerTypes(), true);
    Q_UNUSED(registered)
}

void DBusMenu::setItems(const QList<MenuItem> &items)
{
    const bool looksTheSame =
        std::equal(items.begin(), items.end(), m_items.begin(), m_items.end(), looksLike);
    m_items = items;
    if (!looksTheSame)
        Q_EMIT LayoutUpdated(++m_revision, 0);
}

QVariantMap DBusMenu::properties(int id, const QStringList &names) const
{
    QVariantMap all = id == 0 ? rootProperties() : itemProperties(m_items.at(id - 1), m_keyNames);
    if (!names.isEmpty())
        all.removeIf([&names](const auto &entry) { return !names.contains(entry.key()); });
    return all;
}

bool DBusMenu::knows(int id) const
{
    if (!has(id) && m_object->calledFromDBus())
        m_object->sendErrorReply(QDBusError::InvalidArgs,
                                 QStringLiteral("There is no entry %1").arg(id));
    return has(id);
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                         DBusMenuLayout &layout)
{
    if (m_read && m_object->calledFromDBus())
        m_read(m_object->message().service());
    if (m_items.isEmpty() && m_wanted)
        m_wanted();
    if (!knows(parentId))
        return m_revision;
    layout = {parentId, properties(parentId, propertyNames), {}};
    if (parentId == 0 && recursionDepth != 0) {
        for (int id = 1; id <= m_items.size(); ++id)
            layout.children.append(
                QVariant::fromValue(DBusMenuLayout{id, properties(id, propertyNames), {}}));
    }
    return m_revision;
}

QList<DBusMenuProperties> DBusMenu::GetGroupProperties(const QList<int> &ids,
                                                       const QStringList &propertyNames) const
{
    QList<DBusMenuProperties> entries;
    for (const int id : ids) {
        if (has(id))
            entries.append({id, properties(id, propertyNames)});
    }
    return entries;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString &name) const
{
    // A variant on the bus cannot be empty, so an unknown property is an empty text.
    return QDBusVariant(knows(id) ? properties(id, {}).value(name, QString()) : QString());
}

void DBusMenu::Event(int id, const QString &type, const QDBusVariant & /*data*/, uint /*timestamp*/)
{
    if (!knows(id) || id == 0 || type != QLatin1String("clicked"))
        return;
    const MenuItem &item = m_items.at(id - 1);
    if (const auto action = item.action; action && item.isEnabled)
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent> &events)
{
    QList<int> unknownIds;
    for (const DBusMenuEvent &event : events) {
        if (has(event.id))
            Event(event.id, event.type, event.data, event.timestamp);
        else
            unknownIds.append(event.id);
    }
    return unknownIds;
}

bool DBusMenu::AboutToShow(int id)
{
    const uint before = m_revision;
    if (knows(id) && id == 0 && m_wanted)
        m_wanted();
    return m_revision != before;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int> &ids, QList<int> &unknownIds)
{
    QList<int> changedIds;
    for (const int id : ids) {
        if (!has(id))
            unknownIds.append(id);
        else if (AboutToShow(id))
            changedIds.append(id);
    }
    return changedIds;
}

} // namespace tidewick
