// Runs in a view of the files of its own, in which it mounts a small disk.

#include "platform/session/AutostartEntry.h"
#include "tests/support/TestText.h"
#include "tests/support/system/Namespaces.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>

#include <sched.h>
#include <sys/mount.h>

using namespace tidewick;

namespace
{

/// A home on a disk of its own. Mounts nothing outside of this process.
class FullDisk : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!enterNamespaces(CLONE_NEWNS) ||
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", QFile::encodeName(home.path()).constData(), "tmpfs", 0, "size=64k") != 0)
            GTEST_SKIP() << "no disk may be mounted here: " << qt_error_string(errno).toStdString();
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_DIRS", "/nowhere");
    }
    ~FullDisk() override
    {
        umount2(QFile::encodeName(home.path()).constData(), MNT_DETACH);
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_CONFIG_DIRS");
    }

    /// Takes what is left of the disk, to the last byte.
    void fill()
    {
        ASSERT_TRUE(m_filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        for (const qint64 size : {4096, 1}) {
            while (m_filler.write(QByteArray(int(size), 'x')) == size)
                ;
        }
    }
    /// For one block.
    void makeLittleRoom() { ASSERT_TRUE(m_filler.resize(m_filler.size() - 4096)); }
    void makeRoom() { ASSERT_TRUE(m_filler.remove()); }

    QStringList files() const
    {
        return QDir(home.filePath(QStringLiteral("autostart")))
            .entryList(QDir::Files | QDir::Hidden);
    }
    QByteArray text() const
    {
        QFile file(home.filePath(QStringLiteral("autostart/") + entryName));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }

    static inline const QString entryName = QStringLiteral("org.tidewick.Tidewick.desktop");
    static inline const QString noSpace = QStringLiteral("No space left on device");

    AutostartEntry entry{QStringLiteral("/bin/true")};
    const QTemporaryDir home;

private:
    QFile m_filler{home.filePath(QStringLiteral("filler"))};
};

} // namespace

TEST_F(FullDisk, leavesNoHalfAnEntry)
{
    fill();
    EXPECT_EQ(entry.registerItem(), noSpace);
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
    EXPECT_EQ(files(), QStringList());

    makeRoom();
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
}

TEST_F(FullDisk, leavesTheOldEntryWhole)
{
    entry.registerItem();
    const QByteArray before = text();
    AutostartEntry moved(QStringLiteral("/bin/false"));
    fill();
    EXPECT_EQ(moved.registerItem(), noSpace);
    EXPECT_EQ(text(), before);
    EXPECT_EQ(files(), QStringList(entryName));
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);

    makeRoom();
    EXPECT_EQ(moved.registerItem(), std::nullopt);
    EXPECT_TRUE(text().contains("/bin/false"));
    EXPECT_EQ(files(), QStringList(entryName));
}

TEST_F(FullDisk, thatTakesAPartLeavesTheOldEntryWhole)
{
    entry.registerItem();
    QFile file(home.filePath(QStringLiteral("autostart/") + entryName));
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("X-Note=" + QByteArray(6000, 'x') + '\n');
    file.close();
    const QByteArray before = text();
    fill();
    makeLittleRoom();
    EXPECT_EQ(entry.registerItem(), noSpace);
    EXPECT_EQ(text(), before);
    EXPECT_EQ(files(), QStringList(entryName));
}

TEST_F(FullDisk, isNoObstacleToTheEndOfTheEntry)
{
    entry.registerItem();
    fill();
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
}
