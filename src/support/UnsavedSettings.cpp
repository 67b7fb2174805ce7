#include "support/UnsavedSettings.h"

#include <algorithm>
#include <utility>

namespace kx {

UnsavedSettings& UnsavedSettings::instance() {
    static UnsavedSettings unsaved;
    return unsaved;
}

bool UnsavedSettings::sameKey(const Entry& entry, const QString& section, const QString& key) {
    return entry.section.compare(section, Qt::CaseInsensitive) == 0 &&
           entry.key.compare(key, Qt::CaseInsensitive) == 0;
}

SaveResult UnsavedSettings::write(const QString& file, const QString& section, const QString& key,
                                  const Value& value, const Writer& writer) {
    return writeAll(file, {{section, key, value}}, eachInTurn(writer));
}

SaveResult UnsavedSettings::retry(const QString& file, const Writer& writer) {
    return retryAll(file, eachInTurn(writer));
}

UnsavedSettings::BatchWriter UnsavedSettings::eachInTurn(const Writer& writer) {
    return [writer](const std::vector<Entry>& entries) {
        // Once the file refuses one value it refuses the rest: they wait for the next try,
        // with those written already, which are written again then to no harm.
        for (const Entry& entry : entries)
            if (SaveResult saved = writer(entry.section, entry.key, entry.value); !saved)
                return saved;
        return SaveResult{};
    };
}

SaveResult UnsavedSettings::writeAll(const QString& file, const std::vector<Entry>& values,
                                     const BatchWriter& writer) {
    File& kept = m_files[file];
    for (const Entry& value : values) {
        std::erase_if(kept.entries,
                      [&](const Entry& entry) { return sameKey(entry, value.section, value.key); });
        kept.entries.push_back(value);
    }
    return retryAll(file, writer);
}

SaveResult UnsavedSettings::retryAll(const QString& file, const BatchWriter& writer) {
    const auto found = m_files.find(file);
    if (found == m_files.end())
        return {};
    File& kept = found->second;
    const SaveResult saved = writer(kept.entries);
    if (saved.ok())
        m_files.erase(found); // a later failure is a new one, told again
    else
        kept.why = saved.error;
    return saved;
}

std::optional<UnsavedSettings::Value>
UnsavedSettings::kept(const QString& file, const QString& section, const QString& key) const {
    const auto found = m_files.find(file);
    if (found == m_files.end())
        return std::nullopt;
    for (const Entry& entry : found->second.entries) {
        if (sameKey(entry, section, key))
            return entry.value;
    }
    return std::nullopt;
}

std::optional<UnsavedSettings::Failure> UnsavedSettings::takeUntold(const QString& file) {
    const auto found = m_files.find(file);
    if (found == m_files.end() || std::exchange(found->second.told, true))
        return std::nullopt;
    return Failure{file, found->second.why};
}

std::optional<UnsavedSettings::Failure> UnsavedSettings::failure(const QString& file) const {
    const auto found = m_files.find(file);
    if (found == m_files.end())
        return std::nullopt;
    return Failure{file, found->second.why};
}

} // namespace kx
