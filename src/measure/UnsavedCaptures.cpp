#include "measure/UnsavedCaptures.h"

#include "measure/AcquireSettings.h"
#include "measure/BackgroundPriority.h"
#include "measure/CaptureFileDialog.h"
#include "measure/CaptureJournal.h"
#include "measure/CaptureJournalReader.h"
#include "measure/CaptureSaver.h"
#include "measure/UnsavedRowsQuestion.h"
#include "resources/StringTable.h"
#include "support/DateFormat.h"
#include "support/Folders.h"
#include "support/Prompt.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QThread>

namespace kx {

namespace a = strings::acquire;

UnsavedCaptures::UnsavedCaptures(Prompt& prompt, QObject* parent)
    : QObject(parent)
    , m_prompt(prompt)
    , m_saver(new CaptureSaver(this)) {
    connect(m_saver, &CaptureSaver::progress, this, &UnsavedCaptures::progress);
    connect(m_saver, &CaptureSaver::finished, this, &UnsavedCaptures::saveFinished);
}

UnsavedCaptures::~UnsavedCaptures() {
    if (m_reading)
        m_reading->wait();
}

void UnsavedCaptures::start(const QString& folder) {
    CaptureJournal::removeSetAside(folder);
    m_journals = CaptureJournal::journalsIn(folder);
    next();
}

void UnsavedCaptures::cancelSave() {
    if (!m_saver->isRunning())
        return;
    m_cancelled = true;
    m_saver->cancel();
}

void UnsavedCaptures::next() {
    if (m_journals.isEmpty()) {
        Q_EMIT finished();
        return;
    }
    auto summary = std::make_shared<Summary>();
    summary->path = m_journals.takeFirst();
    m_summary = summary;
    m_reading.reset(QThread::create([summary] {
        lowerThisThreadsPriority();
        CaptureJournalReader reader;
        summary->readable = reader.open(summary->path);
        summary->error = reader.errorString();
        summary->header = reader.header();
        summary->rows = reader.rowCount();
    }));
    connect(m_reading.get(), &QThread::finished, this, &UnsavedCaptures::summaryRead);
    m_reading->start();
}

void UnsavedCaptures::summaryRead() {
    m_reading->wait();
    m_reading.reset();
    const Summary& summary = *m_summary;
    if (!summary.readable) {
        // Kept for whoever can make sense of it, but not offered at every start.
        const QString aside = summary.path + QLatin1String(SetAsideSuffix);
        QFile::rename(summary.path, aside);
        m_prompt.critical(strings::text(a::UnsavedCaptureUnreadable)
                              .arg(QDir::toNativeSeparators(summary.path), summary.error,
                                   QFileInfo(aside).fileName()));
        next();
        return;
    }
    if (summary.rows == 0) {
        CaptureJournal::removeFile(summary.path); // nothing was captured
        next();
        return;
    }
    ask();
}

void UnsavedCaptures::ask() {
    const Summary& summary = *m_summary;
    const QDateTime& started = summary.header.started;
    const QString when = formatShortDate(started.date()) + QStringLiteral(", ") +
                         QLocale().toString(started.time(), QLocale::ShortFormat);
    const QString question = strings::text(a::UnsavedCapture).arg(summary.rows).arg(when);
    std::optional<QString> chosen;
    while (!chosen) {
        switch (askAboutUnsavedRows(m_prompt, question, summary.rows, true)) {
        case UnsavedRowsAnswer::Later:
            next();
            return;
        case UnsavedRowsAnswer::Discard:
            CaptureJournal::removeFile(summary.path);
            next();
            return;
        case UnsavedRowsAnswer::Save:
            chosen = m_prompt.saveFileName(captureFileDialog(AcquireSettings::load().lastFilePath));
            break;
        }
    }
    const QString path = chosen->trimmed();
    AcquireSettings::saveLastFilePath(FolderOfPath(path));
    m_cancelled = false;
    m_saver->start(summary.path, path, summary.header.sampleFrequency, summary.header.minFz);
    Q_EMIT saveStarted(summary.rows);
}

void UnsavedCaptures::saveFinished(bool ok, const QString& error) {
    Q_EMIT saveEnded();
    if (ok) {
        // The capture file is on the disk: the journal has done its work.
        CaptureJournal::removeFile(m_summary->path);
        next();
        return;
    }
    if (!m_cancelled)
        m_prompt.critical(error);
    ask();
}

} // namespace kx
