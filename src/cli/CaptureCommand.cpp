#include "cli/CaptureCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/RescueSave.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "measure/AcquireSettings.h"
#include "measure/CaptureFileWriter.h"
#include "measure/CentreOfPressure.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/NumberFormat.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
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
    , m_progress(clock.createTimer(this)) {
    connect(m_progress, &Timer::timeout, this, &CaptureCommand::showProgress);
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
    m_capturing = true;
    m_startTick = clock().tickCount();
    m_progress->start(ProgressMs);
    const auto ms = static_cast<int>(std::llround(m_options.seconds * 1000.0));
    clock().singleShot(ms, this, [this] { end(Success); });
}

void CaptureCommand::ForcesIn(qint32 sampleNumber, const Float3& forces, const Float3& volts) {
    m_samples = sampleNumber;
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
    try {
        plate()->StopCapture();
    } catch (const PlateError& error) {
        console().error(aboutPlate(error.message()));
        m_exitCode = DeviceError;
    }
    clock().singleShot(BlockWaitMs, this, [this] { save(); });
}

void CaptureCommand::TestDone(qint32, const QList<Float3>& forces, const QList<Float3>& volts) {
    m_table.appendBlock(forces, volts, m_minFz);
    if (m_ending)
        save();
}

void CaptureCommand::save() {
    if (isFinished())
        return;
    if (!stopAcquisition())
        m_exitCode = DeviceError;
    if (m_table.isEmpty()) {
        console().error(aboutPlate(QStringLiteral("no sample was captured; %1 not written")
                                       .arg(QDir::toNativeSeparators(m_options.output))));
        finishCapture(m_exitCode == Success ? DeviceError : m_exitCode);
        return;
    }
    const RescueSave saved =
        saveOrRescue(m_options.output, [this](const QString& path, QString& reason) {
            CaptureFileWriter writer(m_table, m_rate, m_minFz);
            const bool written = writer.save(path);
            reason = writer.errorString();
            return written;
        });
    if (!saved.ok() || saved.rescued()) {
        console().error(saved.message());
        finishCapture(FileError);
        return;
    }
    const auto samples = std::count_if(m_table.begin(), m_table.end(),
                                       [](const CaptureRow& row) { return !row.isSeparator(); });
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
