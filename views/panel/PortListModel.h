#pragma once

#include "model/PortInfo.h"

#include <QAbstractListModel>
#include <QList>

namespace tidewick
{

/// The list that the panel's cards stand for: one row a listener, one role, the whole record.
/// Each new list becomes in-place changes, so that a card outlives a refresh with all that it
/// holds: the same port and pid is the same row, whatever the record's `id`.
class PortListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    static constexpr int recordRole = Qt::UserRole;

    using QAbstractListModel::QAbstractListModel;

    /// Turns the rows into `records`, in their order: rows that are gone are removed, new ones
    /// inserted, those that changed places moved, and the others updated.
    void setRecords(const QList<PortInfo> &records);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void removeRowsMissingFrom(const QList<PortInfo> &records);
    /// Makes `record` the row at `row`; the rows above it stand already.
    void place(const PortInfo &record, int row);
    void update(const PortInfo &record, int row);
    void move(int from, int to);
    void insert(const PortInfo &record, int row);

    QList<PortInfo> m_records;
};

} // namespace tidewick

Q_DECLARE_METATYPE(tidewick::PortInfo)
