#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QTemporaryDir>

// Every test program has an application, for the event loop and the fonts, and needs no display.
int main(int argc, char *argv[])
{
    const QTemporaryDir runtimeDirectory;
    qputenv("XDG_RUNTIME_DIR", runtimeDirectory.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
