// The main window's tests run on one screen of 1366 x 768, the smallest a technician's laptop
// has, so that a window that does not fit it shows in the tests.

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // A display chosen by hand (a virtual X server, say) is kept.
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (platform.isEmpty() || platform == "offscreen")
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" KX_LAPTOP_SCREEN);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
