#include "TempEnvironment.h"

#include <QDir>

namespace kx::test {

TempEnvironment::TempEnvironment() {
    QDir(m_dir.path()).mkpath(QStringLiteral("common"));
    QDir(m_dir.path()).mkpath(QStringLiteral("documents"));
    qputenv("KX_SETTINGS_FILE", settingsFile().toLocal8Bit());
    qputenv("KX_COMMON_APPDATA", commonAppDataFolder().toLocal8Bit());
    qputenv("KX_DOCUMENTS", documentsFolder().toLocal8Bit());
    qputenv("XDG_DATA_HOME", userDataFolder().toLocal8Bit());
}

TempEnvironment::~TempEnvironment() {
    qunsetenv("KX_SETTINGS_FILE");
    qunsetenv("KX_COMMON_APPDATA");
    qunsetenv("KX_DOCUMENTS");
    qunsetenv("XDG_DATA_HOME");
}

} // namespace kx::test
