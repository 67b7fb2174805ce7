#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace kx::test {

// The whole file, or nothing when it cannot be read.
inline QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file's contents, as another program (or a hand edit) would.
inline void writeFileBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

} // namespace kx::test
