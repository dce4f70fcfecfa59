#pragma once

#include <QDBusArgument>

namespace tidewick
{

/// Writes `fields` in order as one D-Bus structure.
template <class... Fields>
QDBusArgument &writeStructure(QDBusArgument &argument, const Fields &...fields)
{
    argument.beginStructure();
    (argument << ... << fields);
    argument.endStructure();
    return argument;
}

/// Reads one D-Bus structure into `fields`, in order.
template <class... Fields>
const QDBusArgument &readStructure(const QDBusArgument &argument, Fields &...fields)
{
    argument.beginStructure();
    (argument >> ... >> fields);
    argument.endStructure();
    return argument;
}

} // namespace tidewick
