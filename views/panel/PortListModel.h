#pragma once

#include "model/PortInfo.h"

#include <QAbstractListModel>
#include <QList>

namespace tidewick
{

/// The model of the panel's cards: one row for each listener and one role, the whole record. It
/// turns each new list into in-place changes, so that a card keeps its state through a refresh. A
/// row is the same if port and pid are the same, whatever the record's `id`.
class PortListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    static constexpr int recordRole = Qt::UserRole;

    using QAbstractListModel::QAbstractListModel;

    /// Makes the rows equal to `records`, in their order, by removing, inserting, moving and
    /// updating rows.
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
