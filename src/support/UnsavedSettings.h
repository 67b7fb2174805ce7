#pragma once

#include "support/SaveAtomically.h"

#include <QString>
#include <QtGlobal>
#include <functional>
#include <map>
#include <optional>
#include <variant>
#include <vector>

namespace kx {

// Values of the settings store and the profile whose writes failed (a full disk, a file that
// could not be read and so is left alone), kept for this run of the program so that nothing
// the user set is lost: a read of such a value gives the kept one, every later write to the
// same file writes the kept ones again first, and the user is told once per run of failures
// (noticeUnsavedSettings in device/SettingsSaveNotice.h). Files are told apart by their path;
// sections and keys are matched without regard to case, as the stores match them.
class UnsavedSettings {
public:
    using Value = std::variant<QString, qint32>;
    struct Entry {
        QString section;
        QString key;
        Value value;
    };
    // Writes one value to the file; the store's own write.
    using Writer =
        std::function<SaveResult(const QString& section, const QString& key, const Value& value)>;
    // Writes several values to the file, in this order, in one save of the file.
    using BatchWriter = std::function<SaveResult(const std::vector<Entry>& entries)>;
    struct Failure {
        QString file;
        QString why;
    };

    // The one record of the program, since the stores' files are the program's.
    static UnsavedSettings& instance();

    // Writes the values kept for `file`, then `value`; whatever fails is kept (the newest
    // value of a key replacing an older one). Says why the first failure failed.
    SaveResult write(const QString& file, const QString& section, const QString& key,
                     const Value& value, const Writer& writer);
    // Writes the values kept for `file` again.
    SaveResult retry(const QString& file, const Writer& writer);
    // The same for a store that writes several values in one save: the values kept for `file`,
    // then `values`, in one go; when that fails every one of them is kept.
    SaveResult writeAll(const QString& file, const std::vector<Entry>& values,
                        const BatchWriter& writer);
    SaveResult retryAll(const QString& file, const BatchWriter& writer);
    // The value kept for a key, if its write failed.
    std::optional<Value> kept(const QString& file, const QString& section,
                              const QString& key) const;
    // Values are kept for `file` and the user has not been told yet: why, once.
    std::optional<Failure> takeUntold(const QString& file);
    // Values are kept for `file`: why, every time.
    std::optional<Failure> failure(const QString& file) const;

private:
    struct File {
        std::vector<Entry> entries; // in the order they were written
        QString why;
        bool told = false;
    };
    static bool sameKey(const Entry& entry, const QString& section, const QString& key);
    // Writes the values one by one.
    static BatchWriter eachInTurn(const Writer& writer);

    std::map<QString, File> m_files;
};

} // namespace kx
