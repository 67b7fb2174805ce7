#include "cli/CaptureCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/RescueSave.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "measure/AcquireSettings.h"
#include "measure/CaptureFileWriter.h"
#include "measure/CaptureJournal.h"
#include "measure/CaptureJournalReader.h"
#include "measure/CentreOfPressure.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/NumberFormat.h"

#include <QDir>
#include <QFileInfo>
#include <cmath>

namespace kx::cli {

namespace {
// The signals display's chart names, three to a signal set.
constexpr int SignalNames = strings::AcquireBlock + 410;
} // namespace

CaptureCommand::CaptureCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                               QObject* parent)
    : PlateCommand(console, clock, driver, options.serial, strings::AcquireBlock, parent)
    , m_options(std::move(options))
    , m_journal(new CaptureJournal(clock, this))
    , m_progress(clock.createTimer(this)) {
    connect(m_progress, &Timer::timeout, this, &CaptureCommand::showProgress);
    connect(m_journal, &CaptureJournal::failed, this, [this](const QString& error, qint64 kept) {
        this->console().error(aboutPlate(
            QStringLiteral("%1; the capture stops, keeping %2 rows").arg(error).arg(kept)));
        end(FileError);
    });
}

bool CaptureCommand::prepare() {
    const QFileInfo file(m_options.output);
    if (file.isDir() || !file.absoluteDir().exists()) {
        fail(FileError, QStringLiteral("%1: no such folder to write the capture in")
                            .arg(QDir::toNativeSeparators(m_options.output)));
        return false;
    }
    return true;
}

void CaptureCommand::run(PlateDevice& plate) {
    const AcquireSettings settings = AcquireSettings::load();
    m_minFz = settings.minFz();
    m_signalSet = m_options.signalSet.value_or(settings.displayType);
    connect(&plate, &PlateDevice::ForcesIn, this, &CaptureCommand::ForcesIn);
    connect(&plate, &PlateDevice::TestDone, this, &CaptureCommand::TestDone);
    const bool started = call([&] {
        m_savedResolution = plate.Resolution();
        plate.SetResolution(settings.adResolution);
        if (m_options.frequency) {
            m_savedFrequency = plate.SampleFrequency(Which::Current);
            plate.SetSampleFrequency(Which::Current, *m_options.frequency);
        }
        plate.FlushData();
        plate.CalibrateSelf();
        m_rate = plate.SampleFrequency(Which::Current);
        plate.StartAcquisition(true, false, true, false, true);
        plate.StartCapture(true);
    });
    if (!started)
        return;
    const CaptureJournalHeader header{m_options.serial, m_signalSet, false,
                                      m_rate,           m_minFz,     clock().currentDateTime()};
    if (!m_journal->create(UnsavedCapturesFolder(), header)) {
        fail(FileError, aboutPlate(m_journal->errorString()));
        return;
    }
    m_journal->beginSegment();
    m_capturing = true;
    m_startTick = clock().tickCount();
    m_progress->start(ProgressMs);
    const auto ms = static_cast<int>(std::llround(m_options.seconds * 1000.0));
    clock().singleShot(ms, this, [this] { end(Success); });
}

void CaptureCommand::ForcesIn(qint32 sampleNumber, const Float3& forces, const Float3& volts) {
    m_samples = sampleNumber;
    if (m_capturing)
        m_journal->appendSample(forces, volts);
    m_forces = forces;
    m_volts = volts;
}

void CaptureCommand::showProgress() {
    const double elapsed = quint32(clock().tickCount() - m_startTick) / 1000.0;
    QString line =
        aboutPlate(QStringLiteral("capturing, %1 of %2 s, %3 samples")
                       .arg(formatNumber(elapsed, u"0"), formatGeneral(m_options.seconds))
                       .arg(m_samples));
    const ChartValues values =
        chartValues(m_signalSet, m_forces, m_volts, centreOfPressure(m_forces, m_minFz));
    const auto set = static_cast<int>(m_signalSet);
    const char16_t* pattern = m_signalSet == DisplayType::Forces ? u"0.000" : u"0.000000";
    for (int i = 0; i < 3; ++i) {
        const std::optional<float>& value = values[static_cast<std::size_t>(i)];
        line += (i == 0 ? QStringLiteral("; ") : QStringLiteral(", ")) +
                strings::text(SignalNames + 10 * set + i) + u' ' +
                (value ? formatNumber(*value, pattern) : QStringLiteral("-"));
    }
    console().progress(line);
}

void CaptureCommand::end(int exitCode) {
    if (m_ending)
        return;
    m_ending = true;
    m_exitCode = exitCode;
    m_progress->stop();
    if (!m_capturing) {
        finishCapture(exitCode); // nothing was recorded
        return;
    }
    m_capturing = false;
    m_journal->endSegment();
    try {
        plate()->StopCapture();
    } catch (const PlateError& error) {
        console().error(aboutPlate(error.message()));
        m_exitCode = DeviceError;
    }
    clock().singleShot(BlockWaitMs, this, [this] { save(); });
}

void CaptureCommand::TestDone(qint32, const QList<Float3>& forces, const QList<Float3>& volts) {
    if (m_journal->isOpen())
        m_journal->takeBlock(forces, volts);
    if (m_ending)
        save();
}

void CaptureCommand::save() {
    if (isFinished())
        return;
    if (!stopAcquisition())
        m_exitCode = DeviceError;
    if (m_journal->rowCount() <= 1) { // only the opening separator
        m_journal->remove();
        console().error(aboutPlate(QStringLiteral("no sample was captured; %1 not written")
                                       .arg(QDir::toNativeSeparators(m_options.output))));
        finishCapture(m_exitCode == Success ? DeviceError : m_exitCode);
        return;
    }
    // The file is written from the journal once its last rows are on the disk.
    m_waitingOnDisk = true;
    m_journal->whenWritten([this] {
        m_waitingOnDisk = false;
        writeFile();
    });
}

void CaptureCommand::writeFile() {
    qint64 samples = 0;
    const RescueSave saved =
        saveOrRescue(m_options.output, [this, &samples](const QString& path, QString& reason) {
            CaptureJournalReader rows;
            if (!rows.open(m_journal->path())) {
                reason = rows.errorString();
                return false;
            }
            samples = rows.rowCount() - 1; // the segment's opening separator is no sample
            CaptureFileWriter writer(rows, m_rate, m_minFz);
            const bool written = writer.save(path);
            reason = writer.errorString();
            return written;
        });
    if (!saved.ok() || saved.rescued()) {
        console().error(saved.message());
        if (saved.ok())
            m_journal->remove();
        else
            m_journal->close(); // offered back when the control panel next starts
        finishCapture(FileError);
        return;
    }
    m_journal->remove();
    console().progress(aboutPlate(QStringLiteral("%1 samples saved in %2")
                                      .arg(samples)
                                      .arg(QDir::toNativeSeparators(saved.path))));
    finishCapture(m_exitCode);
}

void CaptureCommand::finishCapture(int exitCode) {
    if (!plateRemoved()) {
        try {
            if (m_savedFrequency)
                plate()->SetSampleFrequency(Which::Current, *m_savedFrequency);
            if (m_savedResolution)
                plate()->SetResolution(*m_savedResolution);
        } catch (const PlateError& error) {
            console().error(aboutPlate(QStringLiteral("its settings could not be put back: ") +
                                       error.message()));
            if (exitCode == Success)
                exitCode = DeviceError;
        }
    }
    finish(exitCode);
}

} // namespace kx::cli
