#include <gtest/gtest.h>

#include <QCoreApplication>

// The unit tests have no screen, and start in a third of the time.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
