// The user settings file: any bytes read as a store, the lines it cannot read set aside; a
// store that was read is written so that it reads back the same, lines set aside included, and
// texts and numbers of any content survive being written and read back.

#include "FuzzCheck.h"
#include "support/SettingsFile.h"

#include <QHash>
#include <cstdint>

using kx::SettingsFile;
using kx::SettingsRoot;
using kx::SettingValue;
using kx::fuzz::check;

namespace {

constexpr SettingsRoot kUser = SettingsRoot::CurrentUser;

// Writes the store and reads it again; written once more, the text must not change.
SettingsFile roundTrip(const SettingsFile& store) {
    const QByteArray written = store.toText();
    const SettingsFile reread = SettingsFile::fromText(written);
    check(reread.toText() == written, "a store read back writes the same text");
    check(reread.skippedLines() == store.skippedLines(), "skipped lines are kept");
    return reread;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const SettingsFile read = SettingsFile::fromText(bytes);
    roundTrip(read);

    // A key path, a value name and a text taken from the input: the start of its first line
    // (not too deep a key for a settings file), its second line and all of it.
    const QString text = QString::fromUtf8(bytes);
    const QString keyPath = text.section(u'\n', 0, 0).left(256);
    const QString name = text.section(u'\n', 1, 1);
    const QString numberName = name + QStringLiteral(" (number)");
    const auto number = static_cast<qint32>(qHashBits(data, size));

    SettingsFile store = read;
    store.setValue(kUser, keyPath, name, text);
    store.setValue(kUser, keyPath, numberName, number);
    const SettingsFile reread = roundTrip(store);
    check(reread.value(kUser, keyPath, name) == SettingValue(text), "a text survives");
    check(reread.value(kUser, keyPath, numberName) == SettingValue(number), "a number survives");
    return 0;
}
