#include <gtest/gtest.h>

#include <QApplication>
#include <QProcess>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

/// The tests need an X server, but no display. In networks of their own, two servers would choose
/// the same number, so each begins to look for one elsewhere.
int main(int argc, char *argv[])
{
    QProcess server;
    server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    server.start(QStringLiteral("Xvfb"),
                 {QStringLiteral(":%1").arg(100 + getpid() % 50000), QStringLiteral("-displayfd"),
                  QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
                  QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"),
                  QStringLiteral("tcp")});
    while (!server.canReadLine())
        if (!server.waitForReadyRead(10000))
            qFatal("Xvfb does not start");
    qputenv("DISPLAY", ":" + server.readLine().trimmed());
    qputenv("QT_QPA_PLATFORM", "xcb");
    // The toolkit would connect to the user's session.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    int status = 0;
    {
        const QApplication application(argc, argv);
        testing::InitGoogleTest(&argc, argv);
        status = RUN_ALL_TESTS();
    }
    server.kill();
    server.waitForFinished();
    return status;
}
