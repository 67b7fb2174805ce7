#pragma once

#include <QString>
#include <QTemporaryDir>

namespace kx::test {

// Points the per-user settings store, the common application-data folder, the user's data
// folder (XDG data home) and the documents folder into a fresh temporary folder for the lifetime of the object, so tests never touch
// the user's real files and never see each other's.
class TempEnvironment {
public:
    TempEnvironment();
    ~TempEnvironment();

    QString path() const { return m_dir.path(); }
    QString settingsFile() const { return m_dir.filePath(QStringLiteral("user-settings.ini")); }
    QString commonAppDataFolder() const { return m_dir.filePath(QStringLiteral("common")); }
    QString documentsFolder() const { return m_dir.filePath(QStringLiteral("documents")); }
    QString userDataFolder() const { return m_dir.filePath(QStringLiteral("data")); }

private:
    QTemporaryDir m_dir;
};

} // namespace kx::test
