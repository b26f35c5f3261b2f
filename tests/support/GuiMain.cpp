// main() of the tests that need widgets.

#include "support/GuiApplication.h"

#include <gtest/gtest.h>

int main(int argc, char *argv[]) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) // asked at build time, where there may be no display
        return RUN_ALL_TESTS();
    const GuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
