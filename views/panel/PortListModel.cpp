#include "views/panel/PortListModel.h"

#include <QSet>

#include <algorithm>
#include <utility>

namespace tidewick
{
namespace
{

using RowKey = std::pair<qint64, QString>;

RowKey keyOf(const PortInfo &record)
{
    return {record.port(), record.pid()};
}

bool isSameRow(const PortInfo &a, const PortInfo &b)
{
    return a.port() == b.port() && a.pid() == b.pid();
}

/// The place of `record`'s row in `records` from `from` on, or -1.
int findRow(const QList<PortInfo> &records, const PortInfo &record, int from)
{
    const auto found =
        std::find_if(records.begin() + from, records.end(),
                     [&record](const PortInfo &other) { return isSameRow(other, record); });
    return found == records.end() ? -1 : static_cast<int>(found - records.begin());
}

} // namespace

void PortListModel::setRecords(const QList<PortInfo> &records)
{
    removeRowsMissingFrom(records);
    for (int row = 0; row < records.size(); ++row)
        place(records[row], row);
}

void PortListModel::removeRowsMissingFrom(const QList<PortInfo> &records)
{
    QSet<RowKey> staying;
    for (const PortInfo &record : records)
        staying.insert(keyOf(record));
    for (int row = static_cast<int>(m_records.size()) - 1; row >= 0; --row) {
        if (staying.contains(keyOf(m_records[row])))
            continue;
        beginRemoveRows({}, row, row);
        m_records.removeAt(row);
        endRemoveRows();
    }
}

void PortListModel::place(const PortInfo &record, int row)
{
    const int standing = findRow(m_records, record, row);
    if (standing < 0) {
        insert(record, row);
        return;
    }
    if (standing > row)
        move(standing, row);
    update(record, row);
}

void PortListModel::update(const PortInfo &record, int row)
{
    m_records[row] = record;
    Q_EMIT dataChanged(index(row), index(row));
}

void PortListModel::move(int from, int to)
{
    beginMoveRows({}, from, from, {}, to);
    m_records.move(from, to);
    endMoveRows();
}

void PortListModel::insert(const PortInfo &record, int row)
{
    beginInsertRows({}, row, row);
    m_records.insert(row, record);
    endInsertRows();
}

int PortListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_records.size());
}

QVariant PortListModel::data(const QModelIndex &index, int role) const
{
    const bool isRow = checkIndex(index, CheckIndexOption::IndexIsValid);
    return isRow && role == recordRole ? QVariant::fromValue(m_records[index.row()]) : QVariant();
}

QHash<int, QByteArray> PortListModel::roleNames() const
{
    return {{recordRole, "record"}};
}

} // namespace tidewick
