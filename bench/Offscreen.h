#pragma once

#include <QByteArray>
#include <QtGlobal>

// Benchmarks of widgets run without a display unless QT_QPA_PLATFORM says otherwise. Pass the
// argument count through it to the application: `QApplication app(offscreenByDefault(argc), argv)`.
inline int& offscreenByDefault(int& argc) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return argc;
}
