#include "cli/NoiseCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/RescueSave.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "noise/NoiseResultText.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"
#include "support/SaveAtomically.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace kx::cli {

namespace {
// The library's settling option of a zero acquisition, passed as the plate expects it.
constexpr qint32 ZeroOption = 30;
} // namespace

NoiseCommand::NoiseCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                           QObject* parent)
    : PlateCommand(console, clock, driver, options.serial, strings::NoiseBlock, parent)
    , m_options(std::move(options))
    , m_timer(clock.createTimer(this)) {
    connect(m_timer, &Timer::timeout, this, &NoiseCommand::waitTick);
}

bool NoiseCommand::prepare() {
    // A mistyped profile would otherwise run the default plan: five and a half hours.
    if (!m_options.profile.isEmpty() && !QFileInfo(m_options.profile).isFile()) {
        fail(
            FileError,
            QStringLiteral("%1: no such profile").arg(QDir::toNativeSeparators(m_options.profile)));
        return false;
    }
    const IniFile ini =
        m_options.profile.isEmpty() ? IniFile::sharedProfile() : IniFile(m_options.profile);
    m_plan = NoisePlan::read(ini);
    m_results = NoiseResults(m_plan.channels, m_plan.frequencyCount(), m_plan.excitationCount());
    m_sequence = NoiseSequence(m_plan.frequencyCount(), m_plan.excitationCount());
    return true;
}

void NoiseCommand::run(PlateDevice& plate) {
    connect(&plate, &PlateDevice::ZeroProgress, this, [this](qint32 samples) {
        if (m_measuring)
            console().transient(aboutTest() + QStringLiteral(", %1 of %2 samples")
                                                  .arg(std::min(samples, m_samples))
                                                  .arg(m_samples));
    });
    connect(&plate, &PlateDevice::ZeroDone, this,
            [this](qint32, const ChannelValues& r1, const ChannelValues& r2,
                   const ChannelValues& r3) { ZeroDone(r1, r2, r3); });
    const bool ready = call([&] {
        m_file = NoiseResultFile(m_options.output.isEmpty()
                                     ? firstFreeNoiseFile(DocumentsFolder(), plate.SerialNumber())
                                     : m_options.output);
        m_savedFrequency = plate.SampleFrequency(Which::Current);
        m_savedExcitation = plate.GageVoltage(Which::Current);
    });
    if (!ready)
        return;
    m_running = true;
    console().progress(aboutPlate(QStringLiteral("noise test of %1 tests, results in %2")
                                      .arg(m_plan.frequencyCount() * m_plan.excitationCount())
                                      .arg(QDir::toNativeSeparators(m_file.path()))));
    prepareTest();
}

QString NoiseCommand::aboutTest() const {
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    const qsizetype number = e * m_plan.frequencyCount() + f + 1;
    return aboutPlate(QStringLiteral("test %1 of %2 at %3 Hz, %4 V")
                          .arg(number)
                          .arg(m_plan.frequencyCount() * m_plan.excitationCount())
                          .arg(formatNumber(m_plan.frequencies[f], u"0.000"),
                               formatNumber(m_plan.excitations[e], u"0.000")));
}

void NoiseCommand::prepareTest() {
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    const bool set = call([&] {
        plate()->SetSampleFrequency(Which::Current, m_plan.frequencies[f]);
        plate()->SetGageVoltage(Which::Current, m_plan.excitations[e]);
        // The file shows what the plate took, not what was asked.
        m_plan.frequencies[f] = plate()->SampleFrequency(Which::Current);
        m_plan.excitations[e] = plate()->GageVoltage(Which::Current);
    });
    if (!set)
        return;
    const float wait = m_sequence.waitSeconds(m_plan);
    console().progress(aboutTest() + QStringLiteral(": ") +
                       m_sequence.countdownText(0, wait).simplified());
    m_waitStart = clock().tickCount();
    m_timer->start(TimerMs);
}

void NoiseCommand::waitTick() {
    const quint32 elapsed = clock().tickCount() - m_waitStart;
    const float wait = m_sequence.waitSeconds(m_plan);
    if (!NoiseSequence::waitIsOver(elapsed, wait)) {
        console().transient(aboutTest() + QStringLiteral(": ") +
                            m_sequence.countdownText(elapsed, wait).simplified());
        return;
    }
    m_timer->stop();
    startTest();
}

void NoiseCommand::startTest() {
    // A failing call ends the run.
    call([this] {
        const double hertz = plate()->SampleFrequency(Which::Current);
        m_samples = std::max(1, roundHalfEven(static_cast<double>(m_plan.testDuration) * hertz));
        plate()->FlushData();
        plate()->CalibrateSelf();
        const double settled = plate()->SampleFrequency(Which::Current);
        m_measuring = true;
        plate()->StartZero(m_samples, true, ZeroOption, roundHalfEven(0.5 * settled));
    });
}

void NoiseCommand::ZeroDone(const ChannelValues& r1, const ChannelValues& r2,
                            const ChannelValues& r3) {
    if (!m_measuring)
        return;
    m_measuring = false;
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    m_results.store(f, e, r1, r2, r3);
    console().print(noiseListLine(m_plan, m_results, f, e) + u'\n');
    saveResults();
    if (m_sequence.advance())
        prepareTest();
    else
        end(Success);
}

void NoiseCommand::saveResults() {
    if (m_file.save(noiseResultFile(m_plan, m_results)) == NoiseResultFile::Outcome::Failed)
        console().error(QStringLiteral("%1: could not be written; trying again after the next test")
                            .arg(QDir::toNativeSeparators(m_file.path())));
}

void NoiseCommand::end(int exitCode) {
    if (isFinished())
        return;
    if (!m_running) {
        finish(exitCode);
        return;
    }
    m_timer->stop();
    if (m_measuring)
        stopAcquisition();
    m_measuring = false;
    saveResults();
    if (m_savedFrequency && !plateRemoved()) {
        try {
            plate()->SetSampleFrequency(Which::Current, *m_savedFrequency);
            plate()->SetGageVoltage(Which::Current, *m_savedExcitation);
        } catch (const PlateError& error) {
            console().error(aboutPlate(QStringLiteral("its frequency and excitation could not be "
                                                      "put back: ") +
                                       error.message()));
            exitCode = exitCode == Success ? DeviceError : exitCode;
        }
    }
    if (m_file.failing()) {
        const QByteArray contents = noiseResultFile(m_plan, m_results);
        const RescueSave saved =
            saveOrRescue(m_file.path(), [&](const QString& path, QString& reason) {
                const SaveResult result = saveAtomically(path, contents);
                if (!result.ok())
                    reason = QDir::toNativeSeparators(path) + QStringLiteral(": ") + result.error;
                return result.ok();
            });
        fail(FileError, saved.message());
        return;
    }
    finish(exitCode);
}

} // namespace kx::cli
