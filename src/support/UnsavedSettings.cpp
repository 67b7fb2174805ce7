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
    File& kept = m_files[file];
    std::erase_if(kept.entries, [&](const Entry& entry) { return sameKey(entry, section, key); });
    kept.entries.push_back({section, key, value});
    return retry(file, writer);
}

SaveResult UnsavedSettings::retry(const QString& file, const Writer& writer) {
    const auto found = m_files.find(file);
    if (found == m_files.end())
        return {};
    File& kept = found->second;
    SaveResult first;
    std::vector<Entry> unsaved;
    for (Entry& entry : kept.entries) {
        // Once the file refuses one value it refuses the rest: they wait for the next try.
        if (first.ok()) {
            first = writer(entry.section, entry.key, entry.value);
            if (first.ok())
                continue;
        }
        unsaved.push_back(std::move(entry));
    }
    kept.entries = std::move(unsaved);
    if (kept.entries.empty())
        m_files.erase(found); // a later failure is a new one, told again
    else
        kept.why = first.error;
    return first;
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
