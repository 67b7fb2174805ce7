#pragma once

#include "PrintQString.h"
#include "TempEnvironment.h"

#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kx::test {

// The real kxplate run as a process, with its settings, profile and documents folder in a
// temporary folder, and files for it (scenarios, profiles, outputs) in another.
class KxplateProcess : public ::testing::Test {
protected:
    struct Run {
        int exitCode = -1;
        QString out;
        QString err;
        QStringList errorLines() const {
            QStringList lines;
            for (const QString& line : err.split(u'\n', Qt::SkipEmptyParts))
                if (line.startsWith(QLatin1String("kxplate: ")))
                    lines << line;
            return lines;
        }
    };

    // Long enough for the longest case here (a noise run of a few seconds).
    static constexpr int RunLimitMs = 60000;

    QString path(const QString& name) const { return m_files.filePath(name); }

    QString write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }

    static void start(QProcess& process, const QStringList& arguments) {
        process.start(QStringLiteral(KX_PLATE_PROGRAM), arguments);
        ASSERT_TRUE(process.waitForStarted());
    }

    static Run finish(QProcess& process) {
        EXPECT_TRUE(process.waitForFinished(RunLimitMs)) << "kxplate did not end";
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    static Run run(const QStringList& arguments) {
        QProcess process;
        start(process, arguments);
        return finish(process);
    }

    TempEnvironment environment;

private:
    QTemporaryDir m_files;
};

} // namespace kx::test
