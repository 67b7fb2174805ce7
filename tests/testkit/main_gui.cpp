#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Offscreen unless told otherwise, also when ctest lists the tests without the tests'
    // environment.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
