#pragma once

#include "support/SaveAtomically.h"
#include "support/UnsavedSettings.h"

#include <QString>
#include <utility>
#include <vector>

namespace kx {

// One plain INI file read and written value by value, with the semantics of the operating
// system's private-profile functions: sections and keys are matched without regard to case
// (the first match wins), keys and values are trimmed of blanks, a value enclosed in matching
// quotes loses them, and a missing file or key yields the default (trailing blanks removed).
// Nothing is cached: every call reads the file. A write replaces the value of an existing key
// in place, or adds the key at the end of its section, or adds the section at the end of the
// file, keeping every other line as it was. Writes are atomic: a file that cannot be written
// keeps its old contents, and the value is kept for this run of the program (UnsavedSettings.h):
// reads give it, and the next write to the file, or retryUnsaved(), writes it again. Missing
// folders are made. Several values go into one save with setValues(); a write that would leave
// the file as it is does not save it.
class IniFile {
public:
    // One value of a write of several.
    struct Value {
        QString section;
        QString key;
        QString text;
    };

    explicit IniFile(QString path)
        : m_path(std::move(path)) {}

    // The profile shared by every user of the machine:
    // CommonAppDataFolder() + "/Quentral/Plate Control Panel/KXPlateCpl.ini".
    static IniFile sharedProfile();

    const QString& path() const { return m_path; }

    QString value(const QString& section, const QString& key, const QString& defaultText) const;
    SaveResult setValue(const QString& section, const QString& key, const QString& text) const;
    // The values in one save, the file as writing each in turn with setValue() would leave it.
    SaveResult setValues(const std::vector<Value>& values) const;
    // Writes the values whose writes failed again.
    SaveResult retryUnsaved() const;

    // The same on a file's bytes, for a caller that holds them: the value read from `bytes`,
    // and the bytes with `key` set to `text` (empty bytes are a file to be made).
    static QString valueIn(const QByteArray& bytes, const QString& section, const QString& key,
                           const QString& defaultText);
    static QByteArray withValue(const QByteArray& bytes, const QString& section, const QString& key,
                                const QString& text);
    static QByteArray withValues(const QByteArray& bytes, const std::vector<Value>& values);

private:
    // The values written into the file as it is now, in one save.
    SaveResult write(const std::vector<Value>& values) const;
    UnsavedSettings::BatchWriter keptWriter() const;

    QString m_path;
};

} // namespace kx
