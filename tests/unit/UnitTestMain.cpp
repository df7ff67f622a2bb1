#include <gmock/gmock.h>

#include <cstdlib>

int main(int argc, char **argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
