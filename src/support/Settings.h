#pragma once

#include "support/SaveAtomically.h"

#include <QString>
#include <QtGlobal>

namespace kx {

// The branch of the per-user store a key path starts from (HKEY_CURRENT_USER on Windows).
enum class SettingsRoot { CurrentUser };

// The per-user settings store: the registry on Windows, elsewhere a typed text file with the
// same key paths and value names (see SettingsFile.h for its layout and location).
//
// Every call reads or writes the store itself; nothing is cached. Key paths separate their
// levels with "\" (use the constants of SettingsKeys.h); key paths and value names are
// matched without regard to case. A read that fails yields the default. A write that fails is
// kept for this run of the program (UnsavedSettings.h): later reads give the kept value and the
// next write, or retryUnsavedSettings(), writes it again; the caller need not keep it.
//
// Numbers and texts are kept apart: a number is never read as a text or the other way
// round, and either reads as the default then. A Boolean is a number, true when non-zero.
// A fractional value kept as a number is saved as roundHalfEven(value) (Rounding.h).

// The stored text with its spaces trimmed at both ends; the default, trimmed, when the value
// is missing, not a text, or only spaces.
QString GetSettingString(SettingsRoot root, const QString& keyPath, const QString& valueName,
                         const QString& defaultText);

// Stores the text as it is, except that an empty text is stored as one space, so that it
// reads back as the reader's default. Missing keys are created level by level.
SaveResult SaveSettingString(SettingsRoot root, const QString& keyPath, const QString& valueName,
                             const QString& text);

// The stored 32-bit number, or the default when it is missing or not a number.
qint32 GetSettingLong(SettingsRoot root, const QString& keyPath, const QString& valueName,
                      qint32 defaultValue);

SaveResult SaveSettingLong(SettingsRoot root, const QString& keyPath, const QString& valueName,
                           qint32 value);

// Writes the values whose writes failed again.
SaveResult retryUnsavedSettings();
// Where the settings live, as the user would look for them: the settings file's path, or the
// registry key.
QString settingsLocation();

} // namespace kx
