#include <gtest/gtest.h>

#include <QGuiApplication>

// Every test program has an application, for the event loop and the fonts, and needs no display.
int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
