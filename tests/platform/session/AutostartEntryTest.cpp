#include "platform/session/AutostartEntry.h"

#include "platform/session/DesktopEntry.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/TestText.h"
#include "tests/support/system/Users.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using namespace tidewick;

namespace
{

const QString entryName = QStringLiteral("org.tidewick.Tidewick.desktop");

/// A user's and a system's configuration of the test's own.
class AutostartEntryTest : public testing::Test
{
protected:
    AutostartEntryTest()
    {
        qputenv("XDG_CONFIG_HOME", user.toUtf8());
        qputenv("XDG_CONFIG_DIRS", system.toUtf8());
    }
    ~AutostartEntryTest() override
    {
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_CONFIG_DIRS");
    }

    static QString file(const QString &directory)
    {
        return directory + QLatin1String("/autostart/") + entryName;
    }
    static void write(const QString &directory, const QByteArray &text)
    {
        QDir().mkpath(directory + QLatin1String("/autostart"));
        QFile out(file(directory));
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(text);
    }
    static QByteArray read(const QString &directory)
    {
        QFile in(file(directory));
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray("none");
    }

    QTemporaryDir root;
    QString user = root.filePath(QStringLiteral("home/config"));
    QString system = root.filePath(QStringLiteral("etc/xdg"));
    AutostartEntry entry{QStringLiteral("/bin/true")};
};

const QByteArray usable = "[Desktop Entry]\nType=Application\nName=T\nExec=/bin/true\n";

} // namespace

TEST_F(AutostartEntryTest, isNotRegisteredAtFirst)
{
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
}

TEST_F(AutostartEntryTest, startsTheRunningProgramOnceRegistered)
{
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
    const DesktopEntry written(read(user));
    EXPECT_EQ(written.value(QStringLiteral("Exec")),
              QStringLiteral("env TIDEWICK_AUTOSTARTED=1 \"/bin/true\""));
    EXPECT_EQ(written.value(QStringLiteral("TryExec")), QStringLiteral("/bin/true"));
    EXPECT_EQ(written.value(QStringLiteral("X-LXQt-Need-Tray")), QStringLiteral("true"));
    EXPECT_EQ(written.value(QStringLiteral("OnlyShowIn")), std::nullopt);
}

TEST_F(AutostartEntryTest, writesAnEntryThatEveryDesktopUnderstands)
{
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(read(user), "[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Tidewick\n"
                          "Comment=Local development servers in the status bar\n"
                          "Icon=org.tidewick.Tidewick\n"
                          "Exec=env TIDEWICK_AUTOSTARTED=1 \"/bin/true\"\n"
                          "TryExec=/bin/true\n"
                          "Terminal=false\n"
                          "X-LXQt-Need-Tray=true\n"
                          "X-GNOME-Autostart-enabled=true\n");
}

TEST_F(AutostartEntryTest, leavesNothingWhenUnregistered)
{
    entry.registerItem();
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
    EXPECT_FALSE(QFile::exists(file(user)));
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
}

TEST_F(AutostartEntryTest, systemsEntryCountsUntilTheUsersHidesIt)
{
    write(system, usable);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
    const DesktopEntry hiding(read(user));
    EXPECT_EQ(hiding.value(QStringLiteral("Hidden")), QStringLiteral("true"));
    EXPECT_EQ(hiding.value(QStringLiteral("X-GNOME-Autostart-enabled")), QStringLiteral("false"));
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
    EXPECT_EQ(read(system), usable);
}

TEST_F(AutostartEntryTest, keepsWhatTheUserAddedButNothingThatHoldsItBack)
{
    write(user,
          usable + "X-GNOME-Autostart-Delay=9\nHidden=true\nNotShowIn=XFCE;\nOnlyShowIn=KDE;\n");
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
    const QByteArray text = read(user);
    EXPECT_TRUE(text.contains("X-GNOME-Autostart-Delay=9\n"));
    EXPECT_FALSE(text.contains("ShowIn"));
    EXPECT_FALSE(text.contains("Hidden"));
}

struct StatusRow
{
    const char *name;
    QByteArray text;
    LoginItemStatus status;
};

class AutostartStatus : public AutostartEntryTest, public testing::WithParamInterface<StatusRow>
{
};

TEST_P(AutostartStatus, followsTheUsersEntry)
{
    write(system, usable);
    write(user, GetParam().text);
    EXPECT_EQ(entry.status(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AutostartStatus,
    testing::Values(
        StatusRow{"usable", usable, LoginItemStatus::enabled},
        StatusRow{"notHidden", usable + "Hidden=false\n", LoginItemStatus::enabled},
        StatusRow{"hidden", usable + "Hidden=true\n", LoginItemStatus::notRegistered},
        StatusRow{"offInGnome", usable + "X-GNOME-Autostart-enabled=false\n",
                  LoginItemStatus::notRegistered},
        StatusRow{"startsNothing", "[Desktop Entry]\n", LoginItemStatus::notRegistered},
        StatusRow{"empty", "", LoginItemStatus::notRegistered},
        StatusRow{"programGone", usable + "TryExec=/nowhere/tidewick\n", LoginItemStatus::notFound},
        StatusRow{"programOnThePath", usable + "TryExec=true\n", LoginItemStatus::enabled}),
    rowName);

TEST_F(AutostartEntryTest, entryMaskedByALinkToNothingIsReplaced)
{
    QDir().mkpath(user + QLatin1String("/autostart"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), file(user)));
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
    EXPECT_FALSE(QFileInfo(file(user)).isSymLink());
}

TEST_F(AutostartEntryTest, entryThatIsALinkToAFileStaysOne)
{
    write(user, usable);
    const QString target = root.filePath(QStringLiteral("dotfile"));
    ASSERT_TRUE(QFile::rename(file(user), target) && QFile::link(target, file(user)));
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(QFile::symLinkTarget(file(user)), target);
    EXPECT_TRUE(read(user).contains("TryExec=/bin/true\n"));
}

TEST_F(AutostartEntryTest, entryThatFailsWhileItIsReadIsRefused)
{
    QDir().mkpath(user + QLatin1String("/autostart"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/proc/self/mem"), file(user)));
    EXPECT_EQ(entry.registerItem(), qt_error_string(EIO));
}

TEST_F(AutostartEntryTest, pipeInItsPlaceIsNotWaitedFor)
{
    QDir().mkpath(user + QLatin1String("/autostart"));
    ASSERT_EQ(::mkfifo(qPrintable(file(user)), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(file(user)));
}

TEST_F(AutostartEntryTest, pipeInItsPlaceIsReplaced)
{
    QDir().mkpath(user + QLatin1String("/autostart"));
    ASSERT_EQ(::mkfifo(qPrintable(file(user)), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
}

TEST_F(AutostartEntryTest, entryThatIsTooLongToKeepIsRefusedAndStaysAsItIs)
{
    const QByteArray tooLong = usable + "# " + QByteArray(65536, 'x') + "\nX-Last=1\n";
    write(user, tooLong);
    EXPECT_EQ(entry.registerItem(), qt_error_string(EFBIG));
    EXPECT_EQ(read(user), tooLong);
    write(system, usable);
    EXPECT_EQ(entry.unregisterItem(), qt_error_string(EFBIG));
    EXPECT_EQ(read(user), tooLong);

    const QByteArray longest = usable + "# " + QByteArray(65536 - usable.size() - 3, 'x') + '\n';
    ASSERT_EQ(longest.size(), 65536);
    write(user, longest);
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_TRUE(read(user).contains(longest.mid(usable.size())));
}

TEST_F(AutostartEntryTest, entryThatCannotBeReadIsRefusedAndStaysAsItIs)
{
    giveToOrdinaryUser(root.path());
    const OrdinaryUser ordinary; // root may read anything
    if (::geteuid() == 0)
        GTEST_SKIP() << "there is no user but a namespace's root, who may read anything";
    write(user, usable);
    QFile::setPermissions(file(user), QFile::WriteOwner);
    EXPECT_EQ(entry.registerItem(), QStringLiteral("Permission denied"));
    QFile::setPermissions(file(user), QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_EQ(read(user), usable);
}

TEST_F(AutostartEntryTest, relativeDirectoryOfTheEnvironmentIsIgnored)
{
    const QByteArray homeBefore = qgetenv("HOME");
    const QString directoryBefore = QDir::currentPath();
    qputenv("HOME", root.filePath(QStringLiteral("home")).toUtf8());
    qputenv("XDG_CONFIG_HOME", "relative");
    QDir::setCurrent(root.path());
    EXPECT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(root.filePath(QStringLiteral("relative"))));
    EXPECT_TRUE(read(root.filePath(QStringLiteral("home/.config"))).contains("Exec="));
    EXPECT_EQ(entry.status(), LoginItemStatus::enabled);
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
    QDir::setCurrent(directoryBefore);
    qputenv("HOME", homeBefore);
}

TEST_F(AutostartEntryTest, failuresAreTheSystemsOwnText)
{
    QDir().mkpath(root.filePath(QStringLiteral("home")));
    QFile inTheWay(user);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_EQ(entry.registerItem(), QStringLiteral("Not a directory"));
    EXPECT_EQ(entry.status(), LoginItemStatus::notRegistered);
}

TEST_F(AutostartEntryTest, readOnlyHomeIsAFailureOfBoth)
{
    giveToOrdinaryUser(root.path());
    const OrdinaryUser ordinary; // root may write anywhere
    if (::geteuid() == 0)
        GTEST_SKIP() << "there is no user but a namespace's root, who may write anywhere";
    entry.registerItem();
    QFile::setPermissions(user + QLatin1String("/autostart"), QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(entry.registerItem(), QStringLiteral("Permission denied"));
    EXPECT_EQ(entry.unregisterItem(), QStringLiteral("Permission denied"));
    QFile::setPermissions(user + QLatin1String("/autostart"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
