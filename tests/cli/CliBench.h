#pragma once

#include "EventsUntil.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "cli/Command.h"
#include "cli/Console.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QBuffer>
#include <QFile>
#include <gtest/gtest.h>

namespace kx::test {

// kxplate's commands in-process: the default simulated plates on a manual clock, the console
// writing into buffers, and the settings, profile and documents folder in a temporary folder.
class CliBench : public ::testing::Test {
protected:
    explicit CliBench(const Scenario& scenario = Scenario::defaults()) {
        scenario.applyTo(driver);
        m_out.open(QIODevice::ReadWrite);
        m_err.open(QIODevice::ReadWrite);
    }

    // Starts the command and moves the clock on in steps of 100 ms until it ends, or until
    // `untilMs` when given, letting a file that is being written reach the disk between steps;
    // the exit status, or -1 while it still runs.
    int run(cli::Command& command, qint64 untilMs = 24 * 3600 * 1000) {
        command.start();
        return advance(command, untilMs);
    }
    int advance(cli::Command& command, qint64 ms) {
        for (qint64 elapsed = 0; elapsed < ms && !command.isFinished(); elapsed += 100) {
            clock.advance(100);
            if (command.waitsOnDisk()) {
                EXPECT_TRUE(eventsUntil([&command] { return !command.waitsOnDisk(); }));
            }
        }
        return command.isFinished() ? command.exitCode() : -1;
    }

    QString output() const { return QString::fromUtf8(m_out.data()); }
    QStringList errorLines() const {
        QStringList lines;
        for (const QString& line : QString::fromUtf8(m_err.data()).split(u'\n', Qt::SkipEmptyParts))
            if (line.startsWith(QLatin1String("kxplate: ")))
                lines << line;
        return lines;
    }
    QString document(const QString& name) const {
        return environment.documentsFolder() + u'/' + name;
    }
    static QList<QByteArray> lines(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        QList<QByteArray> lines = file.readAll().split('\n');
        if (!lines.isEmpty() && lines.back().isEmpty())
            lines.removeLast();
        return lines;
    }
    SimPlate& plate(const char* serial) { return *driver.plate(QString::fromLatin1(serial)); }

    TempEnvironment environment;
    ManualClock clock{1000};
    SimDriver driver{clock};

private:
    QBuffer m_out;
    QBuffer m_err;

protected:
    cli::Console console{m_out, m_err, false};
};

} // namespace kx::test
