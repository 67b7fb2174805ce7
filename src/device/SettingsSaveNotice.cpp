#include "device/SettingsSaveNotice.h"

#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/Prompt.h"
#include "support/Settings.h"
#include "support/UnsavedSettings.h"

#include <QDir>

namespace kx {

namespace {

// Writes the kept values of both stores again (what still fails stays kept); gives their files.
QStringList retryBoth() {
    const IniFile profile = IniFile::sharedProfile();
    retryUnsavedSettings();
    profile.retryUnsaved();
    return {settingsLocation(), profile.path()};
}

void tell(Prompt& prompt, const UnsavedSettings::Failure& failure, int text) {
    prompt.critical(strings::text(text).arg(QDir::toNativeSeparators(failure.file), failure.why));
}

} // namespace

void noticeUnsavedSettings(Prompt& prompt) {
    for (const QString& file : retryBoth()) {
        if (const auto failure = UnsavedSettings::instance().takeUntold(file))
            tell(prompt, *failure, strings::mainwindow::SettingsNotSaved);
    }
}

void noticeSettingsLostAtExit(Prompt& prompt) {
    for (const QString& file : retryBoth()) {
        if (const auto failure = UnsavedSettings::instance().failure(file))
            tell(prompt, *failure, strings::mainwindow::SettingsLost);
    }
}

} // namespace kx
