#include "platform/session/DesktopWorkspace.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>

using namespace tidewick;

namespace
{

/// org.freedesktop.FileManager1, as far as it is asked.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the name is the interface's.
    void ShowFolders(const QStringList &uris, const QString & /*startupId*/) { shown += uris; }
};

class WorkspaceTest : public testing::Test
{
protected:
    void serve()
    {
        QDBusConnection connection = bus.connect();
        connection.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &fileManager,
                                  QDBusConnection::ExportAllSlots);
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    }
    static bool nothingComesWithin(int milliseconds, const QList<QUrl> &opened)
    {
        const QDeadlineTimer end(milliseconds);
        return waitUntil([&] { return end.hasExpired(); }) && opened.isEmpty();
    }

    PrivateBus bus;
    FakeFileManager fileManager;
    QList<QUrl> opened;
    DesktopWorkspace workspace{[this](const QUrl &url) { opened += url; }, bus.connect()};
    QTemporaryDir directory;
};

} // namespace

TEST_F(WorkspaceTest, opensUrlsWithTheDefaultProgram)
{
    workspace.openUrl(QUrl(QStringLiteral("http://localhost:3000")));
    EXPECT_EQ(opened, QList<QUrl>({QUrl(QStringLiteral("http://localhost:3000"))}));
}

TEST_F(WorkspaceTest, fileManagerShowsTheDirectory)
{
    serve();
    const QString path = directory.filePath(QStringLiteral("a b#é%"));
    ASSERT_TRUE(QDir().mkpath(path));
    workspace.revealDirectory(path);
    ASSERT_TRUE(waitUntil([&] { return !fileManager.shown.isEmpty(); }));
    EXPECT_EQ(fileManager.shown,
              QStringList(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)));
    EXPECT_TRUE(fileManager.shown.first().endsWith(QLatin1String("a%20b%23%C3%A9%25")));
    EXPECT_TRUE(nothingComesWithin(100, opened));
}

TEST_F(WorkspaceTest, directoryIsOpenedWhereNoFileManagerAnswers)
{
    workspace.revealDirectory(directory.path());
    ASSERT_TRUE(waitUntil([&] { return !opened.isEmpty(); }));
    EXPECT_EQ(opened, QList<QUrl>({QUrl::fromLocalFile(directory.path())}));
}

TEST_F(WorkspaceTest, directoryIsOpenedWhereThereIsNoBus)
{
    bus.kill();
    workspace.revealDirectory(directory.path());
    EXPECT_TRUE(waitUntil([&] { return !opened.isEmpty(); }));
}

TEST_F(WorkspaceTest, directoryThatIsGoneDoesNothing)
{
    serve();
    const QString path = directory.path();
    directory.remove();
    workspace.revealDirectory(path);
    EXPECT_TRUE(nothingComesWithin(100, opened));
    EXPECT_TRUE(fileManager.shown.isEmpty());
}

TEST_F(WorkspaceTest, fileIsNoDirectory)
{
    serve();
    workspace.revealDirectory(QStringLiteral("/etc/passwd"));
    EXPECT_TRUE(nothingComesWithin(100, opened));
    EXPECT_TRUE(fileManager.shown.isEmpty());
}

#include "DesktopWorkspaceTest.moc"
