#include "support/FileLocations.h"

#include "support/Folders.h"
#include "support/IniFile.h"

#ifndef Q_OS_WIN
#include "support/SettingsFile.h"
#endif

namespace kx {

QString fileLocationsHelp() {
#ifdef Q_OS_WIN
    const QString settings =
        QStringLiteral("  Settings:  the registry, HKEY_CURRENT_USER\\Software\\Quentral, LLC.\\"
                       "Plates Control Panel\n");
#else
    const QString settings = QStringLiteral("  Settings file:  %1\n"
                                            "    moved by KX_SETTINGS_FILE (the file's path)\n")
                                 .arg(SettingsFile::location());
#endif
    return QStringLiteral("Files:\n") + settings +
           QStringLiteral("  Profile file:  %1\n"
                          "    moved by KX_COMMON_APPDATA (the folder above "
                          "Quentral/Plate Control Panel)\n"
                          "  Captures and noise-test results:  %2\n"
                          "    moved by KX_DOCUMENTS\n"
                          "  Unsaved calibration work, kept until it is saved:  %3/Recovery\n"
                          "  Captures not yet saved:  %4\n"
                          "    both moved by KX_USER_DATA\n")
               .arg(IniFile::sharedProfile().path(), DocumentsFolder(), UserDataFolder(),
                    UnsavedCapturesFolder());
}

} // namespace kx
