#include "scan/ToolTable.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using namespace tidewick;

namespace
{

QString makeFile(const QTemporaryDir &directory, const QString &name,
                 QFile::Permissions permissions)
{
    QFile file(directory.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(file.setPermissions(permissions));
    return file.fileName();
}

constexpr auto executable = QFile::ReadOwner | QFile::ExeOwner;

} // namespace

TEST(ToolTable, stockToolsLieAtTheSystemsPaths)
{
    const ToolTable table = ToolTable::stock();
    EXPECT_EQ(table.lsof,
              QStringList({QStringLiteral("/usr/sbin/lsof"), QStringLiteral("/usr/bin/lsof")}));
    EXPECT_EQ(table.ps, QStringList({QStringLiteral("/bin/ps")}));
    EXPECT_EQ(table.kill, QStringList({QStringLiteral("/bin/kill")}));
}

TEST(ToolTable, suppliedToolsComeBeforeTheStockOnesExceptKill)
{
    const ToolTable table = ToolTable::suppliedOverStock(QStringLiteral("/opt/libexec"));
    EXPECT_EQ(table.lsof.first(), QStringLiteral("/opt/libexec/lsof"));
    EXPECT_EQ(table.lsof.mid(1), ToolTable::stock().lsof);
    EXPECT_EQ(table.ps.first(), QStringLiteral("/opt/libexec/ps"));
    EXPECT_EQ(table.ps.mid(1), ToolTable::stock().ps);
    EXPECT_EQ(table.kill, ToolTable::stock().kill);
}

TEST(ToolTable, firstExecutableFileIsTaken)
{
    const QTemporaryDir directory;
    const QString plain = makeFile(directory, QStringLiteral("plain"), QFile::ReadOwner);
    const QString first = makeFile(directory, QStringLiteral("first"), executable);
    const QString second = makeFile(directory, QStringLiteral("second"), executable);
    EXPECT_EQ(presentTool({directory.filePath(QStringLiteral("missing")), directory.path(), plain,
                           first, second}),
              first);
}

TEST(ToolTable, lastPlaceIsTriedWhereNoneIsPresent)
{
    EXPECT_EQ(presentTool({QStringLiteral("/nowhere/a"), QStringLiteral("/nowhere/b")}),
              QStringLiteral("/nowhere/b"));
}

TEST(ToolTable, toolInstalledLaterIsFound)
{
    const QTemporaryDir directory;
    const QStringList candidates{directory.filePath(QStringLiteral("lsof")),
                                 QStringLiteral("/nowhere/lsof")};
    EXPECT_EQ(presentTool(candidates), candidates[1]);
    makeFile(directory, QStringLiteral("lsof"), executable);
    EXPECT_EQ(presentTool(candidates), candidates[0]);
}
