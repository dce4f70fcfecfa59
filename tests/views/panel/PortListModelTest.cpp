#include "views/panel/PortListModel.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>

#include <algorithm>

using namespace tidewick;

namespace
{

/// Rows written as port and pid, "3000a": each a fresh record.
QList<PortInfo> records(const QStringList &rows)
{
    QList<PortInfo> result;
    for (const QString &row : rows)
        result.append(
            PortInfo(row.chopped(1).toLongLong(), row.last(1), QStringLiteral("node"), {}, {}));
    return result;
}

class PortListModelTest : public testing::Test
{
protected:
    PortListModelTest()
    {
        const auto log = [this](const char *what) {
            return [this, what](const QModelIndex &, int first) {
                changes.append(QStringLiteral("%1 %2").arg(QLatin1String(what)).arg(first));
            };
        };
        QObject::connect(&model, &PortListModel::rowsInserted, log("insert"));
        QObject::connect(&model, &PortListModel::rowsRemoved, log("remove"));
        QObject::connect(&model, &PortListModel::rowsMoved, log("move"));
        QObject::connect(&model, &PortListModel::dataChanged, [this](const QModelIndex &row) {
            changes.append(QStringLiteral("update %1").arg(row.row()));
        });
        QObject::connect(&model, &PortListModel::modelReset,
                         [this] { changes.append(QStringLiteral("reset")); });
    }

    void set(const QStringList &rows)
    {
        changes.clear();
        model.setRecords(records(rows));
    }
    PortInfo row(int number)
    {
        const QVariant record = model.data(model.index(number), PortListModel::recordRole);
        return *static_cast<const PortInfo *>(record.constData());
    }
    QStringList rows()
    {
        QStringList result;
        for (int i = 0; i < model.rowCount(); ++i)
            result.append(QString::number(row(i).port()) + row(i).pid());
        return result;
    }

    PortListModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    QStringList changes;
};

QStringList list(const char *text)
{
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

TEST_F(PortListModelTest, hasOneRoleThatHoldsTheWholeRecord)
{
    EXPECT_EQ(model.roleNames(), (QHash<int, QByteArray>{{PortListModel::recordRole, "record"}}));
    const auto given = records(list("3000a"));
    model.setRecords(given);
    EXPECT_EQ(row(0).id(), given[0].id());
    EXPECT_FALSE(model.data(model.index(0), Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.data(model.index(1), PortListModel::recordRole).isValid());
}

TEST_F(PortListModelTest, sameListAgainUpdatesEachRowInPlaceWithItsNewId)
{
    set(list("3000a 3001a"));
    const QUuid id = row(0).id();
    set(list("3000a 3001a"));
    EXPECT_EQ(changes, QStringList({QStringLiteral("update 0"), QStringLiteral("update 1")}));
    EXPECT_NE(row(0).id(), id);
}

TEST_F(PortListModelTest, newListenerIsOneInsertion)
{
    set(list("3000a 8000b"));
    set(list("3000a 5000c 8000b"));
    EXPECT_EQ(changes.filter(QStringLiteral("insert")), QStringList(QStringLiteral("insert 1")));
    EXPECT_TRUE(changes.filter(QStringLiteral("remove")).isEmpty());
    EXPECT_TRUE(changes.filter(QStringLiteral("move")).isEmpty());
}

TEST_F(PortListModelTest, newPortOfAProcessIsOneInsertion)
{
    set(list("3000a 3001a"));
    set(list("2999a 3000a 3001a"));
    EXPECT_EQ(changes, QStringList({QStringLiteral("insert 0"), QStringLiteral("update 1"),
                                    QStringLiteral("update 2")}));
    EXPECT_EQ(rows(), list("2999a 3000a 3001a"));
}

TEST_F(PortListModelTest, rowHasNoRowsOfItsOwn)
{
    set(list("3000a"));
    EXPECT_EQ(model.rowCount(model.index(0)), 0);
}

TEST_F(PortListModelTest, listenerThatIsGoneIsOneRemoval)
{
    set(list("3000a 5000c 8000b"));
    set(list("3000a 8000b"));
    EXPECT_EQ(changes.first(), QStringLiteral("remove 1"));
    EXPECT_EQ(changes.size(), 3);
}

TEST_F(PortListModelTest, otherProcessOnThePortIsAnotherRow)
{
    set(list("3000a"));
    const QPersistentModelIndex old = model.index(0);
    set(list("3000b"));
    EXPECT_FALSE(old.isValid());
    EXPECT_EQ(rows(), list("3000b"));
}

TEST_F(PortListModelTest, rowKeepsItsIdentityWhateverComesAndGoesAroundIt)
{
    set(list("3000a 8000b 9000c"));
    const QPersistentModelIndex kept = model.index(1);
    set(list("1000x 2000y 8000b"));
    EXPECT_TRUE(kept.isValid());
    EXPECT_EQ(kept.row(), 2);
}

TEST_F(PortListModelTest, everyListBecomesEveryOtherWithoutAReset)
{
    QStringList all = list("1a 2b 3c 3d");
    QList<QStringList> lists;
    for (unsigned kept = 0; kept < 16; ++kept) {
        QStringList some;
        for (int i = 0; i < 4; ++i) {
            if ((kept >> unsigned(i) & 1U) != 0)
                some.append(all[i]);
        }
        do
            lists.append(some);
        while (std::next_permutation(some.begin(), some.end()));
    }
    for (const QStringList &from : lists) {
        for (const QStringList &to : lists) {
            model.setRecords(records(from));
            set(to);
            ASSERT_EQ(rows(), to) << from.join(u' ').toStdString();
            ASSERT_FALSE(changes.contains(QStringLiteral("reset")));
        }
    }
}
