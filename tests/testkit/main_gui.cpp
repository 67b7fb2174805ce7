#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // ctest lists the tests by running the program without the tests' environment, and a
    // widget program needs a platform even for that: default to the offscreen one.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
