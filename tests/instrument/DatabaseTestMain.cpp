#include <QCoreApplication>

#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv); // the Database module's thread needs one
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
