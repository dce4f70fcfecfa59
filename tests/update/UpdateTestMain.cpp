#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

// The dialogs of the updates are widgets, and need no display.
int main(int argc, char *argv[])
{
    const QTemporaryDir runtimeDirectory;
    qputenv("XDG_RUNTIME_DIR", runtimeDirectory.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
